// Where images lie on earth: corners, a drawing of their outlines, and GeoJSON.
#include <algorithm>
#include <cmath>

#include "core/place/geojson.h"
#include "core/report/ground.h"
#include "core/report/html.h"

namespace core {
namespace {

constexpr double kPi = 3.14159265358979323846;

// The box around all, and how degrees become units of the drawing.
class Map {
 public:
  explicit Map(const std::vector<Ground>& grounds) {
    for (const Ground& ground : grounds) {
      for (const GeographicPoint& corner : ground.corners) {
        north_ = std::max(north_, corner.latitude);
        south_ = std::min(south_, corner.latitude);
        east_ = std::max(east_, corner.longitude);
        west_ = std::min(west_, corner.longitude);
      }
    }
    across_ = std::max(0.01, std::cos((north_ + south_) / 2 * kPi / 180));
    const double wide = (east_ - west_) * across_, high = north_ - south_;
    scale_ = kInside / std::max({wide, high, 1e-6});
    left_ = kMargin + (kInside - wide * scale_) / 2;
    top_ = kMargin + (kInside - high * scale_) / 2;
  }
  std::string Point(GeographicPoint point) const {
    return Fixed(left_ + (point.longitude - west_) * across_ * scale_, 1) + "," +
           Fixed(top_ + (north_ - point.latitude) * scale_, 1);
  }
  double UnitsPerMetre() const { return scale_ / kMetresPerDegree; }
  static constexpr double kInside = 300, kMargin = 40;

 private:
  double north_ = -1e9, south_ = 1e9, east_ = -1e9, west_ = 1e9;
  double across_ = 1, scale_ = 1, left_ = 0, top_ = 0;
};

// A round length that takes a fifth to a half of the drawing, and its bar.
std::string ScaleBar(const Map& map) {
  const double most = Map::kInside / 2 / map.UnitsPerMetre();
  double length = std::pow(10, std::floor(std::log10(most)));
  if (length * 5 <= most)
    length *= 5;
  else if (length * 2 <= most)
    length *= 2;
  const double units = length * map.UnitsPerMetre();
  const std::string words =
      length >= 1000 ? Fixed(length / 1000, 0) + " km" : Fixed(length, length < 1 ? 2 : 0) + " m";
  return "<path class=\"rule\" d=\"M40 362v6h" + Fixed(units, 1) + "v-6\"/>" +
         Tag("text", words, "x=\"40\" y=\"388\" font-size=\"14\"");
}

std::string Drawing(const std::vector<Ground>& grounds) {
  const Map map(grounds);
  std::string shapes;
  for (const Ground& ground : grounds) {
    std::string points;
    for (const GeographicPoint& corner : ground.corners) points += map.Point(corner) + " ";
    shapes += Tag("polygon", Tag("title", Escaped(ground.name + ", " + ground.source)),
                  std::string("class=\"") + (ground.source == "IGEOLO" ? "ground" : "model") +
                      "\" points=\"" + points + "\"");
    const std::string first = map.Point(ground.corners[0]);
    shapes += "<circle class=\"ink\" r=\"4\" cx=\"" + first.substr(0, first.find(',')) + "\" cy=\"" +
              first.substr(first.find(',') + 1) + "\"/>";
  }
  shapes += "<path class=\"rule\" d=\"M360 60V24m-7 9l7-9 7 9\"/>" +
            Tag("text", "N", "x=\"360\" y=\"80\" font-size=\"14\" text-anchor=\"middle\"");
  return Tag("svg", shapes + ScaleBar(map),
             "class=\"map\" role=\"img\" viewBox=\"0 0 400 400\" aria-label=\"Outlines of the images, "
             "north up; a dot "
             "marks each upper left corner\"");
}

std::string GeoJson(const std::vector<Ground>& grounds) {
  JsonText json(true);
  json.BeginObject();
  json.Key("type");
  json.String("FeatureCollection");
  json.Key("features");
  json.BeginArray();
  for (const Ground& ground : grounds) {
    json.BeginObject();
    json.Key("type");
    json.String("Feature");
    json.Key("properties");
    json.BeginObject();
    json.Key("name");
    json.String(ground.name);
    json.Key("source");
    json.String(ground.source);
    json.EndObject();
    json.Key("geometry");
    WritePolygon(json, ground.corners);
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  return json.Text();
}

}  // namespace

std::string LocationSection(const ReportedFile& file) {
  const std::vector<Ground> grounds = GroundsOf(file);
  if (grounds.empty()) return "";
  std::string rows;
  for (const Ground& ground : grounds) {
    std::vector<std::string> cells = {Escaped(ground.name) + ", " + Escaped(ground.source)};
    for (const GeographicPoint& corner : ground.corners)
      cells.push_back(Tag("code", Fixed(corner.latitude, 6) + ", " + Fixed(Turned(corner.longitude), 6)));
    rows += TableRow(cells);
  }
  const std::string id = file.id + "-geojson";
  const std::string area =
      Tag("label", "GeoJSON", "for=\"" + id + "\"") +
      Tag("textarea", EscapedLines(GeoJson(grounds)), "id=\"" + id + "\" readonly spellcheck=\"false\"");
  const std::string button =
      Tag("p", "<button type=\"button\" class=\"copy\" data-from=\"" + id + "\">Copy</button>",
          "class=\"tools\" hidden");
  return Section(
      file.id + "-location", "Location",
      Tag("div", Drawing(grounds) + WorldMap(grounds), "class=\"maps\"") +
          Table("Corners",
                {"Latitude, longitude", "Upper left", "Upper right", "Lower right", "Lower left"}, rows,
                "fields") +
          area + button);
}

}  // namespace core
