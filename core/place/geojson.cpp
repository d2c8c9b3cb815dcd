#include "core/place/geojson.h"

namespace core {

void WritePolygon(JsonText& json, const GeographicCorners& corners) {
  json.BeginObject();
  json.Key("type");
  json.String("Polygon");
  json.Key("coordinates");
  json.BeginArray();
  json.BeginArray();
  for (const size_t i : {0, 3, 2, 1, 0}) {
    json.BeginArray();
    json.Real(corners[i].longitude);
    json.Real(corners[i].latitude);
    json.EndArray();
  }
  json.EndArray();
  json.EndArray();
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

}  // namespace core
