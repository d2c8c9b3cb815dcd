#include "core/place/projected.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include "core/place/projection.h"

namespace core {
namespace {

// The projections of DIGEST, Part 3, clause 6, with what their parameters are to PROJ, in their order;
// angles are in degrees.
struct ProjectionRow {
  std::string_view code;
  const char* words;
  std::vector<const char*> parameters;
};
const std::vector<ProjectionRow>& Projections() {
  static const std::vector<ProjectionRow> rows = {
      {"AC", "+proj=aea", {"+lon_0=", "+lat_1=", "+lat_2=", "+lat_0="}},
      {"AK", "+proj=laea", {"+lon_0=", "+lat_0="}},
      {"AL", "+proj=aeqd", {"+lon_0=", "+lat_0="}},
      {"GN", "+proj=gnom", {"+lon_0=", "+lat_0="}},
      {"LE", "+proj=lcc", {"+lon_0=", "+lat_1=", "+lat_2=", "+lat_0="}},
      {"MC", "+proj=merc", {"+lon_0=", "+lat_ts="}},
      {"OD", "+proj=ortho", {"+lon_0=", "+lat_0="}},
      {"PG", "+proj=stere", {"+lon_0=", "+lat_ts="}},
      {"TC", "+proj=tmerc", {"+lon_0=", "+k=", "+lat_0="}}};
  return rows;
}

// Datum codes as they begin, the EPSG codes of their geographic systems, and their ellipsoids to PROJ.
struct DatumRow {
  std::string_view code;
  int epsg;
  const char* ellipsoid;
};
constexpr DatumRow kDatums[] = {{"WGE", 4326, "WGS84"},  {"WGC", 4322, "WGS72"},  {"NAR", 4269, "GRS80"},
                                {"NAS", 4267, "clrk66"}, {"EUR", 4230, "intl"},   {"OGB", 4277, "airy"},
                                {"TOY", 4301, "bessel"}, {"SAN", 4618, "aust_SA"}};

std::string_view TextOf(const TaggedRecord& record, const char* name) {
  const DecodedField* field = FindField(record.fields, name);
  return field == nullptr ? "" : TrimmedText(field->text);
}

const DatumRow* DatumOf(const TaggedRecord& record) {
  const std::string_view code = TextOf(record, "DCD");
  const auto* const known =
      std::find_if(std::begin(kDatums), std::end(kDatums),
                   [&](const DatumRow& row) { return code.substr(0, row.code.size()) == row.code; });
  return known == std::end(kDatums) ? nullptr : known;
}

std::optional<double> NumberOf(const TaggedRecord& record, const char* name) {
  const DecodedField* field = FindField(record.fields, name);
  const auto number = field == nullptr ? std::nullopt : ValueOf(*field);
  return number && std::isfinite(*number) ? number : std::nullopt;
}

// A parameter for PROJ, whose numbers have a point in every locale.
std::string Parameter(const char* name, double number) {
  char digits[32];
  const auto end = std::to_chars(std::begin(digits), std::end(digits), number);
  return std::string(" ") + name + std::string(digits, end.ptr);
}

// The words of PROJ for a record of projection; empty for one that is not known or not whole.
std::string WordsOf(const TaggedRecord& record) {
  const auto& rows = Projections();
  const auto row = std::find_if(rows.begin(), rows.end(), [&](const ProjectionRow& known) {
    return known.code == TextOf(record, "PCO");
  });
  const DecodedField* given = FindField(record.fields, "PRJ");
  const auto east = NumberOf(record, "XOR"), north = NumberOf(record, "YOR");
  if (row == rows.end() || given == nullptr || given->turns.size() < row->parameters.size() || !east ||
      !north)
    return "";
  std::string words = row->words;
  for (size_t i = 0; i < row->parameters.size(); ++i) {
    const auto number = ValueOf(given->turns[i].front());
    if (!number || !(std::abs(*number) <= 360)) return "";
    words += Parameter(row->parameters[i], *number);
    // The pole of a polar projection is that of its latitude of true scale.
    if (row->code == "PG" && i == 1) words += *number < 0 ? " +lat_0=-90" : " +lat_0=90";
  }
  return words + Parameter("+x_0=", *east) + Parameter("+y_0=", *north);
}

constexpr const char kNoShift[] = "no way is known there between the record's datum and WGS 84";
constexpr const char kDegrees[] = "+proj=unitconvert +xy_in=rad +xy_out=deg";

class Geolob : public PlaceModel {
 public:
  Geolob(GeographicPoint origin, double across, double down, std::unique_ptr<Projection> datum)
      : origin_(origin), across_(across), down_(down), datum_(std::move(datum)) {}
  std::string Name() const override { return "GEOLOB"; }
  double Error() const override {
    return kMetresPerDegree * std::max(across_, down_) / 2 +
           (datum_ == nullptr ? 0 : datum_->ErrorAt({origin_.longitude, origin_.latitude}));
  }
  std::string ToGround(ImagePoint point, double height, GroundPoint& ground) const override {
    const double longitude = origin_.longitude + point.column * across_;
    ground = {origin_.latitude - point.row * down_, Turned(longitude), height};
    const bool isOnEarth = std::abs(ground.latitude) <= 90 && std::abs(longitude) <= 540;
    if (!isOnEarth) return "the grid puts it beyond a pole or around the earth";
    GeographicPoint place{};
    if (datum_ == nullptr) return "";
    if (!datum_->ToGround({ground.longitude, ground.latitude}, place)) return kNoShift;
    ground = {place.latitude, Turned(place.longitude), height};
    return "";
  }
  std::string ToImage(GroundPoint ground, ImagePoint& point) const override {
    EastNorth at{ground.longitude, ground.latitude};
    if (datum_ != nullptr && !datum_->ToPlane({ground.latitude, ground.longitude}, at)) return kNoShift;
    // East of the origin, but for places that are less than half around the earth west of it.
    point = {(origin_.latitude - at.north) / down_,
             std::remainder(at.east - origin_.longitude, 360) / across_};
    return "";
  }

