#include "core/check/check_file.h"

#include <algorithm>

#include "core/format/words.h"

namespace core {

std::vector<Finding> FindFaults(const Survey& survey, const RecordDefinitions& definitions) {
  std::vector<Finding> findings;
  (void)FindFaults(survey, definitions, {}, findings);
  return findings;
}

bool FindFaults(const Survey& survey, const RecordDefinitions& definitions,
                const std::function<bool(double)>& progress, std::vector<Finding>& findings,
                const std::string& profile) {
  Checking checking(survey, definitions);
  checking.profile = profile;
  if (!checking.Run(progress)) return false;
  findings = std::move(checking.findings);
  std::stable_sort(findings.begin(), findings.end(),
                   [](const Finding& a, const Finding& b) { return a.offset < b.offset; });
  return true;
}

std::string Describe(const Finding& finding) {
  return std::string(NameOf(finding.rule->severity)) + " " + finding.rule->id + ": " + finding.part +
         ", " + finding.field + ", byte " + std::to_string(finding.offset) + ": " +
         Printable(finding.words);
}

}  // namespace core
