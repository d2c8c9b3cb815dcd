// Image subheader and image data mask table (MIL-STD-2500C, tables A-3 and A-3(A)).
#pragma once

#include "Common/AppendedData.h"
#include "Common/SharedFields.h"

struct FileHeader;

/// Compression codes, in the order of their table.
enum class Compression : uint32_t {
  NC,
  NM,
  C0,
  C1,
  C2,
  C3,
  C4,
  C5,
  C6,
  C8,
  I1,
  M0,
  M1,
  M2,
  M3,
  M4,
  M5,
  M6,
  M8,
  Unknown,  ///< no code of the table; no reader accepts it
};
enum class ReaderFamily : uint8_t;
enum class Representation : uint32_t {
  Mono,
  Rgb,
  RgbLut,
  Multi,
  NoDisplay,
  NVector,
  Polar,
  Vph,
  YCbCr601
};
enum class BandRepresentation : uint32_t {
  BANDREPRESENTATION_NON,
  BANDREPRESENTATION_LU,
  BANDREPRESENTATION_R,
  BANDREPRESENTATION_G,
  BANDREPRESENTATION_B,
  BANDREPRESENTATION_M,
  BANDREPRESENTATION_Y,
  BANDREPRESENTATION_Cb,
  BANDREPRESENTATION_Cr,
};
enum class ImageMode : uint32_t { B, P, R, S };
enum class PixelType : uint32_t { Integer, BiLevel };
/// Facsimile option, from COMRAT.
enum class BiLevelOption : uint32_t { OneD, TwoDS, TwoDH, None };

/// Three band indexes, shown as red, green and blue.
struct BandSelection {
  int32_t red, green, blue;
};

/// Fields of one band.
struct BandFields {
  Coded<2> IREPBAND;
  Text<6> ISUBCAT;
  Text<1> IFC;
  Text<3> IMFLT;
  Number<1> NLUTS;
  Number<5> NELUT;

  BandRepresentation Code() const { return static_cast<BandRepresentation>(IREPBAND.code); }
  /// The fields before the lookup tables, in file order, and how many bytes they take.
  static FieldTable<BandFields> Table();
  static uint32_t Bytes();
};

/// Where blocks lie, from the start of a masked image's data. Offsets are kept big-endian as in the file.
struct MaskTable {
  static constexpr uint32_t kNoBlock = 0xFFFFFFFF;

  uint32_t IMDATOFF = 0;
  uint16_t BMRLNTH = 0;
  uint16_t TMRLNTH = 0;
  uint16_t TPXCDLNTH = 0;       ///< in bits
  TrackedArray<uint8_t> TPXCD;  ///< pad pixel code
  TrackedArray<uint32_t> blockRecords;
  TrackedArray<uint32_t> padRecords;

  /// Reads the table at the file's position for `records` blocks.
  Status Read(FieldReader& reader, CheckedSize records);
  /// Writes the table.
  Status Write(FieldWriter& writer) const;

  /// Whether block n is stored, as far as its record tells.
  bool HasBlock(uint64_t n) const { return !HasBlockRecords() || BlockRecord(n) != kNoBlock; }
  bool HasBlockRecords() const { return blockRecords.size() != 0; }
  /// Offset of block n behind the table; kNoBlock when it is not stored or out of the table.
  uint32_t BlockRecord(uint64_t n) const;
  uint32_t PadRecord(uint64_t n) const;
  /// Bytes of a pad pixel code of TPXCDLNTH bits.
  uint32_t PadCodeBytes() const { return (TPXCDLNTH + 7u) / 8; }

 private:
  Status ReadPadCode(FieldReader& reader, uint16_t bits);
};

struct ImageSubheader {
  ImageSubheader();

  /// Parses the subheader and the mask table behind it at the file's position, which is put back on
  /// success. 1, -7, -9, -13, -1, -700000 and -700002 (both after a message box).
  template <class Parser>
  Status ReadSubheader(Parser& parser) {
    return parser.Parse(*this);
  }

  /// Reads what follows the fields: the mask table of a masked image.
  Status ReadTail(FieldReader& reader);

  // Setters whose effect goes beyond their field's table row.

