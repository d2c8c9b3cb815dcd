#include "core/format/geography.h"

#include <GeographicLib/MGRS.hpp>
#include <GeographicLib/TransverseMercator.hpp>
#include <GeographicLib/UTMUPS.hpp>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>

namespace core {
namespace {

constexpr size_t kCornerWidth = 15;
constexpr double kFalseEasting = 5e5, kFalseNorthing = 1e7;

double MeridianOf(int zone) { return zone * 6 - 183; }

// Digits only.
std::optional<int32_t> NumberOf(std::string_view digits) {
  int32_t value = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + (c - '0');
  }
  return value;
}

// "+dd.ddd" or "-ddd.ddd".
std::optional<double> DecimalOf(std::string_view text) {
  const size_t point = text.size() - 4;
  const auto whole = NumberOf(text.substr(1, point - 1)), part = NumberOf(text.substr(point + 1));
  if ((text[0] != '+' && text[0] != '-') || text[point] != '.' || !whole || !part) return std::nullopt;
  const double value = *whole + *part / 1000.0;
  return text[0] == '-' ? -value : value;
}

// "ddmmssN" or "dddmmssE".
std::optional<double> SexagesimalOf(std::string_view text, char positive, char negative) {
  const size_t end = text.size() - 1;
  const auto degrees = NumberOf(text.substr(0, end - 4)), minutes = NumberOf(text.substr(end - 4, 2)),
             seconds = NumberOf(text.substr(end - 2, 2));
  if (!degrees || !minutes || !seconds || *minutes > 59 || *seconds > 59) return std::nullopt;
  const double value = *degrees + *minutes / 60.0 + *seconds / 3600.0;
  if (text[end] == positive) return value;
  return text[end] == negative ? std::optional(-value) : std::nullopt;
}

std::optional<GeographicPoint> Checked(std::optional<double> latitude, std::optional<double> longitude) {
  const bool isOnEarth =
      latitude && longitude && std::abs(*latitude) <= 90 && std::abs(*longitude) <= 180;
  return isOnEarth ? std::optional(GeographicPoint{*latitude, *longitude}) : std::nullopt;
}

// A point in metres of a zone.
struct ZonePoint {
  int zone;
  bool north;
  UtmPoint point;
};

// "zzeeeeeennnnnnn".
std::optional<ZonePoint> ZonePointOf(std::string_view text, bool north) {
  const auto zone = NumberOf(text.substr(0, 2)), easting = NumberOf(text.substr(2, 6)),
             northing = NumberOf(text.substr(8, 7));
  if (!zone || !easting || !northing || *zone < 1 || *zone > 60) return std::nullopt;
  return ZonePoint{*zone, north, {static_cast<double>(*easting), static_cast<double>(*northing)}};
}

// "zzBJKeeeeennnnn": zone, latitude band, square of 100 km, metres in it.
std::optional<ZonePoint> MgrsPointOf(std::string_view text) {
  if (!NumberOf(text.substr(0, 2)) || !NumberOf(text.substr(5, 5)) || !NumberOf(text.substr(10)))
    return std::nullopt;
  try {
    ZonePoint at{};
    int digits = 0;
    GeographicLib::MGRS::Reverse(std::string(text), at.zone, at.north, at.point.easting,
                                 at.point.northing, digits, false);
    return at;
  } catch (const GeographicLib::GeographicErr&) {
    return std::nullopt;
  }
}

std::optional<ZonePoint> ZonePointOf(char icords, std::string_view text) {
  if (icords == 'U') return MgrsPointOf(text);
  return icords == 'N' || icords == 'S' ? ZonePointOf(text, icords == 'N') : std::nullopt;
}

std::optional<GeographicPoint> DegreesOf(const std::optional<ZonePoint>& at) {
  if (!at) return std::nullopt;
  const GeographicPoint point = FromUtm(at->zone, at->north, at->point.easting, at->point.northing);
  return Checked(point.latitude, point.longitude);
}

std::optional<GeographicPoint> PointOf(char icords, std::string_view text) {
  switch (icords) {
    case 'G':
    case 'C':
      return Checked(SexagesimalOf(text.substr(0, 7), 'N', 'S'), SexagesimalOf(text.substr(7), 'E', 'W'));
    case 'D':
      return Checked(DecimalOf(text.substr(0, 7)), DecimalOf(text.substr(7)));
    case 'N':
    case 'S':
    case 'U':
      return DegreesOf(ZonePointOf(icords, text));
    default:
      return std::nullopt;
  }
}

}  // namespace

