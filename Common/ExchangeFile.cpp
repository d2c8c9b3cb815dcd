// Exchange of the file header.
#include <algorithm>
#include <cmath>

#include "Common/Exchange.h"
#include "Common/NtfHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"ORBNTF";

using F = NITFHeader;

// In the order of the public record.
constexpr PublicField kFields[] = {
    Public<&F::FHDR>("FHDR"),      Public<&F::CLEVEL>("CLEVEL"), Public<&F::STYPE>("STYPE"),
    Public<&F::OSTAID>("OSTAID"),  Public<&F::FTITLE>("FTITLE"), Public<&F::FSCLAS>("FSCLAS"),
    Public<&F::FSCLSY>("FSCLSY"),  Public<&F::FSCODE>("FSCODE"), Public<&F::FSCTLH>("FSCTLH"),
    Public<&F::FSREL>("FSREL"),    Public<&F::FSDCTP>("FSDCTP"), Public<&F::FSDCXM>("FSDCXM"),
    Public<&F::FSDG>("FSDG"),      Public<&F::FSCLTX>("FSCLTX"), Public<&F::FSCATP>("FSCATP"),
    Public<&F::FSCAUT>("FSCAUT"),  Public<&F::FSCRSN>("FSCRSN"), Public<&F::FSCTLN>("FSCTLN"),
    Public<&F::ONAME>("ONAME"),    Public<&F::OPHONE>("OPHONE"), Public<&F::HL>("HL"),
    Public<&F::FL>("FL"),          Public<&F::FSCOP>("FSCOP"),   Public<&F::FSCPYS>("FSCPYS"),
    Public<&F::ENCRYP>("ENCRYP"),  Public<&F::NUMI>("NUMI"),     Public<&F::LISH>("LISH"),
    Public<&F::LI>("LI"),          Public<&F::NUMS>("NUMS"),     Public<&F::LSSH>("LSSH"),
    Public<&F::LS>("LS"),          ToSet<&F::NUMX>("NUMX"),      Public<&F::NUMT>("NUMT"),
    Public<&F::LTSH>("LTSH"),      Public<&F::LT>("LT"),         ToSet<&F::NUMDES>("NUMDES"),
    Public<&F::LDSH>("LDSH"),      Public<&F::LD>("LD"),         ToSet<&F::NUMRES>("NUMRES"),
    Public<&F::LRESH>("LRESH"),    Public<&F::LRE>("LRE"),       ToSet<&F::UDHDL>("UDHDL"),
    ToSet<&F::UDHOFL>("UDHOFL"),   Public<&F::UDHD>("UDHD"),     ToSet<&F::XHDL>("XHDL"),
    ToSet<&F::XHDLOFL>("XHDLOFL"), Public<&F::XHD>("XHD"),       ToSet<&F::FBKGC>("FBKGC"),
    Public<&F::FSSRDT>("FSSRDT"),  Public<&F::FSDGDT>("FSDGDT"), Public<&F::FSDCDT>("FSDCDT"),
    Public<&F::FDT>("FDT"),        Public<&F::FVER>("FVER")};
static_assert(SizeOf(kFields) == sizeof(NITFHeader));

constexpr auto kSetOrder = [] {
  std::array<const char*, std::size(kFields)> names{};
  for (size_t i = 0; i < names.size(); ++i) names[i] = kFields[i].name;
  return names;
}();

// Lengths beyond 31 bits are given as the largest number that the record holds.
int32_t ForCaller(uint64_t length) { return static_cast<int32_t>(std::min<uint64_t>(length, INT32_MAX)); }

Status GetLengths(const SegmentLengthFields& fields, const FileHeader& header, NITFHeader& record) {
  const uint32_t count = LoadFrom<uint32_t>(FindPlace(kFields, &record, fields.countName).bytes);
  if (count == 0 || count > kMaxSegments) return Status::Success;
  KernelBuffer<int32_t> subheaders, data;
  if (Status s = subheaders.Allocate(count, ORB_HERE); !Ok(s)) return s;
  if (Status s = data.Allocate(count, ORB_HERE); !Ok(s)) return s;
  for (uint32_t i = 0; i < count; ++i) {
    const SegmentLengths lengths = (header.*fields.table).Current(i);
    subheaders[i] = ForCaller(lengths.subheader);
    data[i] = ForCaller(lengths.data);
  }
  StoreTo(FindPlace(kFields, &record, fields.subheaderName).bytes, subheaders.Release());
  StoreTo(FindPlace(kFields, &record, fields.dataName).bytes, data.Release());
  return Status::Success;
}

// A length given back as it was taken stays, also where the record could not hold all of it.
void SetLength(uint32_t& length, int32_t given) {
  if (given >= 0 && given != ForCaller(length)) length = static_cast<uint32_t>(given);
}

