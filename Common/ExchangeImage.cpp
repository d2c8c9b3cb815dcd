// Exchange of image subheaders.
#include <algorithm>

#include "Common/Exchange.h"

namespace {

constexpr char16_t kSourceFile[] = u"ORBNTF";

using enum PublicKind;
using H = ImageSubheader;

constexpr PublicField kFields[] = {{"IM", String},
                                   {"IID1", String},
                                   {"IDATIM", DateTime},
                                   {"TGTID", String},
                                   {"IID2", String},
                                   {"ISCLAS", String},
                                   {"ISCLSY", String},
                                   {"ISCODE", String},
                                   {"ISCTLH", String},
                                   {"ISREL", String},
                                   {"ISDCTP", String},
                                   {"ISDCDT", Date},
                                   {"ISDCXM", String},
                                   {"ISDG", String},
                                   {"ISDGDT", Date},
                                   {"ISCLTX", String},
                                   {"ISCATP", String},
                                   {"ISCAUT", String},
                                   {"ISCRSN", String},
                                   {"ISSRDT", Date},
                                   {"ISCTLN", String},
                                   {"ENCRYP", Int},
                                   {"ISORCE", String},
                                   {"NROWS", Int},
                                   {"NCOLS", Int},
                                   {"PVTYPE", String},
                                   {"IREP", String},
                                   {"ICAT", String},
                                   {"ABPP", Int},
                                   {"PJUST", String},
                                   {"ICORDS", String},
                                   {"IGEOLO", String},
                                   {"NICOM", Int},
                                   {"ICOM", Pointer, false},
                                   {"IC", String},
                                   {"COMRAT", String},
                                   {"NBANDS", Int},
                                   {"XBANDS", Int},
                                   {"IREPBAND", Pointer, false},
                                   {"ISUBCAT", Pointer, false},
                                   {"IFC", Pointer, false},
                                   {"IMFLT", Pointer, false},
                                   {"ISYNC", Int},
                                   {"IMODE", String},
                                   {"NBPR", Int},
                                   {"NBPC", Int},
                                   {"NPPBH", Int},
                                   {"NPPBV", Int},
                                   {"NBPP", Int},
                                   {"IDLVL", Int},
                                   {"IALVL", Int},
                                   {"ILOC", Location},
                                   {"IMAG", String},
                                   {"UDIDL", Int},
                                   {"UDOFL", Int},
                                   {"UDID", Pointer, false},
                                   {"IXSHDL", Int},
                                   {"IXSOFL", Int},
                                   {"IXSHD", Pointer, false},
                                   {"IMDATOFF", Int, false},
                                   {"BMRLNTH", Short, false},
                                   {"TMRLNTH", Short, false},
                                   {"TPXCDLNTH", Short, false},
                                   {"TPXCD", Pointer, false}};
static_assert(SizeOf(kFields) == sizeof(ImageHeader));

constexpr const char* kBandTables[] = {"IREPBAND", "ISUBCAT", "IFC", "IMFLT"};

constexpr const char* kSetOrder[] = {
    "IM",     "IID1",     "TGTID",   "IID2",    "ISCLAS",    "ISCLSY", "ISCODE", "ISCTLH", "ISREL",
    "ISDCTP", "ISDCXM",   "ISDG",    "ISCLTX",  "ISCATP",    "ISCAUT", "ISCRSN", "ISCTLN", "ISORCE",
    "PVTYPE", "IREP",     "ICAT",    "PJUST",   "ICORDS",    "IC",     "COMRAT", "IGEOLO", "IDATIM",
    "ISDCDT", "ISDGDT",   "ISSRDT",  "ENCRYP",  "NROWS",     "NCOLS",  "ABPP",   "NICOM",  "ICOM",
    "NBANDS", "XBANDS",   "ISYNC",   "IMODE",   "NBPR",      "NBPC",   "NPPBH",  "NPPBV",  "NBPP",
    "IDLVL",  "IALVL",    "ILOC",    "IMAG",    "UDIDL",     "UDOFL",  "UDID",   "IXSHDL", "IXSOFL",
    "IXSHD",  "IMDATOFF", "BMRLNTH", "TMRLNTH", "TPXCDLNTH", "TPXCD"};

const char* StringAt(PublicTable table, void* record, const char* name) {
  return LoadFrom<const char*>(FindPlace(table, record, name).bytes);
}

Status SetComments(H& header, PublicTable table, void* record) {
  const uint32_t count = LoadFrom<uint32_t>(FindPlace(table, record, "NICOM").bytes);
  const auto* comments = LoadFrom<const char* const*>(FindPlace(table, record, "ICOM").bytes);
  for (uint32_t i = 0; i < count; ++i) {
    if (i >= header.comments.size() || comments == nullptr) return Status::InvalidParameter;
    if (Status s = header.SetComment(i, comments[i]); !Ok(s)) return s;
  }
  return Status::Success;
}

template <Status (H::*Set)(const char*), const auto& kName>
Status SetString(H& header, PublicTable table, void* record) {
  return (header.*Set)(StringAt(table, record, kName));
}
template <Status (H::*Set)(int32_t), const auto& kName>
Status SetInteger(H& header, PublicTable table, void* record) {
  return (header.*Set)(LoadFrom<int32_t>(FindPlace(table, record, kName).bytes));
}
template <auto Member, const auto& kName>
Status SetMaskValue(H& header, PublicTable table, void* record) {
  auto& value = header.mask.*Member;
  value = LoadFrom<std::remove_reference_t<decltype(value)>>(FindPlace(table, record, kName).bytes);
  return Status::Success;
}

constexpr char kNicom[] = "NICOM", kNbands[] = "NBANDS", kXbands[] = "XBANDS", kIcords[] = "ICORDS",
               kIc[] = "IC", kComrat[] = "COMRAT", kImag[] = "IMAG", kImdatoff[] = "IMDATOFF",
               kBmrlnth[] = "BMRLNTH", kTmrlnth[] = "TMRLNTH", kTpxcdlnth[] = "TPXCDLNTH";

constexpr SpecialSetter<H> kSpecials[] = {
    {kIcords, &SetString<&H::SetCoordinates, kIcords>},
    {kIc, &SetString<&H::SetCompression, kIc>},
    {kComrat, &SetString<&H::SetCompressionRate, kComrat>},
    {kImag, &SetString<&H::SetMagnification, kImag>},
    {"ICOM", &SetComments},
    {kNicom, &SetInteger<&H::SetCommentCount, kNicom>},
    {kNbands, &SetInteger<&H::SetBandCount, kNbands>},
    {kXbands, &SetInteger<&H::SetExtendedBandCount, kXbands>},
    {"UDID",
     [](H& header, PublicTable table, void* record) {
       return SetExtended(header.userDefined, FindPlace(table, record, "UDID"));
     }},
    {"IXSHD",
     [](H& header, PublicTable table, void* record) {
       return SetExtended(header.extended, FindPlace(table, record, "IXSHD"));
     }},
    {kImdatoff, &SetMaskValue<&MaskTable::IMDATOFF, kImdatoff>},
    {kBmrlnth, &SetMaskValue<&MaskTable::BMRLNTH, kBmrlnth>},
    {kTmrlnth, &SetMaskValue<&MaskTable::TMRLNTH, kTmrlnth>},
    {kTpxcdlnth, &SetMaskValue<&MaskTable::TPXCDLNTH, kTpxcdlnth>},
    {"TPXCD",
     [](H& header, PublicTable table, void* record) {
       const char* code = StringAt(table, record, "TPXCD");
       return code != nullptr ? header.SetPadCode(code) : Status::Success;
     }},
};

// The comments are given even when memory runs out half way, so that Free finds them all.
Status GetComments(const H& header, ImageHeader& record) {
  const auto count = static_cast<uint32_t>(DecimalOf(header.NICOM.text));
  if (count == 0 || count > 9) return Status::Success;
  KernelBuffer<char*> comments;
  if (Status s = comments.Allocate(count, ORB_HERE); !Ok(s)) return s;
  char** given = comments.Release();
  StoreTo(FindPlace(kFields, &record, "ICOM").bytes, given);
  for (uint32_t i = 0; i < count; ++i) {
    given[i] = CopyForCaller(i < header.comments.size() ? header.comments[i].text : "");
    if (given[i] == nullptr) return Status::OutOfMemory;
  }
  return Status::Success;
}

Status GetBytes(std::string_view bytes, size_t length, ImageHeader& record, const char* name) {
  char* copy = CopyForCaller(bytes, length);
  if (copy == nullptr) return Status::OutOfMemory;
  StoreTo(FindPlace(kFields, &record, name).bytes, copy);
  return Status::Success;
}

Status GetMask(const MaskTable& mask, ImageHeader& record) {
  record.IMDATOFF = static_cast<int32_t>(std::min<uint32_t>(mask.IMDATOFF, INT32_MAX));
  record.BMRLNTH = mask.BMRLNTH;
  record.TMRLNTH = mask.TMRLNTH;
  record.TPXCDLNTH = mask.TPXCDLNTH;
  if (mask.TPXCDLNTH == 0) return Status::Success;
  return GetBytes({reinterpret_cast<const char*>(mask.TPXCD.data()), mask.TPXCD.size()},
                  mask.PadCodeBytes(), record, "TPXCD");
}

// Frees the strings of an array whose count the record gives.
void FreeStrings(ImageHeader& record, const char* name, uint32_t count) {
  char** strings = LoadFrom<char**>(FindPlace(kFields, &record, name).bytes);
  if (strings == nullptr) return;
  for (uint32_t i = 0; i < count; ++i) FreePointer(reinterpret_cast<uint8_t*>(&strings[i]));
}

}  // namespace

