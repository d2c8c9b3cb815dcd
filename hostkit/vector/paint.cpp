#include "hostkit/vector/paint.h"

#include <algorithm>
#include <cmath>

#include "hostkit/kernel/internal.h"
#include "hostkit/vector/looks.h"
#include "hostkit/vector/outline.h"

namespace hostkit {
namespace {

// Cairo keeps coordinates in 24.8 fixed point; what lies far outside is pulled to here.
constexpr double kFarthest = 1e6;

double Bounded(double value) {
  return std::isfinite(value) ? std::clamp(value, -kFarthest, kFarthest) : kFarthest;
}

void AddPath(cairo_t* cairo, const Path& path, const DeviceMap& map) {
  bool first = true;
  for (const Point& point : path.points) {
    const Point p = map.ToDevice(point);
    first ? cairo_move_to(cairo, p.x, p.y) : cairo_line_to(cairo, p.x, p.y);
    first = false;
  }
  if (path.closed && !first) cairo_close_path(cairo);
}

void SetDashes(cairo_t* cairo, int32_t type, double width) {
  constexpr double kDash[] = {6, 3}, kDot[] = {1, 2}, kDashDot[] = {6, 2, 1, 2},
                   kDashDotDot[] = {6, 2, 1, 2, 1, 2};
  double dashes[6];
  const auto set = [&](const auto& pattern) {
    std::transform(std::begin(pattern), std::end(pattern), dashes, [&](double d) { return d * width; });
    cairo_set_dash(cairo, dashes, static_cast<int>(std::size(pattern)), 0);
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
      cairo_set_dash(cairo, nullptr, 0, 0);
  }
}

// A line is at least a pixel wide.
double PixelWidth(const LineLook& look, const DeviceMap& map) {
  const double width = look.scaled ? look.width : map.Length(look.width);
  return std::isfinite(width) ? std::clamp(width, 1.0, 32767.0) : 1.0;
}

// Length of what is to be stroked, in pixels.
double LengthOf(const std::vector<Path>& paths, const DeviceMap& map) {
  double length = 0;
  for (const Path& path : paths) {
    for (size_t i = 1; i < path.points.size(); ++i) {
      const Point a = map.ToDevice(path.points[i - 1]), b = map.ToDevice(path.points[i]);
      length += std::hypot(b.x - a.x, b.y - a.y);
    }
  }
  return length;
}

// Lines without length are as long as they are wide.
void FillDots(cairo_t* cairo, double width, const DeviceMap& map, const std::vector<Path>& paths) {
  for (const Path& path : paths) {
    if (path.points.empty() || LengthOf({path}, map) != 0) continue;
    const Point p = map.ToDevice(path.points[0]);
    cairo_rectangle(cairo, p.x - width / 2, p.y - width / 2, width, width);
  }
  cairo_fill(cairo);
}

// Strokes the current path, which is that of `paths`. So many dashes that none could be told from the
// next are drawn as a solid line. Gaps of an opaque line have the auxiliary colour.
void Stroke(cairo_t* cairo, const LineLook& look, const Attributes& attributes, const DeviceMap& map,
            const std::vector<Path>& paths) {
  constexpr double kMostDashes = 50000;
  const double width = PixelWidth(look, map);
  cairo_set_line_width(cairo, width);
  const bool dashed = look.type >= static_cast<int32_t>(LineType::Dash) &&
                      look.type <= static_cast<int32_t>(LineType::DashDotDot) &&
                      LengthOf(paths, map) / width < kMostDashes;
  if (dashed && !attributes.transparent) {
    SetDashes(cairo, 1, width);
    SetColour(cairo, attributes.auxiliary);
    cairo_stroke_preserve(cairo);
  }
  SetDashes(cairo, dashed ? look.type : 1, width);
  SetColour(cairo, look.colour);
  cairo_stroke(cairo);
  FillDots(cairo, width, map, paths);
}

// ---------------------------------------------------------------- fills

// One square of a hatch, repeated over the shape: its cost is that of a plain fill.
void FillHatch(cairo_t* cairo, const Attributes& attributes) {
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
  cairo_surface_t* surface = cairo_image_surface_create_for_data(
      reinterpret_cast<unsigned char*>(square), CAIRO_FORMAT_ARGB32, kGap, kGap, 4 * kGap);
  cairo_set_source_surface(cairo, surface, 0, 0);
  cairo_pattern_set_extend(cairo_get_source(cairo), CAIRO_EXTEND_REPEAT);
  cairo_pattern_set_filter(cairo_get_source(cairo), CAIRO_FILTER_NEAREST);
  cairo_fill(cairo);
  cairo_set_source_rgb(cairo, 0, 0, 0);  // lets go of the square
  cairo_surface_finish(surface);
  cairo_surface_destroy(surface);
}

// Colours as a cairo picture, one pixel a cell.
class CellSurface {
 public:
  CellSurface(const std::vector<Colour>& cells, int32_t columns, int32_t rows)
      : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, columns, rows)) {
    if (cairo_surface_status(surface_) != CAIRO_STATUS_SUCCESS) return;
    uint8_t* bytes = cairo_image_surface_get_data(surface_);
    const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(surface_));
    for (int32_t row = 0; row < rows; ++row) {
      for (int32_t column = 0; column < columns; ++column) {
        const Colour c =
            cells[static_cast<size_t>(row) * static_cast<size_t>(columns) + static_cast<size_t>(column)];
        const uint32_t pixel = static_cast<uint32_t>(c.red) << 16 | c.green << 8 | c.blue;
        std::memcpy(bytes + static_cast<size_t>(row) * stride + 4 * static_cast<size_t>(column), &pixel,
                    4);
      }
    }
    cairo_surface_mark_dirty(surface_);
  }
  ~CellSurface() { cairo_surface_destroy(surface_); }
  CellSurface(const CellSurface&) = delete;
  CellSurface& operator=(const CellSurface&) = delete;

  /// Paints or fills with the cells; a cell's sides are the device vectors `right` and `down`.
  void Use(cairo_t* cairo, Point corner, Point right, Point down, cairo_extend_t extend) {
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, right.x, right.y, down.x, down.y, corner.x, corner.y);
    if (cairo_matrix_invert(&matrix) != CAIRO_STATUS_SUCCESS) {
      cairo_new_path(cairo);
      return;
    }
    cairo_set_source_surface(cairo, surface_, 0, 0);
    cairo_pattern_t* pattern = cairo_get_source(cairo);
    cairo_pattern_set_matrix(pattern, &matrix);
    cairo_pattern_set_filter(pattern, CAIRO_FILTER_NEAREST);
    cairo_pattern_set_extend(pattern, extend);
    cairo_fill(cairo);
  }

 private:
  cairo_surface_t* surface_;
};

