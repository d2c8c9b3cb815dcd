// A file held against every rule, and what the module does with it.
#pragma once

#include "tools/orbntf/check/rule.h"

namespace tool {

/// What the module does with a file.
struct Verdict {
  int32_t status = 0;
  uint32_t width = 0, height = 0;
  std::string words;  ///< "drawn, 640 x 400", or "refused, status -78: …"
};
/// Draws a file as a host would, and keeps nothing of it.
Verdict AskModule(const std::string& path);

/// The same by the published standard's word, where the module refuses.
Verdict AskStandard(const std::string& path);

/// What is wrong with a file, in the order of its bytes.
std::vector<Finding> FindFaults(const Survey& survey, const RecordDefinitions& definitions);

/// A line for people: severity, rule, place and what was found.
std::string Describe(const Finding& finding);

/// Prints what is wrong with a file that a command has made, as warnings of that command. Notes and
/// warnings about it are for `check`.
void WarnOfFaults(const std::string& command, const std::string& path, const std::string& name);

}  // namespace tool