PublicTable PublicImageFields() { return kFields; }

Status GetImageHeader(ImageSubheader& header, ImageHeader& record) {
  if (Status s = GetFields(kFields, header, &record); !Ok(s)) return s;
  if (Status s = GetComments(header, record); !Ok(s)) return s;
  if (const int32_t length = DecimalOf(header.userDefined.length.text); length > 0) {
    const auto bytes = static_cast<size_t>(length);
    if (Status s = GetBytes(header.userDefined.Data(), bytes, record, "UDID"); !Ok(s)) return s;
  }
  if (Status s = GetExtended(header.extended, FindPlace(kFields, &record, "IXSHD")); !Ok(s)) return s;
  return GetMask(header.mask, record);
}

Status SetImageHeader(ImageSubheader& header, const ImageHeader& record) {
  // The pad pixel code is the last field and its length the one before it.
  const uint16_t padCodeBits = header.mask.TPXCDLNTH;
  const Status status = SetFields(kSetOrder, kFields, kSpecials, header, &record);
  if (!Ok(status)) header.mask.TPXCDLNTH = padCodeBits;
  return status;
}

void FreeImageHeader(ImageHeader& record) {
  FreeStrings(record, "ICOM", record.NICOM);
  for (const char* name : kBandTables) FreeStrings(record, name, record.NBANDS);
  FreeFields(kFields, &record);
}
