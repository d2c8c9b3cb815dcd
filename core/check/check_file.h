// A file held against every rule.
#pragma once

#include "core/check/rule.h"

namespace core {

/// What is wrong with a file, in the order of its bytes.
std::vector<Finding> FindFaults(const Survey& survey, const RecordDefinitions& definitions);
/// The same; false when `progress`, asked with how much is done, from 0 to 1, did not want more.
bool FindFaults(const Survey& survey, const RecordDefinitions& definitions,
                const std::function<bool(double)>& progress, std::vector<Finding>& findings,
                const std::string& profile = "");

/// Whether there is a profile of a name: none, npje, epje, tpje, or level:NN.
bool IsProfile(const std::string& profile);

/// A line for people: severity, rule, place and what was found.
std::string Describe(const Finding& finding);

}  // namespace core