// Stores a count and the lengths behind it. A caller's table has as many entries as its count says; the
// header's as the document has segments.
template <size_t I>
Status SetCount(FileHeader& header, const NITFHeader& given) {
  const SegmentLengthFields& fields = kSegmentLengths[I];
  const auto at = [&](const char* name) {
    return FindPlace(kFields, const_cast<NITFHeader*>(&given), name).bytes;
  };
  const int32_t count = LoadFrom<int32_t>(at(fields.countName));
  if (count < 0) return Status::InvalidParameter;
  const FieldRow<FileHeader>& row = *FindRow<FileHeader>(FileHeader::Table(), fields.countName);
  const Status status = SetNumber(row, row.view(header), count);
  const auto* subheaders = LoadFrom<const int32_t*>(at(fields.subheaderName));
  const auto* data = LoadFrom<const int32_t*>(at(fields.dataName));
  LengthTable& table = header.*fields.table;
  for (uint32_t i = 0; i < std::min(static_cast<uint32_t>(count), table.Count()); ++i) {
    if (subheaders != nullptr) SetLength(table.current[i].subheader, subheaders[i]);
    if (data != nullptr) SetLength(table.current[i].data, data[i]);
  }
  return status;
}

Status SetComplexity(FileHeader& header, const NITFHeader& given) {
  if ((given.CLEVEL < 1 || given.CLEVEL > 7) && given.CLEVEL != 99) return Status::InvalidParameter;
  header.CLEVEL.value = static_cast<uint32_t>(given.CLEVEL);
  return FormatNumberField(header.CLEVEL.text, sizeof header.CLEVEL.text - 1, given.CLEVEL);
}

// Two decimals, filled with zeros in front.
Status SetVersion(FileHeader& header, const NITFHeader& given) {
  const double hundredths = std::round(static_cast<double>(given.FVER) * 100.0);
  if (!(hundredths >= 0 && hundredths < 10000)) return Status::InvalidParameter;
  const auto whole = static_cast<int32_t>(hundredths);
  char text[6];
  (void)FormatNumberField(text, 2, whole / 100);
  text[2] = '.';
  (void)FormatNumberField(text + 3, 2, whole % 100);
  std::memcpy(header.FVER.text, text, sizeof text);
  return Status::Success;
}

// A length that a header can have is what a save writes; the text takes any.
Status SetHeaderLength(FileHeader& header, const NITFHeader& given) {
  if (given.HL == DecimalOf(header.HL.text)) return Status::Success;
  const FieldRow<FileHeader>& row = *FindRow<FileHeader>(FileHeader::Table(), "HL");
  if (Status s = SetNumber(row, row.view(header), given.HL); !Ok(s)) return s;
  if (given.HL >= static_cast<int32_t>(kBareHeaderLength)) header.currentHeaderLength = header.HL.value;
  return Status::Success;
}

Status SetFileLength(FileHeader& header, const NITFHeader& given) {
  if (given.FL < 0) return Status::InvalidParameter;
  if (given.FL == DecimalOf(header.FL.text)) return Status::Success;
  return header.SetFileLength(static_cast<uint32_t>(given.FL));
}

constexpr SpecialSetter<FileHeader, NITFHeader> kSpecials[] = {
    {"CLEVEL", &SetComplexity},
    {"HL", &SetHeaderLength},
    {"FL", &SetFileLength},
    {"FVER", &SetVersion},
    {"NUMI", &SetCount<0>},
    {"NUMS", &SetCount<1>},
    {"NUMT", &SetCount<2>},
    {"NUMDES", &SetCount<3>},
    {"NUMRES", &SetCount<4>},
    {"FBKGC",
     [](FileHeader& header, const NITFHeader& given) {
       header.SetBackground(given.FBKGC);
       return Status::Success;
     }},
    {"UDHD",
     [](FileHeader& header, const NITFHeader& given) { return header.userDefined.SetBytes(given.UDHD); }},
    {"XHD",
     [](FileHeader& header, const NITFHeader& given) { return header.extended.SetBytes(given.XHD); }},
};

}  // namespace

PublicTable PublicFileFields() { return kFields; }

Status GetFileHeader(FileHeader& header, NITFHeader& record) {
  if (Status s = GetFields(kFields, header, &record); !Ok(s)) return s;
  for (SegmentKind kind : {SegmentKind::Image, SegmentKind::Graphic, SegmentKind::Text}) {
    if (Status s = GetLengths(LengthFieldsOf(kind), header, record); !Ok(s)) return s;
  }
  return Status::Success;
}

void SetFileHeader(FileHeader& header, const NITFHeader& record) {
  (void)SetFields(kSetOrder, kFields, kSpecials, header, record, OnRefusal::GoOn);
}

void FreeFileHeader(NITFHeader& record) { FreeFields(kFields, &record); }
