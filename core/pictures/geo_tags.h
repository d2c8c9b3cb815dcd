// The tags of a TIFF file that tell where on earth it lies.
#pragma once

#include <tiffio.h>

#include "core/pictures/georeference.h"

namespace core {

/// Makes the tags known to files that are opened from then on.
void DeclareGeoTags();
/// What the tags of an open file tell; none where there are none.
std::optional<Georeference> GetGeoTags(TIFF* tiff);
/// Sets them; false when the file does not take them.
bool SetGeoTags(TIFF* tiff, const Georeference& reference);

}  // namespace core
