// What a TIFF file holds beside its pixels.
#pragma once

#include <optional>
#include <string>

#include "core/pictures/georeference.h"

namespace core {

struct TiffOptions {
  std::optional<Georeference> reference;  ///< where it lies on earth
  std::string description;                ///< of its bands, a line each
  bool isCloud = false;                   ///< tiles and smaller pictures: a cloud-optimised GeoTIFF
};

}  // namespace core
