// From a drawing's coordinates to device pixels.
#include <algorithm>
#include <cmath>

#include "media/drawing/outline.h"
#include "media/drawing/paint.h"

namespace media {

double Bounded(double value) {
  // Cairo keeps coordinates in 24.8 fixed point; what lies far outside is pulled to here.
  constexpr double kFarthest = 1e6;
  return std::isfinite(value) ? std::clamp(value, -kFarthest, kFarthest) : kFarthest;
}

DeviceMap::DeviceMap(const Box& extent, double left, double top, double width, double height) {
  const double spanX = extent.second.x - extent.first.x, spanY = extent.second.y - extent.first.y;
  scaleX_ = width / spanX;
  scaleY_ = -height / spanY;
  originX_ = left - extent.first.x * scaleX_;
  originY_ = top + height - extent.first.y * scaleY_;
  usable_ = spanX != 0 && spanY != 0 && std::isfinite(scaleX_) && std::isfinite(scaleY_) &&
            std::isfinite(originX_) && std::isfinite(originY_) && width > 0 && height > 0;
}

// A drawing without a frame, or with one that is flat, begins at its objects' corner.
DeviceMap DeviceMap::OneUnitAPixel(const Drawing& drawing, double left, double top) {
  constexpr double kWholeRange = 32767;
  Box frame = drawing.extent;
  const double spanX = frame.second.x - frame.first.x, spanY = frame.second.y - frame.first.y;
  Point least, greatest;
  const bool isWhole = std::abs(spanX) == kWholeRange && std::abs(spanY) == kWholeRange;
  if ((isWhole || drawing.IsFlat()) && FindExtent(drawing, TextBox::Capitals, least, greatest)) {
    frame = {{spanX < 0 ? greatest.x : least.x, spanY < 0 ? greatest.y : least.y},
             {spanX < 0 ? least.x : greatest.x, spanY < 0 ? least.y : greatest.y}};
  }
  DeviceMap map;
  map.scaleX_ = spanX < 0 ? -1 : 1;
  map.scaleY_ = spanY < 0 ? 1 : -1;
  map.originX_ = left - map.scaleX_ * frame.first.x;
  map.originY_ = top - map.scaleY_ * frame.second.y;
  map.usable_ = std::isfinite(map.originX_) && std::isfinite(map.originY_);
  return map;
}

DeviceMap DeviceMap::ForDrawing(const Drawing& drawing, double left, double top, double width,
                                double height) {
  if (drawing.wholeUnits) return OneUnitAPixel(drawing, left, top);
  Box frame = drawing.extent;
  // A degenerate extent frames nothing: the objects are their own frame, a line has one unit across.
  if (drawing.IsFlat() && !FindExtent(drawing, TextBox::Full, frame.first, frame.second)) return {};
  if (frame.first.x == frame.second.x) frame.second.x += 1;
  if (frame.first.y == frame.second.y) frame.second.y += 1;
  return DeviceMap(frame, left, top, width, height);
}

DeviceMap DeviceMap::Shifted(double left, double top) const {
  DeviceMap map = *this;
  map.originX_ -= left;
  map.originY_ -= top;
  return map;
}

Point DeviceMap::ToDevice(Point p) const {
  return {Bounded(originX_ + p.x * scaleX_), Bounded(originY_ + p.y * scaleY_)};
}
Point DeviceMap::Direction(Point v) const { return {Bounded(v.x * scaleX_), Bounded(v.y * scaleY_)}; }
double DeviceMap::Length(double vdc) const {
  return std::abs(vdc) * std::sqrt(std::abs(scaleX_ * scaleY_));
}

}  // namespace media
