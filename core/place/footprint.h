// Where tagged records say that an image lies on earth.
#pragma once

#include "core/format/geography.h"
#include "core/format/records.h"

namespace core {

struct Footprint {
  std::string source;  ///< "BLOCKA", "RPC00B"
  GeographicCorners corners;
};
/// The corners of each BLOCKA, and the box of each RPC00B: its offsets, give or take its scales.
std::vector<Footprint> FootprintsOf(const std::vector<TaggedRecord>& records);

/// Whether sides between corners cross one another.
bool AreCrossed(const GeographicCorners& corners);
/// Longitudes without a jump at 180 degrees, so that they can be compared; some may lie beyond it.
GeographicCorners Unwrapped(GeographicCorners corners);

}  // namespace core
