// Where on earth an image lies.
#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace core {

struct GeographicPoint {
  double latitude, longitude;  ///< degrees, north and east positive
};
/// Upper left, upper right, lower right and lower left, as IGEOLO has them.
using GeographicCorners = std::array<GeographicPoint, 4>;

/// The corners that IGEOLO gives in the form of an ICORDS code (MIL-STD-2500C, table A-3): G and C
/// degrees, minutes and seconds, D decimal degrees, N and S UTM, U UTM in MGRS notation; none for
/// anything else.
std::optional<GeographicCorners> CornersOf(char icords, std::string_view igeolo);

/// A point of a UTM zone on the WGS 84 ellipsoid, metres.
GeographicPoint FromUtm(int zone, bool north, double easting, double northing);

}  // namespace core
