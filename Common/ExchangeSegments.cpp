// Exchange of image, graphic and text subheaders.
#include <algorithm>

#include "Common/Exchange.h"
#include "Common/GrSubHdr.h"
#include "Common/ImSubHdr.h"
#include "Common/TxSubHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"ORBNTF";

using H = ImageSubheader;
using I = ImageHeader;
using G = GraphicHeader;
using T = TextHeader;

constexpr PublicField kImageFields[] = {
    Public<&I::IM>("IM"),           Public<&I::IID1>("IID1"),      Public<&I::IDATIM>("IDATIM"),
    Public<&I::TGTID>("TGTID"),     Public<&I::IID2>("IID2"),      Public<&I::ISCLAS>("ISCLAS"),
    Public<&I::ISCLSY>("ISCLSY"),   Public<&I::ISCODE>("ISCODE"),  Public<&I::ISCTLH>("ISCTLH"),
    Public<&I::ISREL>("ISREL"),     Public<&I::ISDCTP>("ISDCTP"),  Public<&I::ISDCDT>("ISDCDT"),
    Public<&I::ISDCXM>("ISDCXM"),   Public<&I::ISDG>("ISDG"),      Public<&I::ISDGDT>("ISDGDT"),
    Public<&I::ISCLTX>("ISCLTX"),   Public<&I::ISCATP>("ISCATP"),  Public<&I::ISCAUT>("ISCAUT"),
    Public<&I::ISCRSN>("ISCRSN"),   Public<&I::ISSRDT>("ISSRDT"),  Public<&I::ISCTLN>("ISCTLN"),
    Public<&I::ENCRYP>("ENCRYP"),   Public<&I::ISORCE>("ISORCE"),  Public<&I::NROWS>("NROWS"),
    Public<&I::NCOLS>("NCOLS"),     Public<&I::PVTYPE>("PVTYPE"),  Public<&I::IREP>("IREP"),
    Public<&I::ICAT>("ICAT"),       Public<&I::ABPP>("ABPP"),      Public<&I::PJUST>("PJUST"),
    Public<&I::ICORDS>("ICORDS"),   Public<&I::IGEOLO>("IGEOLO"),  Public<&I::NICOM>("NICOM"),
    Public<&I::ICOM>("ICOM"),       Public<&I::IC>("IC"),          Public<&I::COMRAT>("COMRAT"),
    Public<&I::NBANDS>("NBANDS"),   Public<&I::XBANDS>("XBANDS"),  Public<&I::IREPBAND>("IREPBAND"),
    Public<&I::ISUBCAT>("ISUBCAT"), Public<&I::IFC>("IFC"),        Public<&I::IMFLT>("IMFLT"),
    Public<&I::ISYNC>("ISYNC"),     Public<&I::IMODE>("IMODE"),    Public<&I::NBPR>("NBPR"),
    Public<&I::NBPC>("NBPC"),       Public<&I::NPPBH>("NPPBH"),    Public<&I::NPPBV>("NPPBV"),
    Public<&I::NBPP>("NBPP"),       Public<&I::IDLVL>("IDLVL"),    Public<&I::IALVL>("IALVL"),
    Place<&I::ILOCrow>("ILOC"),     Public<&I::IMAG>("IMAG"),      Public<&I::UDIDL>("UDIDL"),
    Public<&I::UDOFL>("UDOFL"),     Own<&I::UDID>("UDID"),         Public<&I::IXSHDL>("IXSHDL"),
    Public<&I::IXSOFL>("IXSOFL"),   Public<&I::IXSHD>("IXSHD"),    ToSet<&I::IMDATOFF>("IMDATOFF"),
    ToSet<&I::BMRLNTH>("BMRLNTH"),  ToSet<&I::TMRLNTH>("TMRLNTH"), ToSet<&I::TPXCDLNTH>("TPXCDLNTH"),
    Public<&I::TPXCD>("TPXCD")};
constexpr const char* kImageSetOrder[] = {
    "IM",     "IID1",     "TGTID",   "IID2",    "ISCLAS",    "ISCLSY", "ISCODE", "ISCTLH", "ISREL",
    "ISDCTP", "ISDCXM",   "ISDG",    "ISCLTX",  "ISCATP",    "ISCAUT", "ISCRSN", "ISCTLN", "ISORCE",
    "PVTYPE", "IREP",     "ICAT",    "PJUST",   "ICORDS",    "IC",     "COMRAT", "IGEOLO", "IDATIM",
    "ISDCDT", "ISDGDT",   "ISSRDT",  "ENCRYP",  "NROWS",     "NCOLS",  "ABPP",   "NICOM",  "ICOM",
    "NBANDS", "XBANDS",   "ISYNC",   "IMODE",   "NBPR",      "NBPC",   "NPPBH",  "NPPBV",  "NBPP",
    "IDLVL",  "IALVL",    "ILOC",    "IMAG",    "UDIDL",     "UDOFL",  "UDID",   "IXSHDL", "IXSOFL",
    "IXSHD",  "IMDATOFF", "BMRLNTH", "TMRLNTH", "TPXCDLNTH", "TPXCD"};
