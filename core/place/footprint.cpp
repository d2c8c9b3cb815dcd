#include "core/place/footprint.h"

#include <cmath>
#include <cstdlib>

namespace core {
namespace {

constexpr double kFullTurn = 360, kHalfTurn = 180;

std::optional<double> RealOf(std::string_view text) {
  const std::string copy(TrimmedText(text));
  char* end = nullptr;
  const double value = std::strtod(copy.c_str(), &end);
  return !copy.empty() && *end == 0 && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

// "ddmmss.ssN" or "Nddmmss.ss"; decimal degrees where a sign begins it.
std::optional<double> AngleOf(std::string_view text, char positive, char negative, size_t degreeDigits) {
  if (text.empty()) return std::nullopt;
  if (text[0] == '+' || text[0] == '-') return RealOf(text);
  const char front = text.front(), back = text.back();
  const bool letterFirst = front == positive || front == negative;
  const char letter = letterFirst ? front : back;
  if (letter != positive && letter != negative) return std::nullopt;
  const std::string_view digits = letterFirst ? text.substr(1) : text.substr(0, text.size() - 1);
  if (digits.size() < degreeDigits + 4) return std::nullopt;
  const int64_t degrees = DigitsOf(digits.substr(0, degreeDigits)),
                minutes = DigitsOf(digits.substr(degreeDigits, 2));
  const auto seconds = RealOf(digits.substr(degreeDigits + 2));
  if (degrees < 0 || minutes < 0 || minutes > 59 || !seconds || *seconds < 0 || *seconds >= 60)
    return std::nullopt;
  const double value = static_cast<double>(degrees) + static_cast<double>(minutes) / 60 + *seconds / 3600;
  return letter == positive ? value : -value;
}

std::optional<GeographicPoint> PointOf(const std::vector<DecodedField>& fields, const char* name) {
  constexpr size_t kLatitude = 10, kWhole = 21;
  const DecodedField* field = FindField(fields, name);
  if (field == nullptr || field->text.size() != kWhole) return std::nullopt;
  const std::string_view text = field->text;
  const auto latitude = AngleOf(text.substr(0, kLatitude), 'N', 'S', 2),
             longitude = AngleOf(text.substr(kLatitude), 'E', 'W', 3);
  if (!latitude || !longitude || std::abs(*latitude) > 90 || std::abs(*longitude) > kHalfTurn)
    return std::nullopt;
  return GeographicPoint{*latitude, *longitude};
}

std::optional<GeographicCorners> BlockCorners(const std::vector<DecodedField>& fields) {
  constexpr const char* kNames[] = {"FRFC_LOC", "FRLC_LOC", "LRLC_LOC", "LRFC_LOC"};
  GeographicCorners corners;
  for (size_t i = 0; i < corners.size(); ++i) {
    const auto point = PointOf(fields, kNames[i]);
    if (!point) return std::nullopt;
    corners[i] = *point;
  }
  return corners;
}

std::optional<GeographicCorners> ModelBox(const std::vector<DecodedField>& fields) {
  constexpr const char* kNames[] = {"LAT_OFF", "LONG_OFF", "LAT_SCALE", "LONG_SCALE"};
  double values[4] = {};
  for (size_t i = 0; i < std::size(kNames); ++i) {
    const DecodedField* field = FindField(fields, kNames[i]);
    const auto value = field != nullptr ? ValueOf(*field) : std::nullopt;
    if (!value) return std::nullopt;
    values[i] = *value;
  }
  const double north = values[0] + values[2], south = values[0] - values[2], west = values[1] - values[3],
               east = values[1] + values[3];
  return GeographicCorners{{{north, west}, {north, east}, {south, east}, {south, west}}};
}

// On which side of the line from a to b a point lies.
double SideOf(GeographicPoint a, GeographicPoint b, GeographicPoint p) {
  return (b.longitude - a.longitude) * (p.latitude - a.latitude) -
         (b.latitude - a.latitude) * (p.longitude - a.longitude);
}

bool Cross(GeographicPoint a, GeographicPoint b, GeographicPoint c, GeographicPoint d) {
  return SideOf(a, b, c) * SideOf(a, b, d) < 0 && SideOf(c, d, a) * SideOf(c, d, b) < 0;
}

}  // namespace

GeographicCorners Unwrapped(GeographicCorners corners) {
  for (GeographicPoint& corner : corners) {
    if (corner.longitude - corners[0].longitude > kHalfTurn) corner.longitude -= kFullTurn;
    if (corners[0].longitude - corner.longitude > kHalfTurn) corner.longitude += kFullTurn;
  }
  return corners;
}

std::vector<Footprint> FootprintsOf(const std::vector<TaggedRecord>& records) {
  std::vector<Footprint> footprints;
  for (const TaggedRecord& record : records) {
    const bool isBlock = record.tag == "BLOCKA", isModel = record.tag == "RPC00B";
    const auto corners = isBlock   ? BlockCorners(record.fields)
                         : isModel ? ModelBox(record.fields)
                                   : std::optional<GeographicCorners>();
    if (corners) footprints.push_back({record.tag, *corners});
  }
  return footprints;
}

bool AreCrossed(const GeographicCorners& given) {
  const GeographicCorners corners = Unwrapped(given);
  return Cross(corners[0], corners[1], corners[2], corners[3]) ||
         Cross(corners[1], corners[2], corners[3], corners[0]);
}

}  // namespace core
