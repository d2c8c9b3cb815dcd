// The file header (MIL-STD-2500C, table A-1).
#pragma once

#include "Common/SharedFields.h"

/// Segment kinds: the codes of the seek helpers and of the display list; reserved extensions are counted,
/// never sought or read.
enum class SegmentKind : uint32_t { Image = 0, Text = 1, Graphic = 2, DataExtension = 4, Reserved = 5 };

/// Lengths of one segment.
struct SegmentLengths {
  uint32_t subheader = 0;
  uint32_t data = 0;
  bool operator==(const SegmentLengths&) const = default;
};

/// The lengths of all segments of a kind: as the file gave them, by which its segments are found, and as
/// a save writes them, which appends and setters keep current.
struct LengthTable {
  KernelBuffer<SegmentLengths> inFile;
  KernelBuffer<SegmentLengths> current;

  uint32_t Count() const { return static_cast<uint32_t>(current.size()); }
  SegmentLengths InFile(uint32_t index) const {
    return index < inFile.size() ? inFile[index] : SegmentLengths{};
  }
  SegmentLengths Current(uint32_t index) const {
    return index < current.size() ? current[index] : SegmentLengths{};
  }
  /// Makes both tables `count` long, keeping entries.
  Status Resize(uint32_t count);
  /// Adds a segment that is not in the file; -1, nothing changed.
  Status Append(SegmentLengths lengths);
};

/// Most segments of a kind that a file can list.
inline constexpr uint32_t kMaxSegments = 999;
/// Length of a file header that lists no segments and carries no extended data.
inline constexpr uint32_t kBareHeaderLength = 388;

struct FileHeader {
  FileHeader();

  /// Parses the header at the file's position. In normal mode the replacement data of a streamed file
  /// is consulted at the end. 1, -7, -9, -13, -78, -700001 (after a message box) or -1.
  template <class Parser>
  Status ReadHeader(Parser& parser) {
    return parser.Parse(*this);
  }
  /// Frees every table and buffer.
  void FreeTables();

  LengthTable& Lengths(SegmentKind kind);
  const LengthTable& Lengths(SegmentKind kind) const;
  /// Stores the file length: text and value.
  Status SetFileLength(uint64_t length);
  /// Stores a background colour and the field's three bytes.
  void SetBackground(COLORREF colour);

  bool loaded = false;               ///< FHDR was accepted
  uint64_t fileLength = 0;           ///< 12 digits
  uint32_t headerLength = 0;         ///< as read; the segments start here
  uint32_t currentHeaderLength = 0;  ///< as a save writes it
  COLORREF background = 0;

  LengthTable images, graphics, texts, dataExtensions, reservedExtensions;

  Text<4> FHDR;
  Text<5> FVER;
  Number<2> CLEVEL;
  Text<4> STYPE;
  Text<10> OSTAID;
  Text<14> FDT;
  Text<80> FTITLE;
  Security security;
  Text<5> FSCOP;
  Text<5> FSCPYS;
  Text<1> ENCRYP;
  Text<3> FBKGC;  ///< raw bytes: red, green, blue
  Text<27> ONAME;
  Text<18> OPHONE;
  Text<12> FL;
  Number<6> HL;  ///< the value is the text's; positions follow headerLength
  Number<3> NUMI;
  Number<3> NUMS;
  Text<3> NUMX;
  Number<3> NUMT;
  Number<3> NUMDES;
  Number<3> NUMRES;
  ExtendedData userDefined;  ///< UDHDL, UDHOFL, UDHD
  ExtendedData extended;     ///< XHDL, XHDLOFL, XHD

  /// Every field in file order.
  static FieldTable<FileHeader> Table();
};

/// How the file header lists the segments of a kind.
struct SegmentLengthFields {
  SegmentKind kind;
  const char* countName;
  const char* subheaderName;
  uint16_t subheaderWidth;
  bool subheaderPlaceholder;
  const char* dataName;
  uint16_t dataWidth;
  bool dataPlaceholder;
  Number<3> FileHeader::*count;
  LengthTable FileHeader::*table;

  /// Bytes that one segment's lengths take in the file header.
  constexpr uint32_t EntryBytes() const { return subheaderWidth + dataWidth; }
};
/// Every kind, in file order.
inline constexpr SegmentLengthFields kSegmentLengths[] = {
    {SegmentKind::Image, "NUMI", "LISH", 6, true, "LI", 10, true, &FileHeader::NUMI, &FileHeader::images},
    {SegmentKind::Graphic, "NUMS", "LSSH", 4, true, "LS", 6, false, &FileHeader::NUMS,
     &FileHeader::graphics},
    {SegmentKind::Text, "NUMT", "LTSH", 4, true, "LT", 5, false, &FileHeader::NUMT, &FileHeader::texts},
    {SegmentKind::DataExtension, "NUMDES", "LDSH", 4, true, "LD", 9, true, &FileHeader::NUMDES,
     &FileHeader::dataExtensions},
    {SegmentKind::Reserved, "NUMRES", "LRESH", 4, false, "LRE", 7, false, &FileHeader::NUMRES,
     &FileHeader::reservedExtensions},
};
constexpr const SegmentLengthFields& LengthFieldsOf(SegmentKind kind) {
  for (const SegmentLengthFields& fields : kSegmentLengths) {
    if (fields.kind == kind) return fields;
  }
  return kSegmentLengths[0];
}
