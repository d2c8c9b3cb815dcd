// A file held against every rule.
#pragma once

#include "core/check/rule.h"

namespace core {

/// What is wrong with a file, in the order of its bytes.
std::vector<Finding> FindFaults(const Survey& survey, const RecordDefinitions& definitions);

/// A line for people: severity, rule, place and what was found.
std::string Describe(const Finding& finding);

}  // namespace core