void FillPattern(cairo_t* cairo, const Drawing& drawing, const FillLook& fill, const DeviceMap& map) {
  const auto found = drawing.patterns.find(fill.pattern);
  if (found == drawing.patterns.end() || found->second.columns > 32767 || found->second.rows > 32767) {
    SetColour(cairo, fill.colour);
    cairo_fill(cairo);
    return;
  }
  const Pattern& pattern = found->second;
  Point right{1, 0}, down{0, 1};
  const Point width = map.Direction(fill.patternWidth), height = map.Direction(fill.patternHeight);
  if (std::hypot(width.x, width.y) > 0 && std::hypot(height.x, height.y) > 0) {
    right = {width.x / pattern.columns, width.y / pattern.columns};
    down = {-height.x / pattern.rows, -height.y / pattern.rows};
  }
  CellSurface(pattern.cells, pattern.columns, pattern.rows)
      .Use(cairo, map.ToDevice(drawing.extent.first), right, down, CAIRO_EXTEND_REPEAT);
}

void Fill(cairo_t* cairo, const Drawing& drawing, const Object& object, const DeviceMap& map,
          const std::vector<Path>& paths) {
  const Attributes& attributes = *object.attributes;
  switch (attributes.fill.interior) {
    case Interior::Solid:
      SetColour(cairo, attributes.fill.colour);
      return cairo_fill(cairo);
    case Interior::Hatch:
      return FillHatch(cairo, attributes);
    case Interior::Pattern:
      return FillPattern(cairo, drawing, attributes.fill, map);
    case Interior::Hollow:
      if (attributes.edgeVisible) return cairo_new_path(cairo);
      return Stroke(cairo, {1, 1, true, attributes.fill.colour}, attributes, map, paths);
    case Interior::Empty:
      return cairo_new_path(cairo);
  }
}

