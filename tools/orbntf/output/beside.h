// The files beside a picture that tell where it lies.
#pragma once

#include <optional>
#include <string>

#include "core/pictures/georeference.h"

namespace tool {

/// Why no world file can be written; empty where it can.
std::string WhyNoWorld(const std::optional<core::Georeference>& reference);
/// Writes the world file and the .prj file beside a picture made of an input, which they may not be. An
/// exit code; what is wrong is reported.
int WriteBeside(const char* command, const std::string& input, const std::string& picture,
                const core::Georeference& reference);

}  // namespace tool
