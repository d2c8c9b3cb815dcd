// What a page shows of the module.
#pragma once

#include "core/report/report.h"
#include "tools/orbntf/core_names.h"

namespace tool {

/// Tells a file's report what the module says of it, and shows its picture where that is asked for.
void LookAtFile(ReportedFile& file, bool withPicture);

}  // namespace tool