static_assert(SizeOf(kImageFields) == sizeof(ImageHeader) && HasAll(kImageFields, kImageSetOrder));

constexpr PublicField kGraphicFields[] = {
    Public<&G::SY>("SY"),           Public<&G::SID>("SID"),       Public<&G::SNAME>("SNAME"),
    Public<&G::SSCLAS>("SSCLAS"),   Public<&G::SSCLSY>("SSCLSY"), Public<&G::SSCODE>("SSCODE"),
    Public<&G::SSCTLH>("SSCTLH"),   Public<&G::SSREL>("SSREL"),   Public<&G::SSDCTP>("SSDCTP"),
    Public<&G::SSDCDT>("SSDCDT"),   Public<&G::SSDCXM>("SSDCXM"), Public<&G::SSDG>("SSDG"),
    Public<&G::SSDGDT>("SSDGDT"),   Public<&G::SSCLTX>("SSCLTX"), Public<&G::SSCATP>("SSCATP"),
    Public<&G::SSCAUT>("SSCAUT"),   Public<&G::SSCRSN>("SSCRSN"), Public<&G::SSSRDT>("SSSRDT"),
    Public<&G::SSCTLN>("SSCTLN"),   Public<&G::ENCRYP>("ENCRYP"), Public<&G::SFMT>("SFMT"),
    Public<&G::SSTRUCT>("SSTRUCT"), Public<&G::SDLVL>("SDLVL"),   Public<&G::SALVL>("SALVL"),
    Place<&G::SLOCrow>("SLOC"),     Place<&G::SBND1row>("SBND1"), Public<&G::SCOLOR>("SCOLOR"),
    Place<&G::SBND2row>("SBND2"),   Public<&G::SRES1>("SRES1"),   Public<&G::SXSHDL>("SXSHDL"),
    Public<&G::SXSOFL>("SXSOFL"),   Public<&G::SXSHD>("SXSHD")};
constexpr const char* kGraphicSetOrder[] = {
    "SY",     "SID",    "SNAME",   "SSCLAS", "SSCLSY", "SSCODE", "SSCTLH", "SSREL",
    "SSDCTP", "SSDCXM", "SSDG",    "SSCLTX", "SSCATP", "SSCAUT", "SSCRSN", "SSCTLN",
    "ENCRYP", "SFMT",   "SSTRUCT", "SDLVL",  "SALVL",  "SLOC",   "SBND1",  "SBND2",
    "SCOLOR", "SRES1",  "SXSHDL",  "SXSOFL", "SXSHD",  "SSDCDT", "SSDGDT", "SSSRDT"};
static_assert(SizeOf(kGraphicFields) == sizeof(GraphicHeader) &&
              HasAll(kGraphicFields, kGraphicSetOrder));

constexpr PublicField kTextFields[] = {
    Public<&T::TE>("TE"),         Public<&T::TEXTID>("TEXTID"), Public<&T::TXTALVL>("TXTALVL"),
    Public<&T::TXTDT>("TXTDT"),   Public<&T::TXTITL>("TXTITL"), Public<&T::TSCLAS>("TSCLAS"),
    Public<&T::TSCLSY>("TSCLSY"), Public<&T::TSCODE>("TSCODE"), Public<&T::TSCTLH>("TSCTLH"),
    Public<&T::TSREL>("TSREL"),   Public<&T::TSDCTP>("TSDCTP"), Public<&T::TSDCDT>("TSDCDT"),
    Public<&T::TSDCXM>("TSDCXM"), Public<&T::TSDG>("TSDG"),     Public<&T::TSDGDT>("TSDGDT"),
    Public<&T::TSCLTX>("TSCLTX"), Public<&T::TSCATP>("TSCATP"), Public<&T::TSCAUT>("TSCAUT"),
    Public<&T::TSCRSN>("TSCRSN"), Public<&T::TSSRDT>("TSSRDT"), Public<&T::TSCTLN>("TSCTLN"),
    Public<&T::ENCRYP>("ENCRYP"), Public<&T::TXTFMT>("TXTFMT"), Public<&T::TXSHDL>("TXSHDL"),
    Public<&T::TXSOFL>("TXSOFL"), Public<&T::TXSHD>("TXSHD")};
