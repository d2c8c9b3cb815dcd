// Where on earth an image lies.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace core {

/// Of latitude, and of longitude at the equator, about.
inline constexpr double kMetresPerDegree = 111320;

struct GeographicPoint {
  double latitude, longitude;  ///< degrees, north and east positive
};
/// Upper left, upper right, lower right and lower left, as IGEOLO has them.
using GeographicCorners = std::array<GeographicPoint, 4>;

/// The corners that IGEOLO gives in the form of an ICORDS code (MIL-STD-2500C, table A-3): G and C
/// degrees, minutes and seconds, D decimal degrees, N and S UTM, U UTM in MGRS notation; none for
/// anything else.
std::optional<GeographicCorners> CornersOf(char icords, std::string_view igeolo);

/// The text of IGEOLO that is nearest to corners, in one of the forms G, D, N, S and U; none where the
/// form cannot say them: N and S in the zone of the first corner.
std::optional<std::string> IgeoloText(char icords, const GeographicCorners& corners);

/// Metres in a zone of UTM on the WGS 84 ellipsoid.
struct UtmPoint {
  double easting, northing;
};
GeographicPoint FromUtm(int zone, bool north, double easting, double northing);
/// A point in the metres of a zone, which it may lie outside of.
UtmPoint ToUtm(int zone, bool north, GeographicPoint point);

/// Corners in one zone, in the order of IGEOLO.
struct UtmCorners {
  int zone;
  bool north;
  std::array<UtmPoint, 4> points;
};
/// Those of the forms N, S and U where one zone has them all; none for anything else.
std::optional<UtmCorners> UtmCornersOf(char icords, std::string_view igeolo);

}  // namespace core
