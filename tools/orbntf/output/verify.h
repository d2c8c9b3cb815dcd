// Whether a saved file holds what its document has.
#pragma once

#include <string>

#include "Common/NitfFile.h"

namespace tool {

/// Why the file that a document was saved as does not hold the document: it does not open, `FL` is not
/// its size, or a segment is not there with its length and its data. Empty when it does.
std::string FindFault(NitfHandle document, const std::string& path);

}  // namespace tool
