// Saving a document so that what appears under the output's name is a file that opens with everything in
// it.
#pragma once

#include <string>

#include "tools/orbntf/document.h"

namespace tool {

/// Saves a document as an Output of that name, which must not be `input`. Returns the exit code.
int SaveAs(const std::string& command, Document& document, const std::string& input,
           const std::string& output);

}  // namespace tool
