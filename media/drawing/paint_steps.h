// The steps of painting, and estimates of what they cost.
#pragma once

#include "media/drawing/outline.h"
#include "media/drawing/paint.h"

namespace media {

/// A rectangle of the device that grows with its points.
struct Extent {
  double left = 1e9, top = 1e9, right = -1e9, bottom = -1e9;

  void Add(Point p);
  /// Pixels of the surface within it and a margin around it.
  double Area(const Brush& brush, double margin = 0) const;
};
/// What a path's cost follows from.
struct PathExtent {
  Extent extent;
  double edgeRows = 0;  ///< rows of the surface that its edges cross, summed
  double segments = 0;

  void AddEdge(const Brush& brush, Point from, Point to);
};

/// Chooses how finely as many edges, which cross so many rows, are sampled; returns their cost in
/// nanoseconds.
double ChooseSmoothness(const Brush& brush, double edgeRows, double edges);

/// Fills the current path of an object, or strokes it with a line's look: at least a pixel wide; so many
/// dashes that none could be told from the next are a solid line; gaps of an opaque line have the
/// auxiliary colour. The path is gone then.
void FillPath(const Brush& brush, const Object& object, const PathExtent& path);
void StrokePath(const Brush& brush, const LineLook& look, const Attributes& attributes,
                const std::vector<Path>& paths, const PathExtent& path);
/// Width of a line in pixels.
double PixelWidth(const LineLook& look, const DeviceMap& map);
/// Half the size of a marker in pixels.
double HalfMarker(const MarkerLook& look, const DeviceMap& map);
/// Draws the cells of a cell array, and a text.
void PaintCells(const Brush& brush, const Object& object);
void PaintText(const Brush& brush, const Object& object);
void SetColour(cairo_t* cairo, Colour colour);

}  // namespace media