// The edges of a polygon set that its flags show, one by one.
std::vector<Path> VisibleEdges(const Object& object) {
  std::vector<Path> edges;
  size_t start = 0;
  for (size_t i = 0; i < object.points.size(); ++i) {
    const uint8_t flag = i < object.edgeFlags.size() ? object.edgeFlags[i] : 1;
    const bool closes = flag >= 2 || i + 1 == object.points.size();
    const Point next = closes ? object.points[start] : object.points[i + 1];
    if (flag % 2 == 1) edges.push_back({{object.points[i], next}, false});
    if (closes) start = i + 1;
  }
  return edges;
}

void PaintOutline(cairo_t* cairo, const Drawing& drawing, const Object& object, const DeviceMap& map) {
  const std::vector<Path> paths = OutlineOf(object);
  for (const Path& path : paths) AddPath(cairo, path, map);
  if (!IsFilled(object.kind))
    return Stroke(cairo, object.attributes->line, *object.attributes, map, paths);
  Fill(cairo, drawing, object, map, paths);
  if (!object.attributes->edgeVisible) return;
  const bool single = object.kind == ObjectKind::PolygonSet;
  const std::vector<Path> edges = single ? VisibleEdges(object) : paths;
  for (const Path& path : edges) AddPath(cairo, path, map);
  Stroke(cairo, object.attributes->edge, *object.attributes, map, edges);
}

// ---------------------------------------------------------------- markers and cells

void AddMarker(cairo_t* cairo, int32_t type, Point p, double half) {
  const auto line = [&](double dx, double dy) {
    cairo_move_to(cairo, p.x - dx * half, p.y - dy * half);
    cairo_line_to(cairo, p.x + dx * half, p.y + dy * half);
  };
  constexpr double kDiagonal = 0.70710678118654752;
  if (type == 1 || type == 4) {
    cairo_new_sub_path(cairo);
    cairo_arc(cairo, p.x, p.y, type == 1 ? std::max(0.5, half / 8) : half, 0, 6.283185307179586);
    return;
  }
  if (type == 2 || type == 3) {
    line(1, 0);
    line(0, 1);
  }
  if (type == 3 || type == 5) {
    line(kDiagonal, kDiagonal);
    line(kDiagonal, -kDiagonal);
  }
}

void PaintMarkers(cairo_t* cairo, const Object& object, const DeviceMap& map) {
  constexpr double kNominalMarker = 6;  // pixels
  const MarkerLook& look = object.attributes->marker;
  const double size = look.scaled ? look.size * kNominalMarker : map.Length(look.size);
  const double half = Bounded(std::max(1.0, size)) / 2;
  for (const Point& point : object.points) AddMarker(cairo, look.type, map.ToDevice(point), half);
  SetColour(cairo, look.colour);
  cairo_set_dash(cairo, nullptr, 0, 0);
  cairo_set_line_width(cairo, 1);
  look.type == 1 ? cairo_fill(cairo) : cairo_stroke(cairo);
}

