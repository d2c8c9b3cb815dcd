#include "media/drawing/paint_objects.h"

#include <algorithm>
#include <cmath>

#include "media/drawing/looks.h"
#include "media/drawing/paint_steps.h"
#include "media/work.h"

namespace media {
namespace {

constexpr double kObjectCost = 2000, kPointCost = 20;       // nanoseconds
constexpr double kObjectMemory = 2000, kPointMemory = 200;  // bytes, where painting is kept

PathExtent AddPaths(const Brush& brush, const std::vector<Path>& paths) {
  PathExtent extent;
  for (const Path& path : paths) {
    Point first, previous;
    for (size_t i = 0; i < path.points.size(); ++i) {
      const Point p = brush.map.ToDevice(path.points[i]);
      if (i == 0) {
        Cairo().move_to(brush.cairo, p.x, p.y);
        first = p;
        extent.extent.Add(p);
      } else {
        Cairo().line_to(brush.cairo, p.x, p.y);
        extent.AddEdge(brush, previous, p);
      }
      previous = p;
    }
    if (!path.closed || path.points.empty()) continue;
    Cairo().close_path(brush.cairo);
    extent.AddEdge(brush, previous, first);
  }
  return extent;
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

void PaintOutline(const Brush& brush, const Object& object) {
  const Attributes& attributes = *object.attributes;
  const std::vector<Path> paths = OutlineOf(object, brush.map.Length(1));
  const PathExtent path = AddPaths(brush, paths);
  if (!IsFilled(object.kind)) return StrokePath(brush, attributes.line, attributes, paths, path);
  const Interior interior = attributes.fill.interior;
  if (interior == Interior::Empty || (interior == Interior::Hollow && attributes.edgeVisible)) {
    Cairo().new_path(brush.cairo);
  } else if (interior == Interior::Hollow) {
    StrokePath(brush, {1, 1, true, attributes.fill.colour}, attributes, paths, path);
  } else {
    FillPath(brush, object, path);
  }
  if (!attributes.edgeVisible) return;
  const bool single = object.kind == ObjectKind::PolygonSet;
  const std::vector<Path> edges = single ? VisibleEdges(object) : paths;
  StrokePath(brush, attributes.edge, attributes, edges, AddPaths(brush, edges));
}

// ---------------------------------------------------------------- markers

void AddMarker(cairo_t* cairo, int32_t type, Point p, double half) {
  const auto line = [&](double dx, double dy) {
    Cairo().move_to(cairo, p.x - dx * half, p.y - dy * half);
    Cairo().line_to(cairo, p.x + dx * half, p.y + dy * half);
  };
  constexpr double kDiagonal = 0.70710678118654752;
  if (type == 1 || type == 4) {
    Cairo().new_sub_path(cairo);
    Cairo().arc(cairo, p.x, p.y, type == 1 ? std::max(0.5, half / 8) : half, 0, 6.283185307179586);
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

// What a marker costs: its lines and arcs are sampled in every row that they cross.
double MarkerCost(int32_t type, double rows) {
  struct Cost {
    double once, row;  // nanoseconds
  };
  constexpr Cost kCosts[] = {{1500, 60}, {1500, 60}, {2000, 480}, {3000, 750}, {2000, 250}};
  const Cost& cost = kCosts[type >= 1 && type <= 5 ? type - 1 : 2];
  return cost.once + cost.row * rows;
}

// Markers are drawn some at a time: a path of very many is slower than its parts.
void PaintMarkers(const Brush& brush, const Object& object) {
  constexpr size_t kAtOnce = 64;
  const MarkerLook& look = object.attributes->marker;
  const double half = HalfMarker(look, brush.map);
  cairo_t* cairo = brush.cairo;
  SetColour(cairo, look.colour);
  Cairo().set_dash(cairo, nullptr, 0, 0);
  Cairo().set_line_width(cairo, 1);
  size_t held = 0;
  for (size_t i = 0; i < object.points.size(); ++i) {
    const Point p = brush.map.ToDevice(object.points[i]);
    const bool seen = p.x + half >= -1 && p.x - half <= brush.width + 1 && p.y + half >= -1 &&
                      p.y - half <= brush.height + 1;
    if (seen) {
      const double rows = std::min(2 * half, brush.height);
      if (!brush.limit.Take(MarkerCost(look.type, rows))) break;
      AddMarker(cairo, look.type, p, half);
      ++held;
    }
    if (held < kAtOnce && i + 1 < object.points.size()) continue;
    look.type == 1 ? Cairo().fill(cairo) : Cairo().stroke(cairo);
    held = 0;
  }
  Cairo().new_path(cairo);
}

void PaintObject(const Brush& brush, const Object& object) {
  switch (object.kind) {
    case ObjectKind::Text:
    case ObjectKind::RestrictedText:
      return PaintText(brush, object);
    case ObjectKind::Polymarker:
      return PaintMarkers(brush, object);
    case ObjectKind::CellArray:
      return PaintCells(brush, object);
    default:
      return PaintOutline(brush, object);
  }
}

void ClipTo(cairo_t* cairo, const Box& box, const DeviceMap& map) {
  const Point a = map.ToDevice(box.first), b = map.ToDevice(box.second);
  Cairo().rectangle(cairo, std::min(a.x, b.x), std::min(a.y, b.y), std::abs(b.x - a.x),
                    std::abs(b.y - a.y));
  Cairo().clip(cairo);
}

}  // namespace

bool PaintObjects(const Brush& brush, std::span<const Object* const> objects) {
  Cairo().set_fill_rule(brush.cairo, CAIRO_FILL_RULE_EVEN_ODD);
  for (const Object* object : objects) {
    const auto points = static_cast<double>(object->points.size());
    if (!brush.limit.Take(kObjectCost + kPointCost * points)) break;
    if (!brush.limit.Keep(kObjectMemory + kPointMemory * points)) break;
    Cairo().save(brush.cairo);
    if (brush.drawing.Clips(*object->attributes))
      ClipTo(brush.cairo, object->attributes->clipBox, brush.map);
    Cairo().new_path(brush.cairo);
    PaintObject(brush, *object);
    Cairo().restore(brush.cairo);
  }
  return !brush.limit.IsExceeded();
}

}  // namespace media
