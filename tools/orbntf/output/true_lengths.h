// The lengths in a file header as a save writes them.
#pragma once

#include <string>

#include "Common/NitfFile.h"

namespace tool {

/// Gives a record the fields that Get leaves alone, so that Set keeps them. The extended data itself is
/// kept by null pointers.
void FillSetOnlyFields(const FileHeader& header, NITFHeader& record);

/// Sets the lengths in a document's file header to those of what a save writes; false when they were so
/// already or cannot be set.
bool SetTrueLengths(NitfHandle document);

}  // namespace tool
