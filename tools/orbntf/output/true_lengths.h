// The lengths in a file header as a save writes them.
#pragma once

#include <string>

#include "Common/NitfFile.h"

namespace tool {

/// Sets the lengths in a document's file header to those of what a save writes; false when they were so
/// already or cannot be set.
bool SetTrueLengths(NitfHandle document);

}  // namespace tool
