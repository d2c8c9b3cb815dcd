// Opening a document, and telling where and why a file is at fault.
#pragma once

#include <string>

#include "tools/orbntf/document.h"

namespace tool {

/// Opens a document and reports a failure with the field at which it was met. Returns the exit code.
int OpenDocument(const std::string& command, Document& document, const std::string& path);
/// Reports a failure of a file with what its document tells of the cause. Returns the exit code.
int ReportDocument(const std::string& command, const std::string& path, const NitfFile& document,
                   int32_t status);
/// Reports the status of a file that an export was given by its path, with the field at which opening it
/// fails. Returns the exit code.
int ReportFile(const std::string& command, const std::string& path, int32_t status);

}  // namespace tool