  /// Adds or removes the 60 bytes of IGEOLO in the file header's lengths.
  Status SetCoordinates(const char* text);
  /// Adds or removes the 4 bytes of COMRAT in the file header's lengths; -13 outside the table.
  Status SetCompression(const char* text);
  Status SetCompressionRate(const char* text);
  /// Makes fresh band fields for the larger of the count and XBANDS.
  Status SetBandCount(int32_t count);
  /// Stores XBANDS; the same for the larger of the count and NBANDS.
  Status SetExtendedBandCount(int32_t count);
  /// Stores the code of what the text begins with; -13 for no such band or code.
  Status SetBandCode(uint32_t band, const char* text);
  /// Stores NICOM; -13 for more comments than there are.
  Status SetCommentCount(int32_t count);
  Status SetComment(uint32_t comment, const char* text);
  Status SetMagnification(const char* text);
  /// Copies as many bytes as TPXCDLNTH says; -814 for null.
  Status SetPadCode(const void* bytes);

  Compression CompressionCode() const { return static_cast<Compression>(IC.code); }
  Representation RepresentationCode() const { return static_cast<Representation>(IREP.code); }
  ImageMode Mode() const { return static_cast<ImageMode>(IMODE.code); }
  PixelType Pixel() const { return static_cast<PixelType>(PVTYPE.code); }
  BiLevelOption FacsimileOption() const { return static_cast<BiLevelOption>(biLevelOption); }
  bool IsCompressed() const {
    return CompressionCode() != Compression::NC && CompressionCode() != Compression::NM;
  }
  /// What reads the image's data.
  ReaderFamily Family() const;
  /// Whether the subheader is followed by a mask table that the parse reads.
  bool HasMaskTable() const;
  bool IsMono() const { return RepresentationCode() == Representation::Mono; }
  /// Whether the image is one block.
  bool IsSingleBlock() const { return NBPR.value < 2 && NBPC.value < 2; }
  uint64_t BlockCount() const { return uint64_t{NBPR.value} * NBPC.value; }
  bool HasCoordinates() const { return ICORDS.text[0] != ' '; }
  /// Decodes IMAG; a blank one is 1.
  void TakeMagnification();
  uint32_t BandCount() const { return bandCount; }
  /// Records of each table of a mask.
  CheckedSize MaskRecords() const;
  /// NBANDS, or XBANDS where that is 0: the bands that have a representation.
  uint32_t CodedBandCount() const { return NBANDS.value != 0 ? NBANDS.value : LengthOf(XBANDS.text); }
  BandRepresentation BandCode(uint32_t band) const {
    return band < CodedBandCount() && band < bands.size() ? bands[band].Code()
                                                          : BandRepresentation::BANDREPRESENTATION_NON;
  }
  /// Size of the image with every block, in pixels; `Within` tests apply.
  CheckedSize FullWidth() const { return CheckedSize(NPPBH.value) * NBPR.value; }
  CheckedSize FullHeight() const { return CheckedSize(NPPBV.value) * NBPC.value; }

  FileHeader* owner = nullptr;  ///< whose lengths follow what setters change
  uint32_t index = 0;
  uint32_t bandCount = 0;
  uint32_t biLevelOption = static_cast<uint32_t>(BiLevelOption::None);
  double magnification = 1.0;
  BandSelection rememberedBands = {-1, -1, -1};
  AppendedData appended;  ///< the encoded picture of an appended image

  Text<2> IM;
  Text<10> IID1;
  Text<14> IDATIM;
  Text<17> TGTID;
  Text<80> IID2;
  Security security;
  Text<1> ENCRYP;
  Text<42> ISORCE;
  Number<8> NROWS, NCOLS;
  Coded<3> PVTYPE;
  Coded<8> IREP;
  Text<8> ICAT;
  Number<2> ABPP;
  Coded<1> PJUST;
  Text<1> ICORDS;
  Text<60> IGEOLO;
  Number<1> NICOM;
  TrackedArray<Text<80>> comments;
  Coded<2> IC;
  Text<4> COMRAT;
  Number<1> NBANDS;
  Number<5> XBANDS;
  TrackedArray<BandFields> bands;
  TrackedArray<KernelColour> palette;  ///< display palette of the last band with lookup tables
  Text<1> ISYNC;
  Coded<1> IMODE;
  Number<4> NBPR, NBPC, NPPBH, NPPBV;
  Number<2> NBPP;
  Number<3> IDLVL, IALVL;
  Location ILOC;
  Text<4> IMAG;
  ExtendedData userDefined;  ///< UDIDL, UDOFL, UDID
  ExtendedData extended;     ///< IXSHDL, IXSOFL, IXSHD
  MaskTable mask;

  /// Every field in file order.
  static FieldTable<ImageSubheader> Table();

 private:
  /// Makes the file header's lengths follow a field that appears or goes.
  Status ChangeLength(const char* field, bool longer);
  Status MakeBands(uint32_t count);
};
