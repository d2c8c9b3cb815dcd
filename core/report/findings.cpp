// What is wrong with a file, first of all.
#include <algorithm>

#include "core/report/html.h"
#include "core/report/report.h"

namespace core {
namespace {

std::string Item(const ReportedFile& file, const Finding& finding, const std::set<std::string>& rows) {
  const std::string name = NameOf(finding.rule->severity);
  // Lengths of segments stand in the file header.
  std::string row = RowId(file, finding.part, finding.field);
  if (rows.count(row) == 0) row = RowId(file, file.survey.Header().Title(), finding.field);
  std::string field = Escaped(finding.field);
  if (rows.count(row) != 0) field = Tag("a", field, "href=\"#" + row + "\"");
  const std::string place =
      Escaped(finding.part) + ", " + field + ", byte " + std::to_string(finding.offset);
  return Tag("li",
             Tag("span", name, "class=\"severity\"") + " " + Tag("code", finding.rule->id) + ": " +
                 Escaped(finding.words) + "<br>" + Tag("span", place, "class=\"soft\"") + "<br>" +
                 Escaped(finding.rule->sentence) + " " +
                 Tag("span", "(" + Escaped(finding.rule->standard) + ")", "class=\"soft\""),
             "class=\"" + name + "\"") +
         "\n";
}

}  // namespace

std::string FindingsSection(const ReportedFile& file, const PageDetail& detail,
                            const std::set<std::string>& rows) {
  constexpr Severity kOrder[] = {Severity::Error, Severity::Warning, Severity::Note};
  const std::string mark = Tag("svg", "<path d=\"M2 8l4 4 8-9\"/>",
                               "class=\"mark\" viewBox=\"0 0 16 16\" aria-hidden=\"true\"");
  std::string items, counts;
  size_t shown = 0;
  for (const Severity severity : kOrder) {
    const std::string name = NameOf(severity);
    size_t count = 0;
    for (const Finding& finding : file.findings) {
      if (finding.rule->severity != severity) continue;
      ++count;
      if (++shown > detail.findings) continue;
      items += Item(file, finding, rows);
    }
    if (count != 0) counts += Tag("li", Counted(count, name), "class=\"" + name + "\"");
  }
  if (shown > detail.findings)
    items += Tag("li", "and " + Counted(shown - detail.findings, "more finding"));
  const std::string heading = counts.empty()
                                  ? Tag("p", mark + " It breaks no rule.", "class=\"verdict good\"")
                                  : Tag("ul", counts, "class=\"counts\"");
  const std::string list = items.empty() ? "" : Tag("ul", items, "class=\"findings\"");
  return Section(file.id + "-check", "Check", heading + list);
}

}  // namespace core
