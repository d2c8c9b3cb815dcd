#include "core/report/report.h"

#include <algorithm>

#include "core/report/html.h"
#include "core/report/template.h"
#include "media/work.h"

namespace core {
namespace {

std::string Assemble(const ReportedFile& file, const PageDetail& detail, bool isShortened) {
  const std::string note =
      isShortened ? Tag("p", "Less of this file is shown than there is, so that the page stays small.",
                        "class=\"soft\"")
                  : "";
  // Findings lead to the rows that there are.
  std::set<std::string> rows;
  const std::string fields = FieldsSection(file, detail, rows);
  const std::string beside =
      Tag("div", FindingsSection(file, detail, rows) + PictureSection(file, detail), "class=\"beside\"");
  return SummarySection(file) + note + beside + SegmentsSection(file, detail) + LocationSection(file) +
         TextsSection(file, detail) + RecordsSection(file, detail) + fields + LayoutSection(file, detail);
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
      {"{{WORLD}}", body.find("href=\"#world\"") != std::string::npos
                        ? std::string(kTemplateTexts[1].text)
                        : std::string()},
      {"{{BODY}}", body}};
  return Filled(kTemplateTexts[0].text, values);
}

}  // namespace core
