// Exchange of graphic and text subheaders.
#include "Common/Exchange.h"

namespace {

using enum PublicKind;

constexpr PublicField kGraphicFields[] = {
    {"SY", String},     {"SID", String},     {"SNAME", String},  {"SSCLAS", String},
    {"SSCLSY", String}, {"SSCODE", String},  {"SSCTLH", String}, {"SSREL", String},
    {"SSDCTP", String}, {"SSDCDT", Date},    {"SSDCXM", String}, {"SSDG", String},
    {"SSDGDT", Date},   {"SSCLTX", String},  {"SSCATP", String}, {"SSCAUT", String},
    {"SSCRSN", String}, {"SSSRDT", Date},    {"SSCTLN", String}, {"ENCRYP", Int},
    {"SFMT", String},   {"SSTRUCT", Int},    {"SDLVL", Int},     {"SALVL", Int},
    {"SLOC", Location}, {"SBND1", Location}, {"SCOLOR", String}, {"SBND2", Location},
    {"SRES1", Int},     {"SXSHDL", Int},     {"SXSOFL", Int},    {"SXSHD", Pointer, false}};
static_assert(SizeOf(kGraphicFields) == sizeof(GraphicHeader));

constexpr const char* kGraphicSetOrder[] = {
    "SY",     "SID",    "SNAME",   "SSCLAS", "SSCLSY", "SSCODE", "SSCTLH", "SSREL",
    "SSDCTP", "SSDCXM", "SSDG",    "SSCLTX", "SSCATP", "SSCAUT", "SSCRSN", "SSCTLN",
    "ENCRYP", "SFMT",   "SSTRUCT", "SDLVL",  "SALVL",  "SLOC",   "SBND1",  "SBND2",
    "SCOLOR", "SRES1",  "SXSHDL",  "SXSOFL", "SXSHD",  "SSDCDT", "SSDGDT", "SSSRDT"};

constexpr SpecialSetter<GraphicSubheader> kGraphicSpecials[] = {
    {"SXSHD", [](GraphicSubheader& header, PublicTable table, void* record) {
       return SetExtended(header.extended, FindPlace(table, record, "SXSHD"));
     }}};

constexpr PublicField kTextFields[] = {
    {"TE", String},     {"TEXTID", String},       {"TXTALVL", Int},   {"TXTDT", DateTime},
    {"TXTITL", String}, {"TSCLAS", String},       {"TSCLSY", String}, {"TSCODE", String},
    {"TSCTLH", String}, {"TSREL", String},        {"TSDCTP", String}, {"TSDCDT", Date},
    {"TSDCXM", String}, {"TSDG", String},         {"TSDGDT", Date},   {"TSCLTX", String},
    {"TSCATP", String}, {"TSCAUT", String},       {"TSCRSN", String}, {"TSSRDT", Date},
    {"TSCTLN", String}, {"ENCRYP", Int},          {"TXTFMT", String}, {"TXSHDL", Int},
    {"TXSOFL", Int},    {"TXSHD", Pointer, false}};
static_assert(SizeOf(kTextFields) == sizeof(TextHeader));

constexpr const char* kTextSetOrder[] = {
    "TE",     "TEXTID", "TXTALVL", "TXTDT",  "TXTITL", "TSCLAS", "TSCLSY", "TSCODE", "TSCTLH",
    "TSREL",  "TSDCTP", "TSDCDT",  "TSDCXM", "TSDG",   "TSDGDT", "TSCLTX", "TSCATP", "TSCAUT",
    "TSCRSN", "TSSRDT", "TSCTLN",  "ENCRYP", "TXTFMT", "TXSHDL", "TXSOFL", "TXSHD"};

constexpr SpecialSetter<TextSubheader> kTextSpecials[] = {
    {"TXSHD", [](TextSubheader& header, PublicTable table, void* record) {
       return SetExtended(header.extended, FindPlace(table, record, "TXSHD"));
     }}};

}  // namespace

PublicTable PublicGraphicFields() { return kGraphicFields; }
PublicTable PublicTextFields() { return kTextFields; }

Status GetGraphicHeader(GraphicSubheader& header, GraphicHeader& record) {
  if (Status s = GetFields(kGraphicFields, header, &record); !Ok(s)) return s;
  return GetExtended(header.extended, FindPlace(kGraphicFields, &record, "SXSHD"));
}

Status SetGraphicHeader(GraphicSubheader& header, const GraphicHeader& record) {
  return SetFields(kGraphicSetOrder, kGraphicFields, kGraphicSpecials, header, &record);
}

void FreeGraphicHeader(GraphicHeader& record) { FreeFields(kGraphicFields, &record); }

Status GetTextHeader(TextSubheader& header, TextHeader& record) {
  if (Status s = GetFields(kTextFields, header, &record); !Ok(s)) return s;
  return GetExtended(header.extended, FindPlace(kTextFields, &record, "TXSHD"));
}

Status SetTextHeader(TextSubheader& header, const TextHeader& record) {
  return SetFields(kTextSetOrder, kTextFields, kTextSpecials, header, &record);
}

void FreeTextHeader(TextHeader& record) { FreeFields(kTextFields, &record); }
