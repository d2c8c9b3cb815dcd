#include "core/check/check_file.h"

#include <algorithm>

#include "core/format/words.h"

namespace core {

std::vector<Finding> FindFaults(const Survey& survey, const RecordDefinitions& definitions) {
  Checking checking(survey, definitions);
  checking.Run();
  std::stable_sort(checking.findings.begin(), checking.findings.end(),
                   [](const Finding& a, const Finding& b) { return a.offset < b.offset; });
  return std::move(checking.findings);
}

std::string Describe(const Finding& finding) {
  return std::string(NameOf(finding.rule->severity)) + " " + finding.rule->id + ": " + finding.part +
         ", " + finding.field + ", byte " + std::to_string(finding.offset) + ": " +
         Printable(finding.words);
}

}  // namespace core
