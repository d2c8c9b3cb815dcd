// The document: one NITF 2.1 or NSIF file in memory.
#pragma once

#include "Common/DExSbHdr.h"
#include "Common/GrSubHdr.h"
#include "Common/ImSubHdr.h"
#include "Common/NtfHdr.h"
#include "Common/SegmentList.h"
#include "Common/StrmFHdr.h"
#include "Common/TxSubHdr.h"

/// Segment data is read on demand from the open file; all reads move its one position.
struct NitfFile : NonCopyable {
  ~NitfFile() { FreeObjects(); }

  /// Opens a file and reads its header and every segment's subheader, in file order. 1, -7 (also for a
  /// file that does not open), -9, -13, -78, -1, -700000 to -700002.
  Status ReadDocument(const char16_t* fileName);
  /// Makes the records for the counts that the header gives; -1.
  Status AllocateObjects();
  /// Closes the file and frees every record and table.
  void FreeObjects();
  /// Takes the options that the host's load flags carry.
  void TakeOptions(uint32_t loadFlags);

  // Positions in the file.

  /// Goes to the first byte of a segment's subheader or data and returns that position.
  int64_t SeekToSubheader(SegmentKind kind, uint32_t index);
  int64_t SeekToData(SegmentKind kind, uint32_t index);
  /// Position of a segment's subheader.
  int64_t StartOf(SegmentKind kind, uint32_t index) const;
  /// Length of a segment's data in the file; 0 at or beyond the current count.
  uint32_t DataLength(SegmentKind kind, uint32_t index) const;
  int32_t FileHandle() const { return file.Handle(); }

  /// The file header, null before FHDR was accepted.
  FileHeader* Header() { return headerPresent ? &header : nullptr; }
  uint32_t ImageCount() const { return images.Count(); }
  uint32_t GraphicCount() const { return graphics.Count(); }
  uint32_t TextCount() const { return texts.Count(); }

  OwnedFile file;
  bool hasSource = false;        ///< `source` is known
  WideFileIdentity source = {};  ///< of the open file
  bool graphicOption = false;
  bool liftDarkImages = false;
  bool fixedCanvas = false;
  ReplacementProgress replacement;
  ParseFault fault;  ///< where a failed read ended
  bool headerPresent = false;
  FileHeader header;
  COLORREF background = 0xFFFFFF;
  SegmentList<ImageSubheader> images;
  SegmentList<GraphicSubheader> graphics;
  SegmentList<TextSubheader> texts;
  SegmentList<DataExtensionSubheader> dataExtensions;

 private:
  Status ParseDocument(HeaderParser& parser);
  template <class R>
  Status ReadSubheaders(SegmentKind kind, SegmentList<R>& list, HeaderParser& parser);
};