constexpr const char* kTextSetOrder[] = {
    "TE",     "TEXTID", "TXTALVL", "TXTDT",  "TXTITL", "TSCLAS", "TSCLSY", "TSCODE", "TSCTLH",
    "TSREL",  "TSDCTP", "TSDCDT",  "TSDCXM", "TSDG",   "TSDGDT", "TSCLTX", "TSCATP", "TSCAUT",
    "TSCRSN", "TSSRDT", "TSCTLN",  "ENCRYP", "TXTFMT", "TXSHDL", "TXSOFL", "TXSHD"};
static_assert(SizeOf(kTextFields) == sizeof(TextHeader) && HasAll(kTextFields, kTextSetOrder));

// ---------------------------------------------------------------- setters beyond rows

// Extended data is left alone where the caller gives none.
template <auto Data, auto Given>
constexpr auto kExtended = [](auto& header, const auto& given) {
  const void* bytes = PublicMember<Given>::Of(given);
  return bytes != nullptr ? (header.*Data).SetBytes(bytes) : Status::Success;
};

Status SetComments(H& header, const ImageHeader& given) {
  for (uint32_t i = 0; i < given.NICOM; ++i) {
    if (i >= header.comments.size() || given.ICOM == nullptr) return Status::InvalidParameter;
    if (Status s = header.SetComment(i, given.ICOM[i]); !Ok(s)) return s;
  }
  return Status::Success;
}

// A special setter that gives one member of the public record to a setter of the header.
template <class Argument>
Argument ArgumentOf(Status (H::*)(Argument));
template <auto Set, auto Given>
constexpr auto kForward = [](H& header, const I& given) {
  return (header.*Set)(static_cast<decltype(ArgumentOf(Set))>(PublicMember<Given>::Of(given)));
};
template <auto Member, auto Given>
constexpr auto kAssignMask = [](H& header, const I& given) {
  using Part = std::remove_reference_t<decltype(header.mask.*Member)>;
  header.mask.*Member = static_cast<Part>(PublicMember<Given>::Of(given));
  return Status::Success;
};

constexpr SpecialSetter<H, I> kImageSpecials[] = {
    {"ICORDS", kForward<&H::SetCoordinates, &I::ICORDS>},
    {"IC", kForward<&H::SetCompression, &I::IC>},
    {"COMRAT", kForward<&H::SetCompressionRate, &I::COMRAT>},
    {"IMAG", kForward<&H::SetMagnification, &I::IMAG>},
    {"NICOM", kForward<&H::SetCommentCount, &I::NICOM>},
    {"ICOM", &SetComments},
    {"NBANDS", kForward<&H::SetBandCount, &I::NBANDS>},
    {"XBANDS", kForward<&H::SetExtendedBandCount, &I::XBANDS>},
    {"UDID", kExtended<&H::userDefined, &I::UDID>},
    {"IXSHD", kExtended<&H::extended, &I::IXSHD>},
    {"IMDATOFF", kAssignMask<&MaskTable::IMDATOFF, &I::IMDATOFF>},
    {"BMRLNTH", kAssignMask<&MaskTable::BMRLNTH, &I::BMRLNTH>},
    {"TMRLNTH", kAssignMask<&MaskTable::TMRLNTH, &I::TMRLNTH>},
    {"TPXCDLNTH", kAssignMask<&MaskTable::TPXCDLNTH, &I::TPXCDLNTH>},
    {"TPXCD",
     [](H& header, const ImageHeader& given) {
       return given.TPXCD != nullptr ? header.SetPadCode(given.TPXCD) : Status::Success;
     }},
};
constexpr SpecialSetter<GraphicSubheader, G> kGraphicSpecials[] = {
    {"SXSHD", kExtended<&GraphicSubheader::extended, &G::SXSHD>}};
constexpr SpecialSetter<TextSubheader, T> kTextSpecials[] = {
    {"TXSHD", kExtended<&TextSubheader::extended, &T::TXSHD>}};

// ---------------------------------------------------------------- getters beyond rows

Status GetBytes(std::string_view bytes, size_t length, uint8_t* place) {
  char* copy = CopyForCaller(bytes, length);
  if (copy == nullptr) return Status::OutOfMemory;
  StoreTo(place, copy);
  return Status::Success;
}

// What the pointer of extended data held is freed: where there are bytes to put there, or always.
enum class FreeOld { WithBytes, Always };

// Copies extended data when its length is above the overflow field's.
Status GetExtended(const ExtendedData& data, const PublicPlace& place, FreeOld rule) {
  constexpr auto kOverflow = static_cast<int32_t>(ExtendedData::kOverflowWidth);
  const int32_t length = DecimalOf(data.length.text);
  if (length > kOverflow || rule == FreeOld::Always) FreePointer(place.bytes);
  if (length <= kOverflow) return Status::Success;
  return GetBytes(data.Data(), static_cast<size_t>(length - kOverflow), place.bytes);
}