 private:
  GeographicPoint origin_;
  double across_, down_;               // degrees from pixel to pixel
  std::unique_ptr<Projection> datum_;  // where it is not WGS 84
};

// Rows that go south and columns that go east in a plane of metres.
class MapGrid : public PlaceModel {
 public:
  MapGrid(std::unique_ptr<Projection> projection, EastNorth origin, EastNorth interval)
      : projection_(std::move(projection)), origin_(origin), interval_(interval) {}
  std::string Name() const override { return "MAPLOB"; }
  double Error() const override {
    return std::max(interval_.east, interval_.north) / 2 + projection_->ErrorAt(origin_);
  }
  const Projection* Plane() const override { return projection_.get(); }

  std::string ToGround(ImagePoint point, double height, GroundPoint& ground) const override {
    GeographicPoint place{};
    if (!projection_->ToGround(
            {origin_.east + point.column * interval_.east, origin_.north - point.row * interval_.north},
            place))
      return "the projection has no place there";
    ground = {place.latitude, Turned(place.longitude), height};
    return "";
  }
  std::string ToImage(GroundPoint ground, ImagePoint& point) const override {
    EastNorth plane{};
    if (!projection_->ToPlane({ground.latitude, ground.longitude}, plane))
      return "it is not in the projection's plane";
    point = {(origin_.north - plane.north) / interval_.north,
             (plane.east - origin_.east) / interval_.east};
    return "";
  }

 private:
  std::unique_ptr<Projection> projection_;
  EastNorth origin_, interval_;  // metres from pixel to pixel
};

}  // namespace

std::unique_ptr<PlaceModel> MakeMaplob(const TaggedRecord& grid, const TaggedRecord& projection,
                                       const TaggedRecord& datum) {
  const auto across = NumberOf(grid, "LOD"), down = NumberOf(grid, "LAD"), east = NumberOf(grid, "LSO"),
             north = NumberOf(grid, "PSO");
  const DatumRow* known = DatumOf(datum);
  const std::string words = WordsOf(projection);
  if (!across || !down || !east || !north || !(*across > 0) || !(*down > 0) || words.empty() ||
      known == nullptr || TextOf(grid, "UNILOA") != "M")
    return nullptr;
  auto plane = Projection::Of(words + " +ellps=" + known->ellipsoid, known->epsg);
  if (plane == nullptr) return nullptr;
  return std::make_unique<MapGrid>(std::move(plane), EastNorth{*east, *north}, EastNorth{*across, *down});
}

std::unique_ptr<PlaceModel> MakeGeolob(const TaggedRecord& grid, const TaggedRecord* datum) {
  const auto across = NumberOf(grid, "ARV"), down = NumberOf(grid, "BRV"), east = NumberOf(grid, "LSO"),
             north = NumberOf(grid, "PSO");
  if (!across || !down || !east || !north || *across < 1 || *down < 1 || std::abs(*east) > 180 ||
      std::abs(*north) > 90)
    return nullptr;
  const DatumRow* known = datum == nullptr ? kDatums : DatumOf(*datum);
  if (known == nullptr) return nullptr;
  auto shift = known == kDatums ? nullptr : Projection::Of(kDegrees, known->epsg);
  if (known != kDatums && shift == nullptr) return nullptr;
  return std::make_unique<Geolob>(GeographicPoint{*north, *east}, 360 / *across, 360 / *down,
                                  std::move(shift));
}

}  // namespace core
