// Where the display may follow the published standard instead of the host toolkit's word.
#pragma once

/// Named switches, all as the host's contract has it until a caller turns them; no export does.
struct DisplayRules {
  /// NSIF 1.00 and every complexity level are read.
  bool everyVersion = false;
  /// A drawing stands with its origin at SLOC, one unit a pixel; its bounds are row first and count from
  /// where the graphic is attached (MIL-STD-2500C, table A-5).
  bool drawingsAtOrigin = false;
  /// The last row of blocks that are interleaved by pixel is read (IMODE P).
  bool everyRow = false;
  /// Uncompressed YCbCr601 is shown in colour.
  bool colourDifferences = false;
  /// Several bands of 9 to 16 bits are read and show the high 8 of their ABPP bits.
  bool highBits = false;
  /// A mask has one record a block, and of IMODE S one for each block of each band (MIL-STD-2500C, table
  /// A-3(A)).
  bool recordABlock = false;
  /// A downsampled image (IC "I1") is enlarged to the rows and columns that its subheader gives.
  bool fullSize = false;

  /// All of them turned.
  static constexpr DisplayRules Standard() { return {true, true, true, true, true, true, true}; }
};
