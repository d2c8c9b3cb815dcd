// The corners of pictures that tell where they lie.
#pragma once

#include <string>

#include "core/pictures/raster.h"

namespace core {

/// The text of IGEOLO and its form; empty for none.
struct CornerFields {
  std::string icords, igeolo;
};

/// Those of some rows of a picture, in a form of ICORDS or, for 0, that of its places: degrees, or metres
/// of a zone of UTM. What of the place cannot be kept is told in `notes`. PictureError where the form
/// does not tell the places between the corners within half a pixel and the width of its last digit.
CornerFields CornersFor(const RasterForm& raster, uint32_t top, uint32_t rows, char icords,
                        std::vector<std::string>& notes);

}  // namespace core
