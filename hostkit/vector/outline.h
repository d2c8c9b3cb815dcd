// Outlines and extents of objects.
#pragma once

#include "hostkit/vector/text.h"

namespace hostkit {

/// A chain of points of an object's outline.
struct Path {
  std::vector<Point> points;
  bool closed = false;
};
/// An object's outline, curves flattened; texts, markers and cell arrays have none.
std::vector<Path> OutlineOf(const Object& object);
/// Whether every number of an object is finite.
bool IsFinite(const Object& object);
/// Least and greatest point of everything drawn; false for a drawing without objects.
bool FindExtent(const Drawing& drawing, TextBox textBox, Point& least, Point& greatest);

}  // namespace hostkit
