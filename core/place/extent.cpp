#include "core/place/extent.h"

#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/PolygonArea.hpp>
#include <algorithm>
#include <cstdio>

namespace core {
namespace {

constexpr double kPi = 3.14159265358979323846;

double AreaOf(const std::array<GroundPoint, 4>& corners) {
  GeographicLib::PolygonArea polygon(GeographicLib::Geodesic::WGS84());
  for (const GroundPoint& corner : corners) polygon.AddPoint(corner.latitude, corner.longitude);
  double around = 0, area = 0;
  polygon.Compute(false, true, around, area);
  return std::abs(area);
}

// A number with three digits that count, as far as it has a fraction.
std::string Rounded(double number) {
  char text[32];
  const double size = std::abs(number);
  std::snprintf(text, sizeof text, "%.*f", size < 1 ? 3 : size < 10 ? 2 : size < 100 ? 1 : 0, number);
  return text;
}

}  // namespace

double Distance(const GroundPoint& a, const GroundPoint& b) {
  double metres = 0;
  GeographicLib::Geodesic::WGS84().Inverse(a.latitude, a.longitude, b.latitude, b.longitude, metres);
  return metres;
}

std::optional<Extent> ExtentOf(const PlaceModel& model, uint64_t rows, uint64_t columns) {
  constexpr double kStep = 1e-4;  // degrees northwards, some ten metres
  if (rows == 0 || columns == 0) return std::nullopt;
  const double height = model.Height().value_or(0), bottom = static_cast<double>(rows) - 1,
               right = static_cast<double>(columns) - 1;
  bool isWhole = true;
  const auto at = [&](double row, double column) {
    GroundPoint ground{};
    isWhole = model.ToGround({row, column}, height, ground).empty() && isWhole;
    return ground;
  };
  const GroundPoint inner[] = {at(0, 0), at(0, right), at(bottom, right), at(bottom, 0)};
  const std::array<GroundPoint, 4> outer = {at(-0.5, -0.5), at(-0.5, right + 0.5),
                                            at(bottom + 0.5, right + 0.5), at(bottom + 0.5, -0.5)};
  const double row = bottom / 2, column = right / 2;
  const GroundPoint middle = at(row, column), above = at(row - 0.5, column),
                    below = at(row + 0.5, column), before = at(row, column - 0.5),
                    behind = at(row, column + 0.5);
  ImagePoint here{}, north{};
  isWhole = isWhole && std::abs(middle.latitude) < 90 - kStep && model.ToImage(middle, here).empty() &&
            model.ToImage({middle.latitude + kStep, middle.longitude, middle.height}, north).empty();
  if (!isWhole) return std::nullopt;
  Extent extent{};
  for (size_t i = 0; i < extent.corners.size(); ++i)
    extent.corners[i] = {inner[i].latitude, inner[i].longitude};
  extent.middle = {middle.latitude, middle.longitude};
  extent.rowSpacing = Distance(above, below);
  extent.columnSpacing = Distance(before, behind);
  extent.area = AreaOf(outer);
  extent.north = std::atan2(north.column - here.column, here.row - north.row) * 180 / kPi;
  return extent;
}

std::optional<Extent> ExtentOf(const PlaceModel& model, const SurveyedPart& image) {
  const auto count = [&](const char* field) {
    return static_cast<uint64_t>(std::max<int64_t>(0, image.Number(field)));
  };
  return ExtentOf(model, count("NROWS"), count("NCOLS"));
}

std::string PlaceText(GeographicPoint point) {
  char text[64];
  std::snprintf(text, sizeof text, "%.2f° %c, %.2f° %c", std::abs(point.latitude),
                point.latitude < 0 ? 'S' : 'N', std::abs(point.longitude),
                point.longitude < 0 ? 'W' : 'E');
  return text;
}

std::string SizeText(const Extent& extent) {
  const std::string across = Rounded(extent.columnSpacing), down = Rounded(extent.rowSpacing);
  const double kilometres = extent.area / 1e6;
  std::string text = (across == down ? across : across + " by " + down) + " m a pixel, " +
                     (kilometres < 0.01 ? Rounded(extent.area) + " m²" : Rounded(kilometres) + " km²");
  const double turn = std::round(extent.north);
  if (turn == 0) return text + ", north up";
  char north[48];
  std::snprintf(north, sizeof north, ", north %.0f° %s from up", std::abs(turn),
                turn < 0 ? "counterclockwise" : "clockwise");
  return text + north;
}

}  // namespace core
