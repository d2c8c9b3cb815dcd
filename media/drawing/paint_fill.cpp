// Filling what a path encloses.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "media/drawing/paint_steps.h"

namespace media {

/// Colours as a cairo picture, one pixel a cell.
class CellSurface {
 public:
  CellSurface(const std::vector<Colour>& cells, int32_t columns, int32_t rows)
      : surface_(Cairo().image_surface_create(CAIRO_FORMAT_RGB24, columns, rows)) {
    if (Cairo().surface_status(surface_) != CAIRO_STATUS_SUCCESS) return;
    uint8_t* bytes = Cairo().image_surface_get_data(surface_);
    const auto stride = static_cast<size_t>(Cairo().image_surface_get_stride(surface_));
    for (int32_t row = 0; row < rows; ++row) {
      for (int32_t column = 0; column < columns; ++column) {
        const Colour c =
            cells[static_cast<size_t>(row) * static_cast<size_t>(columns) + static_cast<size_t>(column)];
        const uint32_t pixel = static_cast<uint32_t>(c.red) << 16 | c.green << 8 | c.blue;
        std::memcpy(bytes + static_cast<size_t>(row) * stride + 4 * static_cast<size_t>(column), &pixel,
                    4);
      }
    }
    Cairo().surface_mark_dirty(surface_);
  }
  ~CellSurface() { Cairo().surface_destroy(surface_); }
  CellSurface(const CellSurface&) = delete;
  CellSurface& operator=(const CellSurface&) = delete;

  /// Paints or fills with the cells; a cell's sides are the device vectors `right` and `down`.
  void Use(cairo_t* cairo, Point corner, Point right, Point down, cairo_extend_t extend) {
    cairo_matrix_t matrix;
    Cairo().matrix_init(&matrix, right.x, right.y, down.x, down.y, corner.x, corner.y);
    if (Cairo().matrix_invert(&matrix) != CAIRO_STATUS_SUCCESS) {
      Cairo().new_path(cairo);
      return;
    }
    Cairo().set_source_surface(cairo, surface_, 0, 0);
    cairo_pattern_t* pattern = Cairo().get_source(cairo);
    Cairo().pattern_set_matrix(pattern, &matrix);
    Cairo().pattern_set_filter(pattern, CAIRO_FILTER_NEAREST);
    Cairo().pattern_set_extend(pattern, extend);
    Cairo().fill(cairo);
  }

 private:
  cairo_surface_t* surface_;
};

namespace {

constexpr double kEdgeCost = 60;
constexpr double kCellCost = 5, kPixelCost = 0.5, kSampledPixelCost = 12;  // nanoseconds
constexpr double kCellMemory = 8;  // bytes, where painting is kept

// One square of a hatch, repeated over the shape: its cost is that of a plain fill.
void FillHatch(const Brush& brush, const Attributes& attributes) {
  cairo_t* cairo = brush.cairo;
  constexpr int kGap = 8;
  const int32_t style = attributes.fill.hatch;
  const auto isLine = [style](int x, int y) {
    return ((style == 1 || style == 5) && y == 0) || ((style == 2 || style == 5) && x == 0) ||
           ((style == 3 || style == 6) && (x + y) % kGap == 0) || ((style == 4 || style == 6) && x == y);
  };
  const auto pixel = [](Colour c) {
    return 0xFF000000u | static_cast<uint32_t>(c.red) << 16 | c.green << 8 | c.blue;
  };
  uint32_t square[kGap * kGap];
  for (int i = 0; i < kGap * kGap; ++i) {
    const uint32_t gap = attributes.transparent ? 0 : pixel(attributes.auxiliary);
    square[i] = isLine(i % kGap, i / kGap) ? pixel(attributes.fill.colour) : gap;
  }
  cairo_surface_t* surface = Cairo().image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(square), CAIRO_FORMAT_ARGB32, kGap, kGap, 4 * kGap);
  // Squares lie alike on all surfaces that a drawing is painted on.
  Cairo().set_source_surface(cairo, surface, -std::fmod(brush.left, kGap), -std::fmod(brush.top, kGap));
  Cairo().pattern_set_extend(Cairo().get_source(cairo), CAIRO_EXTEND_REPEAT);
  Cairo().pattern_set_filter(Cairo().get_source(cairo), CAIRO_FILTER_NEAREST);
  Cairo().fill(cairo);
  Cairo().set_source_rgb(cairo, 0, 0, 0);  // lets go of the square
  Cairo().surface_finish(surface);
  Cairo().surface_destroy(surface);
}

void FillPattern(const Brush& brush, const FillLook& fill) {
  cairo_t* cairo = brush.cairo;
  const Drawing& drawing = brush.drawing;
  const DeviceMap& map = brush.map;
  const auto found = drawing.patterns.find(fill.pattern);
  if (found == drawing.patterns.end() || found->second.columns > 32767 || found->second.rows > 32767) {
    SetColour(cairo, fill.colour);
    Cairo().fill(cairo);
    return;
  }
  const Pattern& pattern = found->second;
  std::unique_ptr<CellSurface>& surface = brush.painting.patterns[fill.pattern];
  if (surface == nullptr) {
    const auto cells = static_cast<double>(pattern.cells.size());
    if (!brush.limit.Take(kCellCost * cells) || !brush.limit.Keep(kCellMemory * cells))
      return Cairo().new_path(cairo);
    surface = std::make_unique<CellSurface>(pattern.cells, pattern.columns, pattern.rows);
  }
  Point right{1, 0}, down{0, 1};
  const Point width = map.Direction(fill.patternWidth), height = map.Direction(fill.patternHeight);
  if (std::hypot(width.x, width.y) > 0 && std::hypot(height.x, height.y) > 0) {
    right = {width.x / pattern.columns, width.y / pattern.columns};
    down = {-height.x / pattern.rows, -height.y / pattern.rows};
  }
  surface->Use(cairo, map.ToDevice(drawing.extent.first), right, down, CAIRO_EXTEND_REPEAT);
}

}  // namespace

