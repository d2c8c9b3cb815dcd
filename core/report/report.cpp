#include "core/report/report.h"

#include <algorithm>

#include "core/report/html.h"
#include "core/report/template.h"
#include "media/work.h"

namespace core {
namespace {

std::string Head(const ReportedFile& file) {
  const SurveyedPart& header = file.survey.Header();
  const bool good = file.readerDraws;
  std::string counts;
  for (const PartKind kind : {PartKind::Image, PartKind::Graphic, PartKind::Text, PartKind::DataExtension,
                              PartKind::Reserved}) {
    if (const uint32_t count = file.survey.Count(kind); count != 0)
      counts += (counts.empty() ? "" : ", ") + Counted(count, NameOf(kind));
  }
  std::string facts =
      Term("The module", Tag("span", Escaped(file.readerWords),
                             std::string("class=\"verdict ") + (good ? "good\"" : "bad\"")));
  facts += Term("Format",
                EscapedField(std::string(header.Text("FHDR")) + " " + std::string(header.Text("FVER"))) +
                    ", complexity level " + EscapedField(header.Text("CLEVEL")));
  const std::string title = EscapedField(header.Text("FTITLE"));
  if (!title.empty()) facts += Term("Title", title);
  facts += Term("Date and station",
                EscapedField(header.Text("FDT")) + ", " + EscapedField(header.Text("OSTAID")));
  facts += Term("Classification", EscapedField(header.Text("FSCLAS")));
  facts += Term("Holds", counts.empty() ? "nothing" : counts);
  facts += Term("Size", Grouped(file.survey.file.Size()) + " bytes");
  return Section(file.id + "-summary", "Summary", Tag("dl", facts, "class=\"facts\""));
}

std::string Assemble(const ReportedFile& file, const PageDetail& detail, bool isShortened) {
  const std::string note =
      isShortened ? Tag("p", "Less of this file is shown than there is, so that the page stays small.",
                        "class=\"soft\"")
                  : "";
  return Head(file) + note + FindingsSection(file, detail) + PictureSection(file, detail) +
         SegmentsSection(file, detail) + LocationSection(file) + TextsSection(file, detail) +
         RecordsSection(file, detail) + FieldsSection(file, detail) + LayoutSection(file, detail);
}

// A template with its marks replaced. What stands for them is not looked at for marks again: a file may
// be named like one.
std::string Filled(std::string_view text,
                   std::span<const std::pair<std::string_view, std::string>> values) {
  std::string page;
  while (!text.empty()) {
    const size_t mark = std::min(text.find("{{"), text.size());
    page += text.substr(0, mark);
    text.remove_prefix(mark);
    const auto found = std::find_if(values.begin(), values.end(), [&](const auto& value) {
      return text.substr(0, value.first.size()) == value.first;
    });
    if (text.empty()) break;
    page += found != values.end() ? found->second : std::string(text.substr(0, 1));
    text.remove_prefix(found != values.end() ? found->first.size() : 1);
  }
  return page;
}

}  // namespace

std::string ReportOf(ReportedFile& file, size_t mostBytes) {
  constexpr PageDetail kDetails[] = {
      {2000, 20000, 500, 40, 2000, 1 << 20, 1},
      {400, 4000, 100, 12, 400, 64 << 10, 1},
      {80, 500, 20, 0, 80, 8 << 10, 2},
      {40, 40, 0, 0, 20, 0, 4},
      {0, 0, 0, 0, 3, 0, 0},
  };
  const media::WorkLimit limit(file.survey.file.Size());
  file.findings = FindFaults(file.survey, file.definitions);
  file.picture = DrawComposite(file.survey);
  DrawSegments(file, kDetails[0].segmentPictures);
  std::string report;
  for (const PageDetail& detail : kDetails) {
    report = Assemble(file, detail, &detail != kDetails);
    if (report.size() <= mostBytes) break;
  }
  return report;
}

std::string PageOf(const std::string& version, const std::string& title,
                   const std::vector<std::string>& reports, const std::vector<std::string>& names) {
  std::string index, body;
  for (size_t i = 0; i < reports.size(); ++i) {
    const std::string id = "f" + std::to_string(i + 1);
    index += Tag("li", Tag("a", Escaped(names[i]), "href=\"#" + id + "\""));
    const std::string heading = reports.size() > 1 ? Tag("h2", Escaped(names[i])) : "";
    body += Tag("article", heading + reports[i],
                "id=\"" + id + "\" aria-label=\"" + Escaped(names[i]) + "\"");
  }
  const std::pair<std::string_view, std::string> values[] = {
      {"{{VERSION}}", Escaped(version)},
      {"{{INDEX}}",
       reports.size() > 1 ? Tag("nav", Tag("ul", index), "aria-label=\"Files\"") : std::string()},
      {"{{TITLE}}", Escaped(title)},
      {"{{BODY}}", body}};
  return Filled(kTemplateTexts[0].text, values);
}

}  // namespace core
