#include "core/check/check_file.h"

#include <algorithm>

#include "core/format/levels.h"
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

bool IsProfile(const std::string& profile) {
  const int64_t level = profile.rfind("level:", 0) == 0 ? DigitsOf(profile.substr(6)) : -1;
  return profile.empty() || IsOneOf(profile, "npje|epje|tpje") || LevelOf(level) != nullptr;
}

}  // namespace core
