// Images on grids of map projections and in other datums.
#include <cmath>

#include "core/place/extent.h"
#include "core/place/geojson.h"
#include "core/place/georeference.h"
#include "core/place/projection.h"
#include "tests/support/placed.h"
#include "tests/support/support.h"

namespace test {
namespace {

using core::GroundPoint;
using core::ImagePoint;

std::string Padded(std::string text, size_t width) {
  text.resize(width, ' ');
  return text;
}
std::string Number(double number, int width, int digits) {
  char text[40];
  std::snprintf(text, sizeof text, "%+0*.*f", width, digits, number);
  return text;
}
std::string Tagged(const std::string& tag, const std::string& data) {
  return tag + Digits(static_cast<int64_t>(data.size()), 5) + data;
}

std::string Datum(const std::string& code) {
  return Tagged("GEOPSB", "MAPM  " + Padded("", 80) + Padded(code, 4) + Padded("", 80) + "WE " +
                              Padded("", 80 + 4 + 80 + 4) + Padded("000000000000000", 15) + "   " +
                              Padded("", 80) + "0000");
}
std::string Projected(const std::string& code, const std::vector<double>& parameters, double east = 0,
                      double north = 0) {
  std::string data = Padded("", 80) + code + std::to_string(parameters.size());
  for (const double parameter : parameters) data += Number(parameter, 15, 9);
  return Tagged("PRJPSB", data + Number(east, 15, 3) + Number(north, 15, 3));
}
/// A grid whose first pixel's middle is at a point, of 20 m eastwards and 30 m southwards.
std::string Grid(double east, double north, const std::string& unit = "M  ") {
  return Tagged("MAPLOB", unit + "00020" + "00030" + Number(east, 15, 4) + Number(north, 15, 4));
}

GroundPoint GroundOf(const std::string& records, ImagePoint point, const std::string& ofFile = "") {
  const core::Placed placed = ModelOf(records, "", "", ofFile);
  GroundPoint ground{1000, 1000, 0};
  if (placed.model == nullptr) return ground;
  EXPECT_EQ(placed.model->Name(), "MAPLOB");
  EXPECT_EQ(placed.model->ToGround(point, 0, ground), "");
  ImagePoint back{};
  EXPECT_EQ(placed.model->ToImage(ground, back), "");
  EXPECT_NEAR(back.row, point.row, 1e-6);
  EXPECT_NEAR(back.column, point.column, 1e-6);
  return ground;
}

// Where the projections put their own origins, and what closed forms say of other places.
TEST(Projected, PlacesOfEveryProjection) {
  constexpr double kRadius = 6378137, kSquare = 0.00669437999014, kDegree = 3.14159265358979323846 / 180;
  struct Case {
    const char* code;
    std::vector<double> parameters;
    double east, north;  // of the place
    double latitude, longitude;
  };
  const double sine = std::sin(45 * kDegree), odd = std::sqrt(kSquare);
  const double mercator = kRadius * (std::atanh(sine) - odd * std::atanh(odd * sine));
  const core::UtmPoint utm = core::ToUtm(32, true, {48.5, 10.25});
  const Case cases[] = {{"TC", {9, 0.9996, 0}, utm.easting - 500000, utm.northing, 48.5, 10.25},
                        {"TC", {9, 1, 48.5}, 0, 0, 48.5, 9},
                        {"LE", {-96, 33, 45, 39}, 0, 0, 39, -96},
                        {"LE", {10, 49, 44, 46}, 0, 0, 46, 10},
                        {"AC", {-96, 29.5, 45.5, 23}, 0, 0, 23, -96},
                        {"AK", {10, 52}, 0, 0, 52, 10},
                        {"AL", {10, 52}, 0, 0, 52, 10},
                        {"GN", {10, 52}, 0, 0, 52, 10},
                        {"OD", {10, 52}, 0, 0, 52, 10},
                        {"MC", {30, 0}, kRadius * 2 * kDegree, mercator, 45, 32},
                        {"PG", {0, 71}, 0, 0, 90, 0},
                        {"PG", {0, -71}, 0, 0, -90, 0}};
  for (const Case& known : cases) {
    // The place is that of the pixel at row 5, column 7; the origin is told by false eastings as well.
    const std::string records = Datum("WGE") + Projected(known.code, known.parameters, 500000, -1000000) +
                                Grid(known.east + 500000 - 7 * 20, known.north - 1000000 + 5 * 30);
    const GroundPoint ground = GroundOf(records, {5, 7});
    EXPECT_NEAR(ground.latitude, known.latitude, 1e-8) << known.code;
    if (std::abs(known.latitude) < 90) {
      EXPECT_NEAR(ground.longitude, known.longitude, 1e-8) << known.code;
    }
  }
}

// True to scale where the projection's parameter says so.
TEST(Projected, ScalesOfParallels) {
  constexpr double kDegree = 3.14159265358979323846 / 180;
  for (const auto& [code, parameters, latitude] :
       {std::tuple<const char*, std::vector<double>, double>{"MC", {30, 40}, 40},
        {"LE", {30, 33, 45, 39}, 45},
        {"LE", {30, 33, 45, 39}, 33},
        {"AC", {30, 33, 45, 39}, 33},
        {"PG", {30, 71}, 71},
        {"PG", {30, -71}, -71}}) {
    const std::string records = Datum("WGE") + Projected(code, parameters) + Grid(0, 0);
    const core::Placed placed = ModelOf(records);
    ASSERT_NE(placed.model, nullptr) << code;
    ImagePoint west{}, east{};
    ASSERT_EQ(placed.model->ToImage({latitude, 29.999, 0}, west), "");
    ASSERT_EQ(placed.model->ToImage({latitude, 30.001, 0}, east), "");
    const double sine = std::sin(latitude * kDegree);
    const double parallel = 6378137 * std::cos(latitude * kDegree) /
                            std::sqrt(1 - 0.00669437999014 * sine * sine) * 0.002 * kDegree;
    EXPECT_NEAR((east.column - west.column) * 20, parallel, 1e-4) << code << " at " << latitude;
  }
}

TEST(Projected, RecordsOfTheFileAndOtherDatums) {
  const std::string projection = Projected("TC", {9, 0.9996, 0}, 500000), grid = Grid(600000, 5400000);
  const GroundPoint world = GroundOf(grid + projection + Datum("WGE"), {0, 0});
  const GroundPoint same = GroundOf(grid, {0, 0}, projection + Datum("WGE"));
  EXPECT_EQ(world.latitude, same.latitude);
  EXPECT_EQ(world.longitude, same.longitude);
  // European Datum 1950 lies some 80 m east and 200 m north of it in its numbers.
  const GroundPoint european = GroundOf(grid + projection + Datum("EUR"), {0, 0});
  const double north = (world.latitude - european.latitude) * core::kMetresPerDegree;
  EXPECT_GT(north, 50);
  EXPECT_LT(north, 300);
  EXPECT_GT(world.longitude, european.longitude);
  EXPECT_GT(ModelOf(grid + projection + Datum("EUR")).model->Error(), 15);
  EXPECT_EQ(ModelOf(grid + projection + Datum("WGE")).model->Error(), 15);
  // Degrees, too.
  const std::string degrees = "GEOLOB00048000003600000007200+000000010.0000+000000049.0000";
  GroundPoint ground{};
  ASSERT_EQ(ModelOf(degrees, "", "", Datum("EUR")).model->ToGround({0, 0}, 0, ground), "");
  EXPECT_NE(ground.latitude, 49);
  EXPECT_NEAR(ground.latitude, 49, 0.005);
  ImagePoint back{};
  ASSERT_EQ(ModelOf(degrees, "", "", Datum("EUR")).model->ToImage(ground, back), "");
  EXPECT_NEAR(back.row, 0, 1e-6);
}

// What is not whole or not known is named, and the corners tell the place.
TEST(Projected, WhatIsNotKnownIsNamed) {
  const std::string projection = Projected("TC", {9, 1, 0}), grid = Grid(0, 0), datum = Datum("WGE");
  for (const std::string& records :
       {grid + datum, grid + projection, grid + projection + Datum("ZZZ"), grid + projection + Datum(""),
        grid + datum + Projected("ZZ", {9, 1, 0}), grid + datum + Projected("TC", {9, 1}),
        grid + datum + Projected("TC", {9, 1, 91}), grid + datum + Projected("TC", {9, 1, 9999}),
        Grid(0, 0, "FT ") + datum + projection,
        Tagged("MAPLOB", "M  0000000000" + std::string(30, '0')) + datum + projection}) {
    const core::Placed placed =
        ModelOf(records, "D", "+52.000-016.000+52.000-015.000+51.000-015.000+51.000-016.000");
    ASSERT_NE(placed.model, nullptr);
    EXPECT_EQ(placed.model->Name(), "IGEOLO") << records;
    EXPECT_EQ(placed.unused, std::vector<std::string>{"MAPLOB"}) << records;
  }
  EXPECT_EQ(core::Projection::Of("+proj=tmerc +ellps=WGS84", 999999), nullptr);
}

// The outline of an image around a pole goes by the pole.
TEST(Projected, OutlinesAroundAPole) {
  for (const double parallel : {71.0, -71.0}) {
    const std::string records = Datum("WGE") + Projected("PG", {0, parallel}) + Grid(-50, 75);
    const core::Placed placed = ModelOf(records);
    ASSERT_NE(placed.model, nullptr);
    const auto extent = core::ExtentOf(*placed.model, 8, 8);
    ASSERT_TRUE(extent.has_value());
    core::JsonText json(false);
    WritePolygon(json, extent->corners);
    const std::string pole = parallel > 0 ? "90" : "-90";
    EXPECT_NE(json.Text().find("[180.0," + pole + ".0]"), std::string::npos) << json.Text();
    EXPECT_NE(json.Text().find("[-180.0," + pole + ".0]"), std::string::npos) << json.Text();
    EXPECT_EQ(json.Text().find("MultiPolygon"), std::string::npos);
  }
}

}  // namespace
}  // namespace test
