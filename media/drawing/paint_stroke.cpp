// Stroking lines and edges.
#include <algorithm>
#include <cmath>

#include "media/drawing/paint_steps.h"

namespace media {
namespace {

void SetDashes(cairo_t* cairo, int32_t type, double width) {
  constexpr double kDash[] = {6, 3}, kDot[] = {1, 2}, kDashDot[] = {6, 2, 1, 2},
                   kDashDotDot[] = {6, 2, 1, 2, 1, 2};
  double dashes[6];
  const auto set = [&](const auto& pattern) {
    std::transform(std::begin(pattern), std::end(pattern), dashes, [&](double d) { return d * width; });
    Cairo().set_dash(cairo, dashes, static_cast<int>(std::size(pattern)), 0);
  };
  switch (static_cast<LineType>(type)) {
    case LineType::Dash:
      return set(kDash);
    case LineType::Dot:
      return set(kDot);
    case LineType::DashDot:
      return set(kDashDot);
    case LineType::DashDotDot:
      return set(kDashDotDot);
    default:
      Cairo().set_dash(cairo, nullptr, 0, 0);
  }
}

// Length of what is to be stroked, in pixels.
double LengthOf(const Path& path, const DeviceMap& map) {
  double length = 0;
  for (size_t i = 1; i < path.points.size(); ++i) {
    const Point a = map.ToDevice(path.points[i - 1]), b = map.ToDevice(path.points[i]);
    length += std::hypot(b.x - a.x, b.y - a.y);
  }
  return length;
}

// Lines without length are as long as they are wide.
void FillDots(const Brush& brush, double width, const std::vector<Path>& paths) {
  for (const Path& path : paths) {
    if (path.points.empty() || LengthOf(path, brush.map) != 0) continue;
    const Point p = brush.map.ToDevice(path.points[0]);
    Cairo().rectangle(brush.cairo, p.x - width / 2, p.y - width / 2, width, width);
  }
  Cairo().fill(brush.cairo);
}

}  // namespace

double PixelWidth(const LineLook& look, const DeviceMap& map) {
  const double width = look.scaled ? look.width : map.Length(look.width);
  return std::isfinite(width) ? std::clamp(width, 1.0, 32767.0) : 1.0;
}

void StrokePath(const Brush& brush, const LineLook& look, const Attributes& attributes,
                const std::vector<Path>& paths, const PathExtent& path) {
  constexpr double kMostDashes = 50000, kSegmentCost = 400, kDashCost = 2500, kPixelCost = 0.5;
  cairo_t* cairo = brush.cairo;
  const double width = PixelWidth(look, brush.map);
  double length = 0;
  for (const Path& each : paths) length += LengthOf(each, brush.map);
  const bool dashed = look.type >= static_cast<int32_t>(LineType::Dash) &&
                      look.type <= static_cast<int32_t>(LineType::DashDotDot) &&
                      length / width < kMostDashes;
  // A stroke is an outline of two sides, with corners of its own.
  const double sides = 2.5 * path.edgeRows + std::min(width, brush.height) * path.segments;
  const double ink = std::min(path.extent.Area(brush, width), length * width);
  if (!brush.limit.Take(ChooseSmoothness(brush, sides, path.segments) + kSegmentCost * path.segments +
                        kPixelCost * ink + (dashed ? kDashCost * length / width : 0))) {
    return Cairo().new_path(cairo);
  }
  Cairo().set_line_width(cairo, width);
  if (dashed && !attributes.transparent) {
    SetDashes(cairo, 1, width);
    SetColour(cairo, attributes.auxiliary);
    Cairo().stroke_preserve(cairo);
  }
  SetDashes(cairo, dashed ? look.type : 1, width);
  SetColour(cairo, look.colour);
  Cairo().stroke(cairo);
  FillDots(brush, width, paths);
}

}  // namespace media
