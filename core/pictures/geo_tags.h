// The tags of a TIFF file that tell where on earth it lies.
#pragma once

#include <tiffio.h>

#include "core/pictures/georeference.h"

namespace core {

/// The text of the value that stands for no data, with its length in front where it is set or got.
inline constexpr uint32_t kNoDataTag = 42113;
/// Makes these tags known to all files that are opened from then on.
void DeclareGeoTags();
/// What the tags of an open file tell; none where there are none.
std::optional<Georeference> GetGeoTags(TIFF* tiff);
/// Sets them; false when the file does not take them.
bool SetGeoTags(TIFF* tiff, const Georeference& reference);

}  // namespace core
