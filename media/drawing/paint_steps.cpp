#include "media/drawing/paint_steps.h"

#include <algorithm>
#include <cmath>

#include "media/work.h"

namespace media {

double HalfMarker(const MarkerLook& look, const DeviceMap& map) {
  constexpr double kNominalMarker = 6;  // pixels
  const double size = look.scaled ? look.size * kNominalMarker : map.Length(look.size);
  return Bounded(std::max(1.0, size)) / 2;
}

PaintLimit::PaintLimit(double pixels, double bytes)
    : left_(kBaseCost + kCostPerPixel * pixels + kCostPerByte * bytes) {}

bool PaintLimit::Take(double nanoseconds) {
  left_ -= nanoseconds;
  const double most = 1e15;  // keeps the conversion defined
  if (!Spend(static_cast<uint64_t>(std::clamp(nanoseconds, 0.0, most)))) left_ = -1;
  return left_ >= 0;
}

bool PaintLimit::Keep(double bytes) {
  if (memory_ < 0) return true;
  if (bytes > memory_) left_ = -1;
  memory_ = std::max(0.0, memory_ - bytes);
  return left_ >= 0;
}

void Extent::Add(Point p) {
  left = std::min(left, p.x);
  right = std::max(right, p.x);
  top = std::min(top, p.y);
  bottom = std::max(bottom, p.y);
}

double Extent::Area(const Brush& brush, double margin) const {
  const double width = std::min(right + margin, brush.width) - std::max(left - margin, 0.0);
  const double height = std::min(bottom + margin, brush.height) - std::max(top - margin, 0.0);
  return std::max(width, 0.0) * std::max(height, 0.0);
}

void PathExtent::AddEdge(const Brush& brush, Point from, Point to) {
  extent.Add(to);
  ++segments;
  edgeRows += 1 + std::max(0.0, std::min(std::max(from.y, to.y), brush.height) -
                                    std::max(std::min(from.y, to.y), 0.0));
}

// Edges are sampled in several lines a row, the fewer the more edges there are. Those that lie side by
// side may cross, and each crossing is sorted out.
double ChooseSmoothness(const Brush& brush, double edgeRows, double edges) {
  constexpr double kFew = 200'000, kMany = 2'000'000;
  constexpr double kFineCost = 40, kFastCost = 12, kPlainCost = 8;  // nanoseconds an edge and row
  constexpr double kCrossingCost = 1.5;
  const bool few = edgeRows <= kFew, many = edgeRows > kMany;
  const double beside = edgeRows / std::max(1.0, brush.height);
  const double crossings =
      beside * beside * brush.height / (2 * std::max(1.0, edgeRows / std::max(1.0, edges)));
  Cairo().set_antialias(brush.cairo, few    ? CAIRO_ANTIALIAS_DEFAULT
                                     : many ? CAIRO_ANTIALIAS_NONE
                                            : CAIRO_ANTIALIAS_FAST);
  return edgeRows * (few ? kFineCost : many ? kPlainCost : kFastCost) + kCrossingCost * crossings;
}

void SetColour(cairo_t* cairo, Colour colour) {
  Cairo().set_source_rgb(cairo, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0);
}

}  // namespace media
