// From points of images to the ground and back.
#include <array>
#include <cmath>
#include <random>

#include "core/place/apart.h"
#include "core/place/extent.h"
#include "core/place/geojson.h"
#include "tests/support/placed.h"
#include "tests/support/support.h"

namespace test {
namespace {

using core::GroundPoint;
using core::ImagePoint;
using Terms = std::array<double, 20>;

std::string Scientific(double number) {
  char text[32];
  std::snprintf(text, sizeof text, "%+.6E", number);
  // "+1.234560E+00" as "+1.234560E+0".
  std::string digits = text;
  return digits.erase(digits.size() - 2, 1);
}

/// An RPC record.
struct Rational {
  std::string tag = "RPC00B";
  std::string front = "10003.000004.0000000000000+00.0000+000.0000+000000000100001+01.0000+001.0000+0001";
  Terms polynomials[4] = {{1}, {1}, {1}, {1}};  // of rows, then of columns, numerators first

  std::string Bytes() const {
    std::string bytes = front;
    for (const Terms& terms : polynomials) {
      for (const double term : terms) bytes += Scientific(term);
    }
    return tag + Digits(static_cast<int64_t>(bytes.size()), 5) + bytes;
  }
};

/// An ICHIPB record: points 11, 12, 21 and 22 of the chip, then of the full image, rows and columns.
std::string Chip(const std::array<ImagePoint, 4>& chip, const std::array<ImagePoint, 4>& full) {
  std::string bytes = "000001.000000000";
  for (const auto& points : {chip, full}) {
    for (const ImagePoint& point : points) {
      char text[32];
      std::snprintf(text, sizeof text, "%012.3f%012.3f", point.row, point.column);
      bytes += text;
    }
  }
  bytes += "0002000000020000";
  return "ICHIPB" + Digits(static_cast<int64_t>(bytes.size()), 5) + bytes;
}

// ---------------------------------------------------------------- polynomials

// Each term by hand at a longitude of 0.5, a latitude of 0.6 and a height of 0.7.
constexpr Terms kOrderB = {1,    0.5,   0.6,  0.7,   0.3,  0.35,  0.42,  0.25,  0.36,  0.49,
                           0.21, 0.125, 0.18, 0.245, 0.15, 0.216, 0.294, 0.175, 0.252, 0.343};
constexpr Terms kOrderA = {1,    0.5,   0.6,  0.7,   0.3,  0.35,  0.42,  0.21,  0.25,  0.36,
                           0.49, 0.125, 0.15, 0.175, 0.18, 0.216, 0.252, 0.245, 0.294, 0.343};

TEST(Place, EveryTermOfEveryPolynomialStandsAtItsPlace) {
  for (const auto& [tag, order] : {std::pair{"RPC00B", kOrderB}, {"RPC00A", kOrderA}}) {
    for (size_t polynomial = 0; polynomial < 4; ++polynomial) {
      for (size_t term = 0; term < order.size(); ++term) {
        Rational record;
        record.tag = tag;
        record.polynomials[polynomial] = {};
        record.polynomials[polynomial][term] = 1;
        const core::Placed placed = ModelOf(record.Bytes());
        ASSERT_NE(placed.model, nullptr);
        EXPECT_EQ(placed.model->Name(), tag);
        ImagePoint point{};
        ASSERT_EQ(placed.model->ToImage({0.6, 0.5, 0.7}, point), "");
        const bool isNumerator = polynomial % 2 == 0;
        const double wanted = isNumerator ? order[term] : 1 / order[term];
        EXPECT_NEAR(polynomial < 2 ? point.row : point.column, wanted, 1e-12)
            << tag << ", polynomial " << polynomial << ", term " << term + 1;
        EXPECT_NEAR(polynomial < 2 ? point.column : point.row, 1, 1e-12);
      }
    }
  }
}

TEST(Place, OffsetsAndScalesOfAnAffineModel) {
  Rational record;
  record.front = "10003.000004.0000100002000+10.0000-120.0000+010000050000400+02.0000+004.0000+0050";
  record.polynomials[0] = {0, 0, -1};      // rows grow southwards
  record.polynomials[2] = {0, 1, 0, 0.5};  // columns eastwards, and with the height
  const core::Placed placed = ModelOf(record.Bytes());
  ASSERT_NE(placed.model, nullptr);
  EXPECT_EQ(placed.model->Error(), 5);
  EXPECT_EQ(placed.model->Height(), 100);
  ImagePoint point{};
  ASSERT_EQ(placed.model->ToImage({11, -119, 150}, point), "");
  EXPECT_NEAR(point.row, 1000 - 250, 1e-9);
  EXPECT_NEAR(point.column, 2000 + 100 + 200, 1e-9);
  GroundPoint ground{};
  ASSERT_EQ(placed.model->ToGround({750, 2300}, 150, ground), "");
  EXPECT_NEAR(ground.latitude, 11, 1e-12);
  EXPECT_NEAR(ground.longitude, -119, 1e-12);
  EXPECT_EQ(ground.height, 150);
  EXPECT_NE(placed.model->ToGround({750, 2300}, 300, ground), "") << "a height far outside";
  EXPECT_NE(placed.model->ToGround({9000, 2300}, 150, ground), "");
  EXPECT_NE(placed.model->ToImage({20, -119, 150}, point), "");
}

TEST(Place, AModelAcrossTheDateLine) {
  Rational record;
  record.front = "10003.000004.0000000000000+00.0000+179.9000+000000010000100+01.0000+001.0000+0001";
  record.polynomials[0] = {0, 0, 1};
  record.polynomials[2] = {0, 1};
  const core::Placed placed = ModelOf(record.Bytes());
  GroundPoint ground{};
  ASSERT_EQ(placed.model->ToGround({0, 20}, 0, ground), "");
  EXPECT_NEAR(ground.longitude, -179.9, 1e-9);
  ImagePoint point{};
  ASSERT_EQ(placed.model->ToImage(ground, point), "");
  EXPECT_NEAR(point.column, 20, 1e-9);
}

// ---------------------------------------------------------------- chips

// A scale of ten thousand pixels to a degree.
constexpr const char kWide[] =
    "10003.000004.0000000000000+00.0000+000.0000+000001000010000+01.0000+001.0000+0001";
constexpr std::array<ImagePoint, 4> kCorners = {{{0.5, 0.5}, {0.5, 7.5}, {7.5, 0.5}, {7.5, 7.5}}};

TEST(Place, ChipsOfALargerImage) {
  Rational record;
  record.front = kWide;
  record.polynomials[0] = {0, 0, 1};
  record.polynomials[2] = {0, 1};
  // Every second pixel from row 1000, column 2000 on.
  const std::string chip =
      Chip(kCorners, {{{1000.5, 2000.5}, {1000.5, 2014.5}, {1014.5, 2000.5}, {1014.5, 2014.5}}});
  core::Placed placed = ModelOf(record.Bytes() + chip);
  ASSERT_NE(placed.model, nullptr);
  EXPECT_EQ(placed.model->Name(), "RPC00B through ICHIPB");
  GroundPoint ground{};
  ASSERT_EQ(placed.model->ToGround({3, 5}, 0, ground), "");
  EXPECT_NEAR(ground.latitude, 0.1006, 1e-12);
  EXPECT_NEAR(ground.longitude, 0.2010, 1e-12);
  ImagePoint point{};
  ASSERT_EQ(placed.model->ToImage(ground, point), "");
  EXPECT_NEAR(point.row, 3, 1e-7);
  EXPECT_NEAR(point.column, 5, 1e-7);
  // Turned by a quarter: rows of the chip are columns of the full image.
  placed =
      ModelOf(record.Bytes() +
              Chip(kCorners, {{{1000.5, 2000.5}, {1007.5, 2000.5}, {1000.5, 2007.5}, {1007.5, 2007.5}}}));
  ASSERT_EQ(placed.model->ToGround({3, 5}, 0, ground), "");
  EXPECT_NEAR(ground.latitude, 0.1005, 1e-12);
  EXPECT_NEAR(ground.longitude, 0.2003, 1e-12);
}

// All four corners of a trapezoid are met, so the map is no affine one.
TEST(Place, AChipOfAnObliqueView) {
  Rational record;
  record.front = kWide;
  record.polynomials[0] = {0, 0, 1};
  record.polynomials[2] = {0, 1};
  const std::array<ImagePoint, 4> trapezoid = {
      {{1000.5, 2000.5}, {1000.5, 2010.5}, {1010.5, 1998.5}, {1012.5, 2014.5}}};
  const core::Placed placed = ModelOf(record.Bytes() + Chip(kCorners, trapezoid));
  GroundPoint ground{};
  for (size_t i = 0; i < kCorners.size(); ++i) {
    ASSERT_EQ(placed.model->ToGround({kCorners[i].row - 0.5, kCorners[i].column - 0.5}, 0, ground), "");
    EXPECT_NEAR(ground.latitude, (trapezoid[i].row - 0.5) / 10000, 1e-11);
    EXPECT_NEAR(ground.longitude, (trapezoid[i].column - 0.5) / 10000, 1e-11);
  }
  // A map that is none: nothing is told by the full image's model.
  EXPECT_EQ(ModelOf(record.Bytes() + Chip(kCorners, {})).model, nullptr);
}

// Random well-formed cubics, and chips of their images.
TEST(Place, PointsComeBackFromTheGround) {
  std::mt19937_64 random(20261126);
  std::uniform_real_distribution<double> small(-0.01, 0.01), unit(-1, 1);
  for (int model = 0; model < 40; ++model) {
    Rational record;
    record.tag = model % 2 == 0 ? "RPC00B" : "RPC00A";
    record.front = "10003.000004.0001234506789+48.2500+016.3700+020001200006500+00.1000+000.1500+0500";
    for (Terms& terms : record.polynomials) {
      for (double& term : terms) term = small(random);
    }
    record.polynomials[0][2] = -1 + small(random);
    record.polynomials[1][0] = record.polynomials[3][0] = 1;
    record.polynomials[2][1] = 1 + small(random);
    const std::string chip =
        Chip({{{0.5, 0.5}, {0.5, 4999.5}, {3999.5, 0.5}, {3999.5, 4999.5}}},
             {{{9000.5, 5000.5}, {9010.5, 7500.5}, {11000.5, 5020.5}, {11011.5, 7519.5}}});
    const core::Placed placed = ModelOf(record.Bytes() + (model % 4 < 2 ? chip : ""));
    ASSERT_NE(placed.model, nullptr);
    for (int i = 0; i < 2500; ++i) {
      const ImagePoint point = model % 4 < 2
                                   ? ImagePoint{2000 + 2000 * unit(random), 2500 + 2500 * unit(random)}
                                   : ImagePoint{12345 + 11000 * unit(random), 6789 + 6000 * unit(random)};
      GroundPoint ground{};
      ASSERT_EQ(placed.model->ToGround(point, 200 + 400 * unit(random), ground), "");
      ImagePoint back{};
      ASSERT_EQ(placed.model->ToImage(ground, back), "");
      ASSERT_NEAR(back.row, point.row, 1e-6);
      ASSERT_NEAR(back.column, point.column, 1e-6);
    }
  }
}

// ---------------------------------------------------------------- corners

struct CornersForm {
  const char *code, *text;
  double latitude, longitude, error;  ///< of the first pixel
};
constexpr CornersForm kForms[] = {
    {"G", "520000N0160000E520000N0170000E510000N0170000E510000N0160000E", 52, 16, 30.9},
    {"D", "+52.000-016.000+52.000-015.000+51.000-015.000+51.000-016.000", 52, -16, 111.3},
    {"N", "335000005000000335100005000000335100004990000335000004990000", 45.153477, 15, 1},
    {"S", "335000005000000335100005000000335100004990000335000004990000", -45.153477, 15, 1},
    {"U", "33TWL000000000033TWL100000000033TWK100009000033TWK0000090000", 45.153477, 15, 1},
    {"D", "+52.000+179.500+52.000-179.500+51.000-179.500+51.000+179.500", 52, 179.5, 111.3},
    {"G", "890000S1790000W890000S1790000E895959S1790000E895959S1790000W", -89, -179, 30.9}};

TEST(Place, CornersOfEveryForm) {
  for (const CornersForm& form : kForms) {
    const core::Placed placed = ModelOf("", form.code, form.text);
    ASSERT_NE(placed.model, nullptr) << form.text;
    EXPECT_EQ(placed.model->Name(), "IGEOLO");
    EXPECT_EQ(placed.model->Height(), std::nullopt);
    EXPECT_NEAR(placed.model->Error(), form.error, 0.1);
    GroundPoint ground{};
    ASSERT_EQ(placed.model->ToGround({0, 0}, 0, ground), "");
    EXPECT_NEAR(ground.latitude, form.latitude, 1e-5) << form.text;
    EXPECT_NEAR(ground.longitude, form.longitude, 1e-5) << form.text;
    for (const ImagePoint point : {ImagePoint{0, 0}, {0, 7}, {7, 0}, {7, 7}, {2.5, 6.25}, {-0.5, 7.5}}) {
      ASSERT_EQ(placed.model->ToGround(point, 0, ground), "") << form.text;
      ImagePoint back{};
      ASSERT_EQ(placed.model->ToImage(ground, back), "") << form.text;
      EXPECT_NEAR(back.row, point.row, 1e-6) << form.text;
      EXPECT_NEAR(back.column, point.column, 1e-6) << form.text;
    }
  }
  // In the middle between corners in degrees.
  GroundPoint ground{};
  ASSERT_EQ(ModelOf("", "D", kForms[5].text).model->ToGround({3.5, 3.5}, 0, ground), "");
  EXPECT_NEAR(ground.latitude, 51.5, 1e-12);
  EXPECT_NEAR(std::abs(ground.longitude), 180, 1e-12);
}

const std::string kDegrees = "+52.000-016.000+52.000-015.000+51.000-015.000+51.000-016.000";
const std::string kBlock =
    "BLOCKA00123010000000008000000" + std::string(16, ' ') +
    "+50.000000+010.000000+50.000000+011.000000+49.000000+011.000000+49.000000+010.000000" +
    std::string(5, ' ');
const std::string kGrid = "GEOLOB00048000003600000007200+000000005.0000+000000040.0000";
std::string NameWith(const std::string& records) {
  const core::Placed placed = ModelOf(records, "D", kDegrees);
  return placed.model == nullptr ? "none" : placed.model->Name();
}

TEST(Place, TheBestModelThatIsWhole) {
  EXPECT_EQ(NameWith(kBlock), "BLOCKA");
  EXPECT_EQ(NameWith(kBlock + kGrid), "GEOLOB");
  EXPECT_EQ(NameWith(kBlock + kGrid + Rational{.tag = "RPC00A"}.Bytes()), "RPC00A");
  EXPECT_EQ(NameWith(kBlock + kGrid + Rational{.tag = "RPC00A"}.Bytes() + Rational{}.Bytes()), "RPC00B");
  GroundPoint ground{};
  ASSERT_EQ(ModelOf(kGrid).model->ToGround({2, 3}, 0, ground), "");
  EXPECT_NEAR(ground.latitude, 39.9, 1e-12);
  EXPECT_NEAR(ground.longitude, 5.3, 1e-12);
}

// What is not whole is passed over: no scale, no number, not valid, another number of rows.
TEST(Place, ModelsThatAreNotWhole) {
  Rational broken;
  broken.front.replace(broken.front.size() - 22, 8, "+00.0000");
  EXPECT_EQ(NameWith(kBlock + broken.Bytes()), "BLOCKA");
  broken = Rational{};
  broken.front.replace(27, 8, "NaN     ");
  EXPECT_EQ(NameWith(kBlock + broken.Bytes()), "BLOCKA");
  broken = Rational{};
  broken.front[0] = '0';
  EXPECT_EQ(NameWith(broken.Bytes()), "IGEOLO");
  std::string other = kBlock;
  other.replace(18, 5, "00009");
  EXPECT_EQ(NameWith(other), "IGEOLO");
  EXPECT_EQ(ModelOf("").model, nullptr);
  EXPECT_EQ(ModelOf("", "D", "+52.000-016.000+52.000-016.000+52.000-016.000+52.000-016.000").model,
            nullptr);
}

// Whether records put the corners elsewhere, as far as the errors of both let it be told: IGEOLO of 0.001
// degrees, a pixel of 0.002, and a BLOCKA of 0.000001.
TEST(Place, CornersAreHeldAgainstRecords) {
  const auto apart = [](const std::string& records, const std::string& igeolo) {
    std::vector<core::Apart> found;
    (void)ModelOf(records, "D", igeolo, "", [&](const core::SurveyedPart& image, const auto& all) {
      found = core::ApartFromCorners(image, all);
    });
    return found;
  };
  const std::string block = "BLOCKA00123010000000008000000" + std::string(16, ' ') +
                            "+00.007000+010.014000-00.007000+010.014000-00.007000+010.000000" +
                            "+00.007000+010.000000" + std::string(5, ' ');
  const std::string exact = "+00.007+010.000+00.007+010.014-00.007+010.014-00.007+010.000",
                    near = "+00.009+010.001+00.007+010.014-00.007+010.014-00.007+010.000",
                    far = "+00.012+010.000+00.007+010.014-00.007+010.014-00.007+010.000";
  EXPECT_TRUE(apart(block, exact).empty());
  EXPECT_TRUE(apart(block, near).empty());
  const auto found = apart(block, far);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].source, "BLOCKA");
  EXPECT_NEAR(found[0].metres, 553, 2);
  EXPECT_TRUE(apart(block.substr(0, 18) + "00009" + block.substr(23), far).empty()) << "not all of it";
  // Columns move eastwards with the height, which IGEOLO is silent of.
  Rational record;
  record.front = "10000.000000.0000000300003+00.0000+010.0070+000000000400004+00.0080+000.0080+0500";
  record.polynomials[0] = {0, 0, -1};
  record.polynomials[2] = {0, 1, 0, 0.5};
  const std::string moved = "+00.007+009.997+00.007+010.011-00.007+010.011-00.007+009.997",
                    south = "-00.007+010.000-00.007+010.014-00.021+010.014-00.021+010.000";
  EXPECT_TRUE(apart(record.Bytes(), exact).empty());
  EXPECT_TRUE(apart(record.Bytes(), moved).empty()) << "the place at another height";
  ASSERT_EQ(apart(record.Bytes(), south).size(), 1u);
  EXPECT_EQ(apart(record.Bytes(), south)[0].source, "RPC00B");
}