void FillPath(const Brush& brush, const Object& object, const PathExtent& path) {
  cairo_t* cairo = brush.cairo;
  const Attributes& attributes = *object.attributes;
  const bool plain = attributes.fill.interior == Interior::Solid;
  if (!brush.limit.Take(ChooseSmoothness(brush, path.edgeRows, path.segments) +
                        kEdgeCost * path.segments +
                        (plain ? kPixelCost : kSampledPixelCost) * path.extent.Area(brush))) {
    return Cairo().new_path(cairo);
  }
  switch (attributes.fill.interior) {
    case Interior::Hatch:
      return FillHatch(brush, attributes);
    case Interior::Pattern:
      return FillPattern(brush, attributes.fill);
    default:
      SetColour(cairo, attributes.fill.colour);
      return Cairo().fill(cairo);
  }
}

// Rows run from the first point towards the third, one after the other towards the second.
void PaintCells(const Brush& brush, const Object& object) {
  cairo_t* cairo = brush.cairo;
  const DeviceMap& map = brush.map;
  if (object.columns > 32767 || object.rows > 32767 || object.points.size() < 3) return;
  const Point p = map.ToDevice(object.points[0]), q = map.ToDevice(object.points[1]),
              r = map.ToDevice(object.points[2]);
  const Point right{(r.x - p.x) / object.columns, (r.y - p.y) / object.columns};
  const Point down{(q.x - r.x) / object.rows, (q.y - r.y) / object.rows};
  Extent extent;
  for (const Point& corner : {p, q, r, Point{p.x + q.x - r.x, p.y + q.y - r.y}}) extent.Add(corner);
  const auto cells = static_cast<double>(object.cells.size());
  if (!brush.limit.Take(kCellCost * cells + kSampledPixelCost * extent.Area(brush)) ||
      !brush.limit.Keep(kCellMemory * cells)) {
    return;
  }
  Cairo().move_to(cairo, p.x, p.y);
  Cairo().line_to(cairo, r.x, r.y);
  Cairo().line_to(cairo, q.x, q.y);
  Cairo().line_to(cairo, p.x + q.x - r.x, p.y + q.y - r.y);
  Cairo().close_path(cairo);
  CellSurface(object.cells, object.columns, object.rows).Use(cairo, p, right, down, CAIRO_EXTEND_PAD);
}

Painting::Painting(const Drawing& painted, PaintLimit allowed) : drawing(painted), limit(allowed) {}
Painting::~Painting() = default;

}  // namespace media
