// Exchange of the file header.
#include <algorithm>
#include <cmath>

#include "Common/Exchange.h"

namespace {

constexpr char16_t kSourceFile[] = u"ORBNTF";

using enum PublicKind;

// In the order of the public record. Fields that Get leaves alone say so.
constexpr PublicField kFields[] = {{"FHDR", String},
                                   {"CLEVEL", Int},
                                   {"STYPE", String},
                                   {"OSTAID", String},
                                   {"FTITLE", String},
                                   {"FSCLAS", String},
                                   {"FSCLSY", String},
                                   {"FSCODE", String},
                                   {"FSCTLH", String},
                                   {"FSREL", String},
                                   {"FSDCTP", String},
                                   {"FSDCXM", String},
                                   {"FSDG", String},
                                   {"FSCLTX", String},
                                   {"FSCATP", String},
                                   {"FSCAUT", String},
                                   {"FSCRSN", String},
                                   {"FSCTLN", String},
                                   {"ONAME", String},
                                   {"OPHONE", String},
                                   {"HL", Int},
                                   {"FL", Int},
                                   {"FSCOP", Int},
                                   {"FSCPYS", Int},
                                   {"ENCRYP", Int},
                                   {"NUMI", Int},
                                   {"LISH", Pointer, false},
                                   {"LI", Pointer, false},
                                   {"NUMS", Int},
                                   {"LSSH", Pointer, false},
                                   {"LS", Pointer, false},
                                   {"NUMX", Int, false},
                                   {"NUMT", Int},
                                   {"LTSH", Pointer, false},
                                   {"LT", Pointer, false},
                                   {"NUMDES", Int, false},
                                   {"LDSH", Pointer, false},
                                   {"LD", Pointer, false},
                                   {"NUMRES", Int, false},
                                   {"LRESH", Pointer, false},
                                   {"LRE", Pointer, false},
                                   {"UDHDL", Int, false},
                                   {"UDHOFL", Int, false},
                                   {"UDHD", Pointer, false},
                                   {"XHDL", Int, false},
                                   {"XHDLOFL", Int, false},
                                   {"XHD", Pointer, false},
                                   {"FBKGC", Int, false},
                                   {"FSSRDT", Date},
                                   {"FSDGDT", Date},
                                   {"FSDCDT", Date},
                                   {"FDT", DateTime},
                                   {"FVER", Float}};
static_assert(SizeOf(kFields) == sizeof(NITFHeader));

struct LengthExchange {
  const LengthFields& names;
  LengthTable FileHeader::*table;
  bool get;
};
constexpr LengthExchange kLengths[] = {{kImageLengths, &FileHeader::images, true},
                                       {kGraphicLengths, &FileHeader::graphics, true},
                                       {kTextLengths, &FileHeader::texts, true},
                                       {kDataExtensionLengths, &FileHeader::dataExtensions, false},
                                       {kReservedLengths, &FileHeader::reservedExtensions, false}};

// Lengths beyond 31 bits are given as the largest number that the record holds.
int32_t ForCaller(uint64_t length) { return static_cast<int32_t>(std::min<uint64_t>(length, INT32_MAX)); }

Status GetLengths(const LengthExchange& exchange, const FileHeader& header, NITFHeader& record) {
  const uint32_t count = LoadFrom<uint32_t>(FindPlace(kFields, &record, exchange.names.countName).bytes);
  if (count == 0 || count > kMaxSegments) return Status::Success;
  KernelBuffer<int32_t> subheaders, data;
  if (Status s = subheaders.Allocate(count, ORB_HERE); !Ok(s)) return s;
  if (Status s = data.Allocate(count, ORB_HERE); !Ok(s)) return s;
  for (uint32_t i = 0; i < count; ++i) {
    const SegmentLengths lengths = (header.*exchange.table).Current(i);
    subheaders[i] = ForCaller(lengths.subheader);
    data[i] = ForCaller(lengths.data);
  }
  StoreTo(FindPlace(kFields, &record, exchange.names.subheaderName).bytes, subheaders.Release());
  StoreTo(FindPlace(kFields, &record, exchange.names.dataName).bytes, data.Release());
  return Status::Success;
}

// A length given back as it was taken stays, also where the record could not hold all of it.
void SetLength(uint32_t& length, int32_t given) {
  if (given >= 0 && given != ForCaller(length)) length = static_cast<uint32_t>(given);
}

// A caller's table has as many entries as its count says; the header's as the document has segments.
void SetLengths(const LengthExchange& exchange, FileHeader& header, void* record) {
  const int32_t given = LoadFrom<int32_t>(FindPlace(kFields, record, exchange.names.countName).bytes);
  const auto* subheaders =
      LoadFrom<const int32_t*>(FindPlace(kFields, record, exchange.names.subheaderName).bytes);
  const auto* data = LoadFrom<const int32_t*>(FindPlace(kFields, record, exchange.names.dataName).bytes);
  LengthTable& table = header.*exchange.table;
  const uint32_t count = std::min<uint32_t>(given > 0 ? static_cast<uint32_t>(given) : 0, table.Count());
  for (uint32_t i = 0; i < count; ++i) {
    if (subheaders != nullptr) SetLength(table.current[i].subheader, subheaders[i]);
    if (data != nullptr) SetLength(table.current[i].data, data[i]);
  }
}

void SetComplexity(FileHeader& header, int32_t level) {
  if ((level < 1 || level > 7) && level != 99) return;
  (void)FormatNumberField(header.CLEVEL.text, 2, level);
  header.CLEVEL.value = static_cast<uint32_t>(level);
}

// Two decimals, filled with zeros in front.
void SetVersion(FileHeader& header, float version) {
  const double hundredths = std::round(static_cast<double>(version) * 100.0);
  if (!(hundredths >= 0 && hundredths < 10000)) return;
  const auto whole = static_cast<int32_t>(hundredths);
  char text[6];
  (void)FormatNumberField(text, 2, whole / 100);
  text[2] = '.';
  (void)FormatNumberField(text + 3, 2, whole % 100);
  std::memcpy(header.FVER.text, text, sizeof text);
}

// A length that a header can have is what a save writes; the text takes any.
void SetHeaderLength(FileHeader& header, int32_t length) {
  if (length == DecimalOf(header.HL.text)) return;
  if (!Ok(SetNumber(*FindRow<FileHeader>(FileHeader::Table(), "HL"), header, length))) return;
  if (length >= static_cast<int32_t>(kBareHeaderLength)) header.currentHeaderLength = header.HL.value;
}

void SetFileLength(FileHeader& header, int32_t length) {
  if (length < 0 || length == DecimalOf(header.FL.text)) return;
  (void)header.SetFileLength(static_cast<uint32_t>(length));
}

// Whether a field is stored by a function of its own, which is then called.
bool SetSpecial(std::string_view name, FileHeader& header, const uint8_t* bytes) {
  const auto number = [bytes] { return LoadFrom<int32_t>(bytes); };
  for (const LengthExchange& exchange : kLengths) {
    if (name == exchange.names.countName && number() < 0) return true;
  }
  if (name == "CLEVEL") return SetComplexity(header, number()), true;
  if (name == "HL") return SetHeaderLength(header, number()), true;
  if (name == "FL") return SetFileLength(header, number()), true;
  if (name == "FBKGC") return header.SetBackground(LoadFrom<uint32_t>(bytes)), true;
  if (name == "FVER") return SetVersion(header, LoadFrom<float>(bytes)), true;
  if (name == "UDHD") return (void)header.userDefined.SetBytes(LoadFrom<const char*>(bytes)), true;
  if (name == "XHD") return (void)header.extended.SetBytes(LoadFrom<const char*>(bytes)), true;
  return false;
}

}  // namespace

PublicTable PublicFileFields() { return kFields; }

Status GetFileHeader(NitfFile& document, NITFHeader& record) {
  if (Status s = GetFields(kFields, document.header, &record); !Ok(s)) return s;
  for (const LengthExchange& exchange : kLengths) {
    if (!exchange.get) continue;
    if (Status s = GetLengths(exchange, document.header, record); !Ok(s)) return s;
  }
  return Status::Success;
}

void SetFileHeader(NitfFile& document, const NITFHeader& record) {
  FileHeader& header = document.header;
  auto* source = const_cast<NITFHeader*>(&record);
  auto* bytes = reinterpret_cast<uint8_t*>(source);
  for (const PublicField& field : kFields) {
    if (!SetSpecial(field.name, header, bytes)) {
      const FieldRow<FileHeader>* row = FindRow<FileHeader>(FileHeader::Table(), field.name);
      if (row != nullptr) (void)SetField(*row, header, {&field, bytes});
      for (const LengthExchange& exchange : kLengths) {
        if (std::string_view(exchange.names.countName) == field.name)
          SetLengths(exchange, header, source);
      }
    }
    bytes += SizeOf(field.kind);
  }
}

void FreeFileHeader(NITFHeader& record) { FreeFields(kFields, &record); }