// The comments are given even when memory runs out half way, so that Free finds them all.
Status GetComments(const H& header, ImageHeader& record) {
  const uint32_t count = LengthOf(header.NICOM.text);
  if (count == 0) return Status::Success;
  KernelBuffer<char*> comments;
  if (Status s = comments.Allocate(count, ORB_HERE); !Ok(s)) return s;
  char** given = comments.Release();
  record.ICOM = given;
  for (uint32_t i = 0; i < count; ++i) {
    given[i] = CopyForCaller(i < header.comments.size() ? header.comments[i].text : "");
    if (given[i] == nullptr) return Status::OutOfMemory;
  }
  return Status::Success;
}

Status GetMask(const MaskTable& mask, ImageHeader& record) {
  record.IMDATOFF = static_cast<int32_t>(std::min<uint32_t>(mask.IMDATOFF, INT32_MAX));
  record.BMRLNTH = mask.BMRLNTH;
  record.TMRLNTH = mask.TMRLNTH;
  record.TPXCDLNTH = mask.TPXCDLNTH;
  if (mask.TPXCDLNTH == 0) return Status::Success;
  return GetBytes({reinterpret_cast<const char*>(mask.TPXCD.data()), mask.TPXCD.size()},
                  mask.PadCodeBytes(), FindPlace(kImageFields, &record, "TPXCD").bytes);
}

// Frees the strings of an array whose count the record gives.
void FreeStrings(char** strings, uint32_t count) {
  if (strings == nullptr) return;
  for (uint32_t i = 0; i < count; ++i) FreePointer(reinterpret_cast<uint8_t*>(&strings[i]));
}

}  // namespace

PublicTable PublicImageFields() { return kImageFields; }
PublicTable PublicGraphicFields() { return kGraphicFields; }
PublicTable PublicTextFields() { return kTextFields; }

Status GetImageHeader(ImageSubheader& header, ImageHeader& record) {
  if (Status s = GetFields(kImageFields, header, &record); !Ok(s)) return s;
  if (Status s = GetComments(header, record); !Ok(s)) return s;
  if (const int32_t length = DecimalOf(header.userDefined.length.text); length > 0) {
    uint8_t* place = FindPlace(kImageFields, &record, "UDID").bytes;
    if (Status s = GetBytes(header.userDefined.Data(), static_cast<size_t>(length), place); !Ok(s))
      return s;
  }
  if (Status s =
          GetExtended(header.extended, FindPlace(kImageFields, &record, "IXSHD"), FreeOld::WithBytes);
      !Ok(s))
    return s;
  return GetMask(header.mask, record);
}

Status SetImageHeader(ImageSubheader& header, const ImageHeader& record) {
  // The pad pixel code is the last field and its length the one before it.
  const uint16_t padCodeBits = header.mask.TPXCDLNTH;
  const Status status =
      SetFields(kImageSetOrder, kImageFields, kImageSpecials, header, record, OnRefusal::Stop);
  if (!Ok(status)) header.mask.TPXCDLNTH = padCodeBits;
  return status;
}

void FreeImageHeader(ImageHeader& record) {
  FreeStrings(record.ICOM, record.NICOM);
  for (char** table : {record.IREPBAND, record.ISUBCAT, record.IFC, record.IMFLT})
    FreeStrings(table, record.NBANDS);
  FreeFields(kImageFields, &record);
}

Status GetGraphicHeader(GraphicSubheader& header, GraphicHeader& record) {
  if (Status s = GetFields(kGraphicFields, header, &record); !Ok(s)) return s;
  return GetExtended(header.extended, FindPlace(kGraphicFields, &record, "SXSHD"), FreeOld::WithBytes);
}

Status SetGraphicHeader(GraphicSubheader& header, const GraphicHeader& record) {
  return SetFields(kGraphicSetOrder, kGraphicFields, kGraphicSpecials, header, record, OnRefusal::Stop);
}

void FreeGraphicHeader(GraphicHeader& record) { FreeFields(kGraphicFields, &record); }

Status GetTextHeader(TextSubheader& header, TextHeader& record) {
  if (Status s = GetFields(kTextFields, header, &record); !Ok(s)) return s;
  return GetExtended(header.extended, FindPlace(kTextFields, &record, "TXSHD"), FreeOld::Always);
}

Status SetTextHeader(TextSubheader& header, const TextHeader& record) {
  return SetFields(kTextSetOrder, kTextFields, kTextSpecials, header, record, OnRefusal::Stop);
}

void FreeTextHeader(TextHeader& record) { FreeFields(kTextFields, &record); }
