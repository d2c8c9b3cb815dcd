// The files beside a picture that tell where it lies.
#pragma once

#include <optional>
#include <string>

#include "core/pictures/georeference.h"
#include "tools/orbntf/inputs.h"

namespace tool {

/// Why no world file can be written; empty where it can.
std::string WhyNoWorld(const std::optional<core::Georeference>& reference);
/// Why a picture cannot have the two files beside it: they would be the picture, one of the inputs, or it
/// is no file. Empty where it can.
std::string WhyNotBeside(const Inputs& inputs, const std::string& picture);
/// Writes the world file and the .prj file beside a picture. An exit code; what is wrong is reported.
int WriteBeside(const char* command, const std::string& picture, const core::Georeference& reference);

}  // namespace tool
