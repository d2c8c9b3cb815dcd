// What is wrong with a file, first of all.
#include <algorithm>

#include "core/report/html.h"
#include "core/report/report.h"

namespace core {

std::string FindingsSection(const ReportedFile& file, const PageDetail& detail) {
  constexpr Severity kOrder[] = {Severity::Error, Severity::Warning, Severity::Note};
  std::string items, counts;
  size_t shown = 0;
  for (const Severity severity : kOrder) {
    const std::string name = NameOf(severity);
    size_t count = 0;
    for (const Finding& finding : file.findings) {
      if (finding.rule->severity != severity) continue;
      ++count;
      if (++shown > detail.findings) continue;
      const std::string place = Escaped(finding.part) + ", " + Escaped(finding.field) + ", byte " +
                                std::to_string(finding.offset);
      items += Tag("li",
                   Tag("span", name, "class=\"severity\"") + " " + Tag("code", finding.rule->id) + ": " +
                       Escaped(finding.words) + "<br>" + Tag("span", place, "class=\"soft\"") + "<br>" +
                       Escaped(finding.rule->sentence) + " " +
                       Tag("span", "(" + Escaped(finding.rule->standard) + ")", "class=\"soft\""),
                   "class=\"" + name + "\"") +
               "\n";
    }
    counts += (counts.empty() ? "" : ", ") + Counted(count, name);
  }
  if (shown > detail.findings)
    items += Tag("li", "and " + Counted(shown - detail.findings, "more finding"));
  const std::string list = items.empty() ? "" : Tag("ul", items, "class=\"findings\"");
  return Section(file.id + "-check", "Check", Tag("p", counts) + list);
}

}  // namespace core
