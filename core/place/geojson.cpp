#include "core/place/geojson.h"

#include <algorithm>
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

}  // namespace

void WritePolygon(JsonText& json, const GeographicCorners& corners) {
  constexpr double kMeridian = 180;
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
