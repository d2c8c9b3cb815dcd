#include "Common/NtfHdr.h"

#include "Common/NitfFile.h"

namespace {

constexpr char16_t kSourceFile[] = u"NtfHdr";

constexpr uint32_t kComplexityLevel = 3;  // the only one that is read

Status AcceptMark(FileHeader& header) {
  const std::string_view mark(header.FHDR.text);
  if (mark != "NITF" && mark != "NSIF") return Status::BadStructure;
  header.loaded = true;
  return Status::Success;
}

Status AcceptVersion(FileHeader& header) {
  return std::string_view(header.FVER.text) == "02.10" ? Status::Success : Status::BadVersion;
}

Status AcceptComplexity(FileHeader& header) {
  const bool supported = std::string_view(header.CLEVEL.text) == "03";
  header.CLEVEL.value = kComplexityLevel;  // a refused level is not taken
  if (supported) return Status::Success;
  MessageBoxA(nullptr, "Unsupported CLEVEL", "Error", MB_OK);
  return Status::BadComplexity;
}

Status AcceptReserved(FileHeader& header) {
  return std::string_view(header.NUMX.text) == "000" ? Status::Success : Status::BadStructure;
}

Status TakeBackground(FileHeader& header) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(header.FBKGC.text);
  header.background = bytes[0] | bytes[1] << 8 | static_cast<COLORREF>(bytes[2]) << 16;
  return Status::Success;
}

Status TakeFileLength(FileHeader& header) {
  header.fileLength = LongLengthOf(header.FL.text);
  return Status::Success;
}

Status TakeHeaderLength(FileHeader& header) {
  header.headerLength = header.currentHeaderLength = LengthOf(header.HL.text);
  return Status::Success;
}

Status ReadLength(FieldReader& reader, uint16_t width, bool placeholder, uint32_t& inFile,
                  uint32_t& current) {
  char text[16];
  if (Status s = reader.TakeText(text, width, placeholder); !Ok(s)) return s;
  inFile = current = LengthOf(text);
  return Status::Success;
}

template <auto Count, auto Table, const LengthFields& kFields>
Status ReadLengths(FileHeader& header, FieldReader& reader) {
  Number<3>& number = header.*Count;
  const uint32_t count = number.value = LengthOf(number.text);
  if (Status s = reader.Require(CheckedSize(count) * (kFields.subheaderWidth + kFields.dataWidth));
      !Ok(s)) {
    return s;
  }
  LengthTable& table = header.*Table;
  if (Status s = table.Resize(count); !Ok(s)) return s;
  for (uint32_t i = 0; i < count; ++i) {
    SegmentLengths& inFile = table.inFile[i];
    SegmentLengths& current = table.current[i];
    if (Status s = ReadLength(reader, kFields.subheaderWidth, kFields.subheaderPlaceholder,
                              inFile.subheader, current.subheader);
        !Ok(s)) {
      return s;
    }
    if (Status s =
            ReadLength(reader, kFields.dataWidth, kFields.dataPlaceholder, inFile.data, current.data);
        !Ok(s)) {
      return s;
    }
  }
  return Status::Success;
}

template <auto Table, const LengthFields& kFields>
Status WriteLengths(const FileHeader& header, FieldWriter& writer) {
  for (const SegmentLengths& lengths : (header.*Table).current) {
    if (Status s = writer.PutNumber(lengths.subheader, kFields.subheaderWidth); !Ok(s)) return s;
    if (Status s = writer.PutNumber(lengths.data, kFields.dataWidth); !Ok(s)) return s;
  }
  return Status::Success;
}

void FormatFileLength(const FileHeader& header, char (&text)[16]) {
  (void)FormatNumberField(text, 12, static_cast<int64_t>(header.fileLength));
}
void FormatHeaderLength(const FileHeader& header, char (&text)[16]) {
  (void)FormatNumberField(text, 6, header.currentHeaderLength);
}
template <auto Table>
void FormatCount(const FileHeader& header, char (&text)[16]) {
  (void)FormatNumberField(text, 3, (header.*Table).Count());
}

template <auto Count, auto Table, const LengthFields& kFields>
constexpr FieldRow<FileHeader> CountField() {
  return Field<Count>(kFields.countName, 3)
      .SetNumber(true)
      .Then(&ReadLengths<Count, Table, kFields>, &WriteLengths<Table, kFields>);
}

