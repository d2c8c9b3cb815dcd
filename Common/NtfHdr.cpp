#include "Common/NtfHdr.h"

#include "host/windows.h"

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
  header.background = static_cast<COLORREF>(bytes[0] | bytes[1] << 8) | static_cast<COLORREF>(bytes[2])
                                                                            << 16;
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

Status ReadLengths(const SegmentLengthFields& fields, FileHeader& header, FieldReader& reader) {
  Number<3>& number = header.*fields.count;
  const uint32_t count = number.value = LengthOf(number.text);
  if (Status s = reader.Require(CheckedSize(count) * fields.EntryBytes()); !Ok(s)) return s;
  LengthTable& table = header.*fields.table;
  if (Status s = table.Resize(count); !Ok(s)) return s;
  for (uint32_t i = 0; i < count; ++i) {
    SegmentLengths &inFile = table.inFile[i], &current = table.current[i];
    if (Status s = ReadLength(reader, fields.subheaderWidth, fields.subheaderPlaceholder,
                              inFile.subheader, current.subheader);
        !Ok(s)) {
      return s;
    }
    if (Status s =
            ReadLength(reader, fields.dataWidth, fields.dataPlaceholder, inFile.data, current.data);
        !Ok(s)) {
      return s;
    }
  }
  return Status::Success;
}

Status WriteLengths(const SegmentLengthFields& fields, const FileHeader& header, FieldWriter& writer) {
  for (const SegmentLengths& lengths : (header.*fields.table).current) {
    if (Status s = writer.PutNumber(lengths.subheader, fields.subheaderWidth); !Ok(s)) return s;
    if (Status s = writer.PutNumber(lengths.data, fields.dataWidth); !Ok(s)) return s;
  }
  return Status::Success;
}

using H = FileHeader;

void FormatFileLength(const H& header, char (&text)[16]) {
  (void)FormatNumberField(text, sizeof H::FL.text - 1, static_cast<int64_t>(header.fileLength));
}
void FormatHeaderLength(const H& header, char (&text)[16]) {
  (void)FormatNumberField(text, sizeof H::HL.text - 1, header.currentHeaderLength);
}

// A count, followed by the lengths of as many segments. What is written is what the tables hold.
template <size_t I>
constexpr FieldRow<H> CountField() {
  constexpr const SegmentLengthFields& fields = kSegmentLengths[I];
  return Field<fields.count>(fields.countName)
      .SetNumber(true)
      .Then(
          [](H& header, FieldReader& reader) { return ReadLengths(kSegmentLengths[I], header, reader); },
          [](const H& header, FieldWriter& writer) {
            return WriteLengths(kSegmentLengths[I], header, writer);
          })
      .WriteWith([](const H& header, char(&text)[16]) {
        const SegmentLengthFields& written = kSegmentLengths[I];
        (void)FormatNumberField(text, 3, (header.*written.table).Count());
      });
}

constexpr auto kTable =
    MakeTable<H>('0',
                 std::array{
                     Field<&H::FHDR>("FHDR").Starts("NITF").Accept(&AcceptMark),
                     Field<&H::FVER>("FVER").Starts("02.10").Accept(&AcceptVersion),
                     Field<&H::CLEVEL>("CLEVEL").Starts("03").SetNumber().Accept(&AcceptComplexity),
                     Field<&H::STYPE>("STYPE").Starts("BF01"),
                     Field<&H::OSTAID>("OSTAID"),
                     Field<&H::FDT>("FDT").Starts("20050101010101").Set(SetAs::Date),
                     Field<&H::FTITLE>("FTITLE").Blank(),
                 },
                 SecurityRows<H, &H::security>({.prefix = "FS", .classPrefix = "FS"}),
                 std::array{
                     Field<&H::FSCOP>("FSCOP").SetNumber(),
                     Field<&H::FSCPYS>("FSCPYS").SetNumber(),
                     Field<&H::ENCRYP>("ENCRYP").SetNumber(),
                     Field<&H::FBKGC>("FBKGC").Raw().Set(SetAs::Bytes).Accept(&TakeBackground),
                     Field<&H::ONAME, 24>("ONAME").Blank(),
                     Field<&H::OPHONE>("OPHONE").Blank(),
                     Field<&H::FL>("FL")
                         .SetNumber()
                         .Placeholder()
                         .Accept(&TakeFileLength)
                         .WriteWith(&FormatFileLength),
                     Field<&H::HL>("HL")
                         .SetNumber(true)
                         .Placeholder()
                         .Accept(&TakeHeaderLength)
                         .WriteWith(&FormatHeaderLength),
                     CountField<0>(),
                     CountField<1>(),
                     Field<&H::NUMX>("NUMX").SetNumber().Accept(&AcceptReserved),
                     CountField<2>(),
                     CountField<3>(),
                     CountField<4>(),
                 },
                 ExtendedRows<H, &H::userDefined>("UDHDL", "UDHOFL"),
                 ExtendedRows<H, &H::extended>("XHDL", "XHDLOFL"));

}  // namespace

FieldTable<FileHeader> FileHeader::Table() { return kTable; }

FileHeader::FileHeader() {
  ApplyDefaults<FileHeader>(kTable, *this);
  CLEVEL.value = kComplexityLevel;
}

void FileHeader::FreeTables() {
  for (const SegmentLengthFields& fields : kSegmentLengths) {
    (this->*fields.table).inFile.Reset();
    (this->*fields.table).current.Reset();
  }
  userDefined.bytes.Reset();
  extended.bytes.Reset();
}

const LengthTable& FileHeader::Lengths(SegmentKind kind) const {
  return this->*LengthFieldsOf(kind).table;
}

LengthTable& FileHeader::Lengths(SegmentKind kind) {
  return const_cast<LengthTable&>(std::as_const(*this).Lengths(kind));
}

Status FileHeader::SetFileLength(uint64_t length) {
  if (Status s = FormatNumberField(FL.text, sizeof FL.text - 1, static_cast<int64_t>(length)); !Ok(s)) {
    return s;
  }
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
