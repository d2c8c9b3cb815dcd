// What a page shows of the module.
#pragma once

#include "core/report/report.h"
#include "tools/orbntf/core_names.h"

namespace tool {

/// Draws a file as the module does and by the published standard, for its report, with what the module
/// says of it.
void LookAtFile(ReportedFile& file);

}  // namespace tool
