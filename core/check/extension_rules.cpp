// Data extensions, and records that overflowed into one.
#include "core/check/rule.h"
#include "core/format/xml.h"

namespace core {
namespace {

// Where an area lies in a file: the kind of its header.
struct Area {
  std::string_view records;
  PartKind kind;
};
constexpr Area kAreas[] = {{"UDHD", PartKind::File},     {"XHD", PartKind::File},
                           {"UDID", PartKind::Image},    {"IXSHD", PartKind::Image},
                           {"SXSHD", PartKind::Graphic}, {"TXSHD", PartKind::Text}};

void AskName(Checking& checking, const SurveyedPart& part) {
  constexpr std::string_view kKnown =
      "TRE_OVERFLOW|STREAMING_FILE_HEADER|XML_DATA_CONTENT|EXT_DEF_CONTENT|CSSHPA DES|CSSHPB DES|CSATTA "
      "DES|"
      "CSATTB|CSEPHB|CSCSDB|CSSFAB|CSRLSB|LIDARA DES|SICD_XML|SIDD_XML";
  if (part.Has("DESID") && !IsOneOf(part.Trimmed("DESID"), kKnown)) checking.FailAt(part, "DESID");
}

// A header whose records go on elsewhere.
void AskOverflow(Checking& checking, const SurveyedPart& part) {
  for (const RecordArea& area : part.areas) {
    if (area.overflow == 0) continue;
    const SurveyedPart* extension =
        checking.survey.Find(PartKind::DataExtension, static_cast<uint32_t>(area.overflow - 1));
    const int64_t item = part.kind == PartKind::File ? 0 : int64_t{part.index} + 1;
    const bool pointsBack = extension != nullptr && extension->Trimmed("DESID") == "TRE_OVERFLOW" &&
                            extension->Trimmed("DESOFLW") == area.name &&
                            extension->Number("DESITEM") == item;
    if (!pointsBack)
      checking.FailAtByte(part, area.offset - 3,
                          "records of " + area.name + " go on in data extension " +
                              std::to_string(area.overflow) + ", which does not say so");
  }
}

void AskBack(Checking& checking, const SurveyedPart& part) {
  if (!part.Has("DESITEM")) return;
  const std::string_view name = part.Trimmed("DESOFLW");
  const int64_t item = part.Number("DESITEM");
  for (const Area& area : kAreas) {
    if (area.records != name || item < 0 || (area.kind == PartKind::File) != (item == 0)) continue;
    const SurveyedPart* header =
        checking.survey.Find(area.kind, static_cast<uint32_t>(item == 0 ? 0 : item - 1));
    if (header == nullptr) break;
    for (const RecordArea& there : header->areas) {
      if (there.name == name && there.overflow == int64_t{part.index} + 1) return;
    }
  }
  checking.Fail(part, "DESOFLW",
                "it holds records of " + Quoted(name) + ", segment " + Quoted(part.Text("DESITEM")) +
                    ", which does not say so");
}

void AskXml(Checking& checking, const SurveyedPart& part) {
  if (part.Trimmed("DESID") != "XML_DATA_CONTENT" || !checking.survey.HoldsData(part)) return;
  const XmlFault fault = FindXmlFault(PartBytes(checking.survey.file, part.dataOffset, part.dataLength));
  if (!fault.words.empty())
    checking.FailAtByte(part, part.dataOffset + fault.at, "the data is not well-formed: " + fault.words);
}

constexpr Rule kRules[] = {
    {"extension.name", Severity::Note, On::Extension, "DESID", "MIL-STD-2500C, table A-8; the register",
     "The name of an extension is registered.", AskName},
    {"extension.xml", Severity::Warning, On::Extension, "DESID", "XML 1.0; STDI-0002, XML_DATA_CONTENT",
     "XML data is well-formed.", AskXml},
    {"extension.overflow", Severity::Error, On::Header, "UDHOFL",
     "MIL-STD-2500C, 5.8.1.4 and table A-8(A)",
     "What overflows from a header stands in the data extension that it names.", AskOverflow},
    {"extension.back", Severity::Error, On::Extension, "DESOFLW", "MIL-STD-2500C, table A-8(A)",
     "An extension of overflowed records names the header that they are of.", AskBack},
};

}  // namespace

const Rules kExtensionRules = kRules;

}  // namespace core
