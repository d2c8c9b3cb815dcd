// Why a file gave the status that it gave, in words.
#pragma once

#include <string>

#include "Common/NitfFile.h"

namespace tool {

/// Why the system does not give a file's bytes: "no such file", "is a folder", "permission denied". Empty
/// when it does.
std::string WhyUnreadable(const std::string& path);
/// What in a document that was read from `path` leads to a status: the version, level, pixel type or
/// compression found, the sizes claimed and there. Empty when nothing more can be said.
std::string Explain(const std::string& path, const NitfFile& document, int32_t status);

/// ", at IREP, byte 812" for the field at which parsing ended; empty for none.
std::string PlaceOf(const ParseFault& fault);

}  // namespace tool