// Rows run from the first point towards the third, one after the other towards the second.
void PaintCells(cairo_t* cairo, const Object& object, const DeviceMap& map) {
  if (object.columns > 32767 || object.rows > 32767 || object.points.size() < 3) return;
  const Point p = map.ToDevice(object.points[0]), q = map.ToDevice(object.points[1]),
              r = map.ToDevice(object.points[2]);
  const Point right{(r.x - p.x) / object.columns, (r.y - p.y) / object.columns};
  const Point down{(q.x - r.x) / object.rows, (q.y - r.y) / object.rows};
  cairo_move_to(cairo, p.x, p.y);
  cairo_line_to(cairo, r.x, r.y);
  cairo_line_to(cairo, q.x, q.y);
  cairo_line_to(cairo, p.x + q.x - r.x, p.y + q.y - r.y);
  cairo_close_path(cairo);
  CellSurface(object.cells, object.columns, object.rows).Use(cairo, p, right, down, CAIRO_EXTEND_PAD);
}

void PaintObject(cairo_t* cairo, const Drawing& drawing, const Object& object, const DeviceMap& map) {
  switch (object.kind) {
    case ObjectKind::Text:
    case ObjectKind::RestrictedText:
      return PaintText(cairo, drawing, object, map);
    case ObjectKind::Polymarker:
      return PaintMarkers(cairo, object, map);
    case ObjectKind::CellArray:
      return PaintCells(cairo, object, map);
    default:
      return PaintOutline(cairo, drawing, object, map);
  }
}

void ClipTo(cairo_t* cairo, const Box& box, const DeviceMap& map) {
  const Point a = map.ToDevice(box.first), b = map.ToDevice(box.second);
  cairo_rectangle(cairo, std::min(a.x, b.x), std::min(a.y, b.y), std::abs(b.x - a.x),
                  std::abs(b.y - a.y));
  cairo_clip(cairo);
}

}  // namespace

DeviceMap::DeviceMap(const Box& extent, double left, double top, double width, double height) {
  const double spanX = extent.second.x - extent.first.x, spanY = extent.second.y - extent.first.y;
  scaleX_ = width / spanX;
  scaleY_ = -height / spanY;
  originX_ = left - extent.first.x * scaleX_;
  originY_ = top + height - extent.first.y * scaleY_;
  usable_ = spanX != 0 && spanY != 0 && std::isfinite(scaleX_) && std::isfinite(scaleY_) &&
            std::isfinite(originX_) && std::isfinite(originY_) && width > 0 && height > 0;
}

// A drawing without a frame begins at its objects' corner.
DeviceMap DeviceMap::OneUnitAPixel(const Drawing& drawing, double left, double top) {
  constexpr double kWholeRange = 32767;
  Box frame = drawing.extent;
  const double spanX = frame.second.x - frame.first.x, spanY = frame.second.y - frame.first.y;
  Point least, greatest;
  if (std::abs(spanX) == kWholeRange && std::abs(spanY) == kWholeRange &&
      FindExtent(drawing, TextBox::Capitals, least, greatest)) {
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
  const auto isFlat = [&frame] {
    return frame.first.x == frame.second.x || frame.first.y == frame.second.y;
  };
  // A degenerate extent frames nothing: the objects are their own frame, a line has one unit across.
  if (isFlat() && !FindExtent(drawing, TextBox::Full, frame.first, frame.second)) return {};
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

void SetColour(cairo_t* cairo, Colour colour) {
  cairo_set_source_rgb(cairo, colour.red / 255.0, colour.green / 255.0, colour.blue / 255.0);
}

void PaintDrawing(cairo_t* cairo, const Drawing& drawing, const DeviceMap& map) {
  if (!map.IsUsable()) return;
  cairo_set_fill_rule(cairo, CAIRO_FILL_RULE_EVEN_ODD);
  for (const Layer& layer : drawing.layers) {
    for (const Object& object : layer.objects) {
      if (!IsFinite(object)) continue;
      cairo_save(cairo);
      if (object.attributes->clip) ClipTo(cairo, object.attributes->clipBox, map);
      cairo_new_path(cairo);
      PaintObject(cairo, drawing, object, map);
      cairo_restore(cairo);
    }
  }
}

}  // namespace hostkit
