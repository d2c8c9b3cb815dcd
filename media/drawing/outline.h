// Outlines and extents of objects.
#pragma once

#include <functional>

#include "media/drawing/text.h"

namespace media {

/// A chain of points of an object's outline.
struct Path {
  std::vector<Point> points;
  bool closed = false;
};
/// An object's outline, curves flattened: the finer the more pixels its units are. Texts, markers and
/// cell arrays have none.
std::vector<Path> OutlineOf(const Object& object, double pixelsPerUnit = 1e6);
/// Whether every number of an object is finite.
bool IsFinite(const Object& object);
/// Gives the points that an object's extent follows from; none of one that is not drawn.
void AddExtent(const Drawing& drawing, const Object& object, TextBox textBox,
               const std::function<void(Point)>& add);
/// Least and greatest point of everything drawn; false for a drawing without objects.
bool FindExtent(const Drawing& drawing, TextBox textBox, Point& least, Point& greatest);
/// Shows another part of the plane; what was clipped to the old extent is clipped to the new one.
void SetExtent(Drawing& drawing, const Box& extent);

}  // namespace media