// A square of a degree at the equator, and one that is turned by a quarter.
TEST(Place, ExtentsOfImages) {
  const core::Placed upright =
      ModelOf("", "D", "+00.500+010.000+00.500+011.000-00.500+011.000-00.500+010.000");
  const auto extent = core::ExtentOf(*upright.model, 8, 8);
  ASSERT_TRUE(extent.has_value());
  EXPECT_NEAR(extent->middle.latitude, 0, 1e-12);
  EXPECT_NEAR(extent->middle.longitude, 10.5, 1e-12);
  EXPECT_NEAR(extent->columnSpacing, 111319.49 / 7, 0.01);
  EXPECT_NEAR(extent->rowSpacing, 110574.28 / 7, 0.1);
  EXPECT_NEAR(extent->area / 1e6, 111.31949 * 110.57428 * 64 / 49, 1);
  EXPECT_NEAR(extent->north, 0, 1e-9);
  EXPECT_EQ(core::PlaceText(extent->middle), "0.00° N, 10.50° E");
  EXPECT_EQ(core::SizeText(*extent), "15903 by 15796 m a pixel, 16077 km², north up");
  const core::Placed turned =
      ModelOf("", "D", "+00.500+011.000-00.500+011.000-00.500+010.000+00.500+010.000");
  EXPECT_NEAR(core::ExtentOf(*turned.model, 8, 8)->north, -90, 1e-9) << "north is to the left";
  EXPECT_EQ(core::ExtentOf(*turned.model, 0, 8), std::nullopt);
}

