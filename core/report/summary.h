// What a file is, first of all.
#pragma once

#include "core/report/report.h"

namespace core {

std::string SummarySection(const ReportedFile& file);

}  // namespace core
