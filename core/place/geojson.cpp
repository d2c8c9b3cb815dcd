#include "core/place/geojson.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "core/format/values.h"
#include "core/place/footprint.h"

namespace core {

namespace {

using Ring = std::vector<GeographicPoint>;

// What of a ring lies on one side of a meridian, the points on it included.
Ring Clipped(const Ring& ring, double meridian, bool isEast) {
  Ring clipped;
  const auto isIn = [&](const GeographicPoint& point) {
    return isEast ? point.longitude >= meridian : point.longitude <= meridian;
  };
  for (size_t i = 0; i < ring.size(); ++i) {
    const GeographicPoint &from = ring[i], &to = ring[(i + 1) % ring.size()];
    if (isIn(from)) clipped.push_back(from);
    if (isIn(from) == isIn(to)) continue;
    const double share = (meridian - from.longitude) / (to.longitude - from.longitude);
    clipped.push_back({from.latitude + share * (to.latitude - from.latitude), meridian});
  }
  return clipped;
}

// Counterclockwise and closed, its longitudes shifted by whole turns.
void WriteRing(JsonText& json, const Ring& ring, double shift) {
  double area = 0;
  for (size_t i = 0; i < ring.size(); ++i) {
    const GeographicPoint &from = ring[i], &to = ring[(i + 1) % ring.size()];
    area += from.longitude * to.latitude - to.longitude * from.latitude;
  }
  const size_t count = ring.size();
  json.BeginArray();
  json.BeginArray();
  for (size_t i = 0; i <= count; ++i) {
    const GeographicPoint& point = ring[(area < 0 ? count - i : i) % count];
    json.BeginArray();
    json.Real(point.longitude + shift);
    json.Real(point.latitude);
    json.EndArray();
  }
  json.EndArray();
  json.EndArray();
}

// Around a pole: from one end of the map to the other by the corners, and back by the pole. Empty for
// corners that do not go around one.
Ring AroundPole(const GeographicCorners& corners) {
  constexpr double kMeridian = 180, kPole = 90;
  double turn = 0, latitudes = 0;
  for (size_t i = 0; i < corners.size(); ++i) {
    turn += std::remainder(corners[(i + 1) % corners.size()].longitude - corners[i].longitude, 360);
    latitudes += corners[i].latitude;
  }
  if (std::abs(turn) < kMeridian) return {};
  Ring ring(corners.begin(), corners.end());
  for (GeographicPoint& point : ring) point.longitude = std::remainder(point.longitude, 360);
  std::sort(ring.begin(), ring.end(),
            [](const auto& a, const auto& b) { return a.longitude < b.longitude; });
  const GeographicPoint first = ring.front(), last = ring.back();
  const double gap = first.longitude + 360 - last.longitude;
  const double share = gap > 0 ? (kMeridian - last.longitude) / gap : 0;
  const double edge = last.latitude + share * (first.latitude - last.latitude);
  const double pole = latitudes < 0 ? -kPole : kPole;
  ring.insert(ring.begin(), {edge, -kMeridian});
  ring.insert(ring.end(), {{edge, kMeridian}, {pole, kMeridian}, {pole, -kMeridian}});
  return ring;
}

}  // namespace

void WritePolygon(JsonText& json, const GeographicCorners& corners) {
  constexpr double kMeridian = 180;
  if (const Ring around = AroundPole(corners); !around.empty()) {
    json.BeginObject();
    json.Key("type");
    json.String("Polygon");
    json.Key("coordinates");
    WriteRing(json, around, 0);
    return json.EndObject();
  }
  const GeographicCorners unwrapped = Unwrapped(corners);
  const Ring ring(unwrapped.begin(), unwrapped.end());
  const auto [west, east] = std::minmax_element(
      ring.begin(), ring.end(), [](const auto& a, const auto& b) { return a.longitude < b.longitude; });
  const double meridian = west->longitude < -kMeridian ? -kMeridian : kMeridian;
  const bool isCut = west->longitude < meridian && east->longitude > meridian;
  json.BeginObject();
  json.Key("type");
  json.String(isCut ? "MultiPolygon" : "Polygon");
  json.Key("coordinates");
  if (!isCut) {
    WriteRing(json, ring, 0);
  } else {
    json.BeginArray();
    WriteRing(json, Clipped(ring, meridian, false), meridian < 0 ? 2 * kMeridian : 0);
    WriteRing(json, Clipped(ring, meridian, true), meridian < 0 ? 0 : -2 * kMeridian);
    json.EndArray();
  }
  json.EndObject();
}

void WriteGeography(JsonText& json, char icords, std::string_view igeolo) {
  const auto corners = CornersOf(icords, igeolo);
  if (!corners) return json.Null();
  json.BeginObject();
  json.Key("corners");
  json.BeginArray();
  for (const GeographicPoint& corner : *corners) {
    json.BeginObject();
    json.Key("latitude");
    json.Real(corner.latitude);
    json.Key("longitude");
    json.Real(corner.longitude);
    json.EndObject();
  }
  json.EndArray();
  json.Key("geojson");
  WritePolygon(json, *corners);
  json.EndObject();
}

void WriteValues(JsonText& json, const SurveyedPart& part) {
  json.BeginObject();
  part.ForEachField([&](const SurveyedField& field) {
    const FieldMeaning meaning = MeaningOfField(field.name);
    if (meaning == FieldMeaning::Text) return;
    json.Key(field.name);
    WriteValue(json, meaning, field.text);
  });
  if (const std::string_view form = part.Text("ICORDS"); part.Has("IGEOLO") && !form.empty()) {
    json.Key("IGEOLO");
    WriteGeography(json, form[0], part.Text("IGEOLO"));
  }
  json.EndObject();
}

}  // namespace core
