// Where a picture lies, in the two small files that stand beside it.
#pragma once

#include <optional>
#include <string>

#include "core/pictures/georeference.h"

namespace core {

/// The six lines of a world file: columns east and north, rows east and north, and the middle of the
/// first pixel. Empty where there is no affine map.
std::string WorldText(const Georeference& reference);
/// The system of places as the text of a .prj file. Empty where PROJ does not know it.
std::string SystemText(const Georeference& reference);
/// The name of a world file beside a picture's: of "a.png" "a.pgw", of "a.tiff" "a.tfw", of "a" "a.wld".
std::string WorldName(const std::string& picture);
/// The name of the other one: of "a.png" "a.prj".
std::string SystemName(const std::string& picture);

}  // namespace core