TEST(Place, TextsOfCornersAreTheOnesThatTheyCameFrom) {
  for (const CornersForm& form : kForms) {
    const auto corners = core::CornersOf(form.code[0], form.text);
    ASSERT_TRUE(corners.has_value());
    EXPECT_EQ(core::IgeoloText(form.code[0], *corners), form.text);
  }
  EXPECT_TRUE(
      core::CornersOf('U', "33TWL999999999933TWL999999999933TWL999999999933TWL9999999999").has_value());
  EXPECT_EQ(core::IgeoloText('X', {}), std::nullopt);
  EXPECT_EQ(core::IgeoloText('D', {{{91, 0}, {0, 0}, {0, 0}, {0, 0}}}), std::nullopt);
  EXPECT_EQ(core::IgeoloText('N', {{{52, 16}, {52, -120}, {51, 16}, {51, 17}}}), std::nullopt)
      << "too far from the zone";
}

std::string GeoJsonOf(const core::GeographicCorners& corners) {
  core::JsonText json(false);
  WritePolygon(json, corners);
  return json.Text();
}

TEST(Place, PolygonsOnBothSidesOfTheDateLine) {
  EXPECT_EQ(
      GeoJsonOf({{{2, 10}, {2, 11}, {1, 11}, {1, 10}}}),
      R"({"type":"Polygon","coordinates":[[[10.0,2.0],[10.0,1.0],[11.0,1.0],[11.0,2.0],[10.0,2.0]]]})");
  EXPECT_EQ(GeoJsonOf({{{2, 179}, {2, -178}, {1, -178}, {1, 179}}}),
            R"({"type":"MultiPolygon","coordinates":[)"
            R"([[[179.0,2.0],[179.0,1.0],[180.0,1.0],[180.0,2.0],[179.0,2.0]]],)"
            R"([[[-180.0,2.0],[-180.0,1.0],[-178.0,1.0],[-178.0,2.0],[-180.0,2.0]]]]})");
}

// Nothing that a record says makes a number that is none.
TEST(Place, DenominatorsOfZero) {
  Rational record;
  record.polynomials[1] = {};
  record.polynomials[0] = {0, 0, 1};
  const core::Placed placed = ModelOf(record.Bytes());
  ImagePoint point{};
  GroundPoint ground{};
  EXPECT_NE(placed.model->ToImage({0, 0, 0}, point), "");
  EXPECT_NE(placed.model->ToGround({0, 0}, 0, ground), "");
  record.polynomials[1] = {1};
  record.polynomials[0] = {0.5};
  EXPECT_NE(ModelOf(record.Bytes()).model->ToGround({0, 0}, 0, ground), "")
      << "rows do not tell places apart";
}

}  // namespace
}  // namespace test
