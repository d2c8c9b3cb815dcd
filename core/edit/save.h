// A draft as a file of a name.
#pragma once

#include "core/edit/prove.h"

namespace core {

/// Writes a draft beside a name, proves it, and gives it the name when it is on the disk, with the
/// permissions of the file that it replaces. With a fault, or without `force` with an error, nothing is
/// named. WriteError; ReadError; EditError.
Proof SaveAs(Draft& draft, const std::string& path, const RecordDefinitions& definitions, bool force);

}  // namespace core
