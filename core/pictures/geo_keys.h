// The keys of a GeoTIFF file: degrees, zones of UTM, and projections by their parameters.
#pragma once

#include <tiffio.h>

#include "core/pictures/georeference.h"

namespace core {

/// Writes the keys of a system of places into an open file; false when it does not take them.
bool SetGeoKeys(TIFF* tiff, const Georeference& reference);

}  // namespace core
