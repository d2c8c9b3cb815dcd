// What differs between the tagged records of two headers.
#pragma once

#include <vector>

#include "core/compare/differences.h"
#include "core/format/records.h"

namespace core {

/// Compares records of the same tag in their order, field by field where both are decoded.
void CompareRecords(const std::string& title, const SurveyedPart& a, const SurveyedPart& b,
                    const RecordDefinitions& definitions, std::vector<TextDifference>& differences);

}  // namespace core
