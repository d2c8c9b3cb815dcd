// Whether a saved file holds what its document has, and the lengths that it takes to make it so.
#pragma once

#include <string>

#include "Common/NitfFile.h"

namespace tool {

/// ", at IREP, byte 812" for the field at which parsing ended; empty for none.
std::string PlaceOf(const ParseFault& fault);

/// Gives a record the fields that Get leaves alone, so that Set keeps them. The extended data itself is
/// kept by null pointers.
void FillSetOnlyFields(const FileHeader& header, NITFHeader& record);

/// Why the file that a document was saved as does not hold the document: it does not open, `FL` is not
/// its size, or a segment is not there with its length and its data. Empty when it does.
std::string FindFault(NitfHandle document, const std::string& path);

/// Sets the lengths in a document's file header to those of what a save writes; false when they were so
/// already or cannot be set.
bool SetTrueLengths(NitfHandle document);

}  // namespace tool