std::optional<GeographicCorners> CornersOf(char icords, std::string_view igeolo) {
  GeographicCorners corners;
  if (igeolo.size() != corners.size() * kCornerWidth) return std::nullopt;
  for (size_t i = 0; i < corners.size(); ++i) {
    const auto point = PointOf(icords, igeolo.substr(i * kCornerWidth, kCornerWidth));
    if (!point) return std::nullopt;
    corners[i] = *point;
  }
  return corners;
}

namespace {

std::string Sexagesimal(double degrees, const char* form, char positive, char negative) {
  constexpr long long kMinute = 60, kDegree = 3600;
  const long long seconds = std::llround(std::abs(degrees) * kDegree);
  char text[24];
  std::snprintf(text, sizeof text, form, seconds / kDegree, seconds / kMinute % kMinute,
                seconds % kMinute, degrees < 0 ? negative : positive);
  return text;
}

// A point in metres of a zone, 0 for its own one; empty where it cannot be told in them.
std::string MetresText(char icords, const GeographicPoint& point, int& zone) {
  const bool north = icords == 'U' ? point.latitude >= 0 : icords == 'N';
  if (zone == 0) zone = GeographicLib::UTMUPS::StandardZone(point.latitude, point.longitude);
  if (zone < 1 || zone > 60) return "";
  const UtmPoint at = ToUtm(zone, north, point);
  const long long easting = std::llround(at.easting), northing = std::llround(at.northing);
  if (easting < 0 || easting > 999999 || northing < 0 || northing > 9999999) return "";
  char text[32];
  std::snprintf(text, sizeof text, "%02d%06lld%07lld", zone, easting, northing);
  if (icords != 'U') return text;
  try {
    std::string mgrs;
    GeographicLib::MGRS::Forward(zone, north, static_cast<double>(easting) + 0.5,
                                 static_cast<double>(northing) + 0.5, point.latitude, 5, mgrs);
    return mgrs;
  } catch (const GeographicLib::GeographicErr&) {
    return "";
  }
}

std::string CornerText(char icords, const GeographicPoint& point, int& zone) {
  char text[32];
  switch (icords) {
    case 'G':
      return Sexagesimal(point.latitude, "%02lld%02lld%02lld%c", 'N', 'S') +
             Sexagesimal(point.longitude, "%03lld%02lld%02lld%c", 'E', 'W');
    case 'D':
      std::snprintf(text, sizeof text, "%+07.3f%+08.3f", point.latitude, point.longitude);
      return text;
    case 'U':
      zone = 0;
      [[fallthrough]];
    case 'N':
    case 'S':
      return MetresText(icords, point, zone);
    default:
      return "";
  }
}

}  // namespace

std::optional<std::string> IgeoloText(char icords, const GeographicCorners& corners) {
  std::string text;
  int zone = 0;
  for (const GeographicPoint& corner : corners) {
    if (!Checked(corner.latitude, corner.longitude)) return std::nullopt;
    const std::string own = CornerText(icords, corner, zone);
    if (own.size() != kCornerWidth) return std::nullopt;
    text += own;
  }
  return CornersOf(icords, text) ? std::optional(text) : std::nullopt;
}

std::optional<UtmCorners> UtmCornersOf(char icords, std::string_view igeolo) {
  UtmCorners corners{};
  if (igeolo.size() != corners.points.size() * kCornerWidth) return std::nullopt;
  for (size_t i = 0; i < corners.points.size(); ++i) {
    const auto at = ZonePointOf(icords, igeolo.substr(i * kCornerWidth, kCornerWidth));
    if (!at || (i > 0 && (at->zone != corners.zone || at->north != corners.north))) return std::nullopt;
    corners.zone = at->zone;
    corners.north = at->north;
    corners.points[i] = at->point;
  }
  return corners;
}

GeographicPoint FromUtm(int zone, bool north, double easting, double northing) {
  GeographicPoint point{};
  GeographicLib::TransverseMercator::UTM().Reverse(MeridianOf(zone), easting - kFalseEasting,
                                                   northing - (north ? 0 : kFalseNorthing),
                                                   point.latitude, point.longitude);
  return point;
}

UtmPoint ToUtm(int zone, bool north, GeographicPoint point) {
  UtmPoint at{};
  GeographicLib::TransverseMercator::UTM().Forward(MeridianOf(zone), point.latitude, point.longitude,
                                                   at.easting, at.northing);
  return {at.easting + kFalseEasting, at.northing + (north ? 0 : kFalseNorthing)};
}

}  // namespace core