using H = FileHeader;
constexpr auto kTable = [] {
  auto table = JoinRows<H>(
      std::array{
          Field<&H::FHDR>("FHDR", 4).Starts("NITF").Accept(&AcceptMark),
          Field<&H::FVER>("FVER", 5).Starts("02.10").Accept(&AcceptVersion),
          Field<&H::CLEVEL>("CLEVEL", 2).Starts("03").SetNumber(true).Accept(&AcceptComplexity),
          Field<&H::STYPE>("STYPE", 4).Starts("BF01"),
          Field<&H::OSTAID>("OSTAID", 10),
          Field<&H::FDT>("FDT", 14).Starts("20050101010101").Set(SetAs::Date),
          Field<&H::FTITLE>("FTITLE", 80).Blank(),
      },
      SecurityRows<H, &H::security>({.prefix = "FS", .classPrefix = "FS", .fill = '0', .classFill = '0'}),
      std::array{
          Field<&H::FSCOP>("FSCOP", 5).SetNumber(),
          Field<&H::FSCPYS>("FSCPYS", 5).SetNumber(),
          Field<&H::ENCRYP>("ENCRYP", 1).SetNumber(),
          Field<&H::FBKGC>("FBKGC", 3).Raw().Set(SetAs::Bytes).Accept(&TakeBackground),
          Field<&H::ONAME>("ONAME", 24).Blank(),
          Field<&H::OPHONE>("OPHONE", 18).Blank(),
          Field<&H::FL>("FL", 12)
              .SetNumber()
              .Placeholder()
              .Accept(&TakeFileLength)
              .WriteWith(&FormatFileLength),
          Field<&H::HL>("HL", 6)
              .SetNumber(true)
              .Placeholder()
              .Accept(&TakeHeaderLength)
              .WriteWith(&FormatHeaderLength),
          CountField<&H::NUMI, &H::images, kImageLengths>().WriteWith(&FormatCount<&H::images>),
          CountField<&H::NUMS, &H::graphics, kGraphicLengths>().WriteWith(&FormatCount<&H::graphics>),
          Field<&H::NUMX>("NUMX", 3).SetNumber().Accept(&AcceptReserved),
          CountField<&H::NUMT, &H::texts, kTextLengths>().WriteWith(&FormatCount<&H::texts>),
          CountField<&H::NUMDES, &H::dataExtensions, kDataExtensionLengths>().WriteWith(
              &FormatCount<&H::dataExtensions>),
          CountField<&H::NUMRES, &H::reservedExtensions, kReservedLengths>().WriteWith(
              &FormatCount<&H::reservedExtensions>),
      },
      ExtendedRows<H, &H::userDefined>("UDHDL", "UDHOFL"),
      ExtendedRows<H, &H::extended>("XHDL", "XHDLOFL"));
  for (auto& row : table) row.fill = '0';
  return table;
}();

}  // namespace

FieldTable<FileHeader> FileHeader::Table() { return kTable; }

FileHeader::FileHeader() {
  ApplyDefaults<FileHeader>(kTable, *this);
  CLEVEL.value = kComplexityLevel;
}

void FileHeader::FreeTables() {
  for (LengthTable* table : {&images, &graphics, &texts, &dataExtensions, &reservedExtensions}) {
    table->inFile.Reset();
    table->current.Reset();
  }
  userDefined.bytes.Reset();
  extended.bytes.Reset();
}

Status FileHeader::ReadHeader(NitfFile& document, StreamingFileHeader& streaming, ReadMode mode) {
  return document.ParseHeader(*this, Table(), streaming, mode);
}

const LengthTable& FileHeader::Lengths(SegmentKind kind) const {
  switch (kind) {
    case SegmentKind::Image:
      return images;
    case SegmentKind::Text:
      return texts;
    case SegmentKind::Graphic:
      return graphics;
    case SegmentKind::DataExtension:
      break;
  }
  return dataExtensions;
}

LengthTable& FileHeader::Lengths(SegmentKind kind) {
  return const_cast<LengthTable&>(std::as_const(*this).Lengths(kind));
}

Status FileHeader::SetFileLength(uint64_t length) {
  if (Status s = FormatNumberField(FL.text, 12, static_cast<int64_t>(length)); !Ok(s)) return s;
  fileLength = length;
  return Status::Success;
}

void FileHeader::SetBackground(COLORREF colour) {
  background = colour & 0xFFFFFF;
  for (int i = 0; i < 3; ++i) FBKGC.text[i] = static_cast<char>(colour >> (8 * i));
}

Status LengthTable::Resize(uint32_t count) {
  for (KernelBuffer<SegmentLengths>* table : {&inFile, &current}) {
    if (count == 0) {
      table->Reset();
    } else if (Status s = table->Resize(count, ORB_HERE); !Ok(s)) {
      return s;
    }
  }
  return Status::Success;
}

Status LengthTable::Append(SegmentLengths lengths) {
  const uint32_t index = Count();
  if (Status s = current.Resize(index + 1, ORB_HERE); !Ok(s)) return s;
  current[index] = lengths;
  return Status::Success;
}
