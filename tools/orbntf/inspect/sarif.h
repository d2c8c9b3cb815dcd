// Findings as review systems take them (SARIF 2.1.0).
#pragma once

#include "core/check/rule.h"
#include "core/format/json_text.h"

namespace tool {

/// What stands in front of the runs of files, and behind them.
std::string SarifBegin();
std::string SarifEnd();
/// The run of a file: the rules that it breaks, and where.
std::string SarifRun(const std::string& path, const std::vector<core::Finding>& findings);
/// That of a file that could not be worked on.
std::string SarifFailure(const std::string& path, const std::string& words);

}  // namespace tool
