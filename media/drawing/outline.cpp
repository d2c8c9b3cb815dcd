// Outlines and extents of objects.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "media/drawing/outline.h"

namespace media {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;
constexpr int kTurnSteps = 360;

Point operator+(Point a, Point b) { return {a.x + b.x, a.y + b.y}; }
Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y}; }
Point operator*(double s, Point a) { return {s * a.x, s * a.y}; }
double Cross(Point a, Point b) { return a.x * b.y - a.y * b.x; }

// Steps of a whole turn: small circles need few.
double TurnSteps(double pixels) {
  constexpr double kSmall = 16;  // pixels
  return pixels < kSmall ? 16 + pixels * (kTurnSteps - 16) / kSmall : kTurnSteps;
}

// Points of centre + cos t * first + sin t * second for t from `start` over `sweep`; a unit is `scale`
// pixels.
std::vector<Point> Sweep(Point centre, Point first, Point second, double start, double sweep,
                         double scale) {
  const double pixels = scale * std::max(std::hypot(first.x, first.y), std::hypot(second.x, second.y));
  const double turns = std::abs(sweep) / kTurn;  // of sums that overflowed not a number
  const int steps =
      std::max(2, static_cast<int>(std::ceil((turns <= 1 ? turns : 1) * TurnSteps(pixels))));
  std::vector<Point> points;
  points.reserve(static_cast<size_t>(steps) + 1);
  for (int i = 0; i <= steps; ++i) {
    const double t = start + sweep * i / steps;
    points.push_back(centre + std::cos(t) * first + std::sin(t) * second);
  }
  return points;
}

// The positive angle from one direction to another; none means a whole turn.
double PositiveAngle(double from, double to) {
  double sweep = std::fmod(to - from, kTurn);
  if (sweep <= 0) sweep += kTurn;
  return sweep;
}

std::vector<Point> CircleArc(Point centre, double radius, double start, double sweep, double scale) {
  return Sweep(centre, {radius, 0}, {0, radius}, start, sweep, scale);
}

std::vector<Point> ArcThroughThree(const std::vector<Point>& p, Point* centre, double scale) {
  const Point a = p[1] - p[0], b = p[2] - p[0];
  const double d = 2 * Cross(a, b);
  if (d == 0) return p;
  const double aa = a.x * a.x + a.y * a.y, bb = b.x * b.x + b.y * b.y;
  *centre = p[0] + Point{(b.y * aa - a.y * bb) / d, (a.x * bb - b.x * aa) / d};
  const auto angle = [&](Point q) { return std::atan2(q.y - centre->y, q.x - centre->x); };
  const double start = angle(p[0]);
  const double sweep = d > 0 ? PositiveAngle(start, angle(p[2])) : -PositiveAngle(angle(p[2]), start);
  return CircleArc(*centre, std::hypot(p[0].x - centre->x, p[0].y - centre->y), start, sweep, scale);
}

std::vector<Point> ArcAround(const Object& object, double scale) {
  const Point start = object.points[1], end = object.points[2];
  const double from = std::atan2(start.y, start.x);
  return CircleArc(object.points[0], object.radius, from, PositiveAngle(from, std::atan2(end.y, end.x)),
                   scale);
}

std::vector<Point> EllipticalArc(const Object& object, double scale) {
  const Point centre = object.points[0];
  const Point first = object.points[1] - centre, second = object.points[2] - centre;
  const double d = Cross(first, second);
  if (d == 0) return {object.points[1], object.points[2]};
  const auto parameter = [&](Point v) { return std::atan2(Cross(first, v) / d, Cross(v, second) / d); };
  const double from = parameter(object.points[3]);
  return Sweep(centre, first, second, from, PositiveAngle(from, parameter(object.points[4])), scale);
}

Path Closed(std::vector<Point> points, CloseType close, Point centre) {
  if (close == CloseType::Pie) points.push_back(centre);
  return {std::move(points), true};
}

std::vector<Path> Pieces(const std::vector<Point>& points) {
  std::vector<Path> paths;
  for (size_t i = 0; i + 1 < points.size(); i += 2) paths.push_back({{points[i], points[i + 1]}, false});
  return paths;
}

std::vector<Path> Polygons(const Object& object) {
  std::vector<Path> paths(1);
  for (size_t i = 0; i < object.points.size(); ++i) {
    paths.back().points.push_back(object.points[i]);
    const bool closes = i < object.edgeFlags.size() && object.edgeFlags[i] >= 2;
    if (closes) paths.emplace_back();
  }
  if (paths.back().points.empty()) paths.pop_back();
  for (Path& path : paths) path.closed = true;
  return paths;
}

size_t PointsNeeded(ObjectKind kind) {
  switch (kind) {
    case ObjectKind::Rectangle:
      return 2;
    case ObjectKind::Circle:
    case ObjectKind::Text:
    case ObjectKind::RestrictedText:
      return 1;
    case ObjectKind::ArcThreePoint:
    case ObjectKind::ArcThreePointClose:
    case ObjectKind::ArcCentre:
    case ObjectKind::ArcCentreClose:
    case ObjectKind::Ellipse:
    case ObjectKind::CellArray:
      return 3;
    case ObjectKind::EllipticalArc:
    case ObjectKind::EllipticalArcClose:
      return 5;
    default:
      return 0;
  }
}

std::vector<Path> ArcOutline(const Object& object, double scale) {
  Point centre = object.points[0];
  switch (object.kind) {
    case ObjectKind::ArcThreePoint:
      return {{ArcThroughThree(object.points, &centre, scale), false}};
    case ObjectKind::ArcThreePointClose: {
      std::vector<Point> arc = ArcThroughThree(object.points, &centre, scale);
      return {Closed(std::move(arc), object.close, centre)};
    }
    case ObjectKind::ArcCentre:
      return {{ArcAround(object, scale), false}};
    case ObjectKind::ArcCentreClose:
      return {Closed(ArcAround(object, scale), object.close, centre)};
    case ObjectKind::EllipticalArc:
      return {{EllipticalArc(object, scale), false}};
    default:
      return {Closed(EllipticalArc(object, scale), object.close, centre)};
  }
}

}  // namespace

bool IsFinite(const Object& object) {
  const bool points = std::all_of(object.points.begin(), object.points.end(),
                                  [](Point p) { return std::isfinite(p.x) && std::isfinite(p.y); });
  return points && std::isfinite(object.radius) && std::isfinite(object.box.x) &&
         std::isfinite(object.box.y);
}

std::vector<Path> OutlineOf(const Object& object, double pixelsPerUnit) {
  const std::vector<Point>& p = object.points;
  if (p.size() < PointsNeeded(object.kind) || p.empty()) return {};
  switch (object.kind) {
    case ObjectKind::Polyline:
      return {{p, false}};
    case ObjectKind::DisjointPolyline:
      return Pieces(p);
    case ObjectKind::Polygon:
      return {{p, true}};
    case ObjectKind::PolygonSet:
      return Polygons(object);
    case ObjectKind::Rectangle:
      return {{{p[0], {p[1].x, p[0].y}, p[1], {p[0].x, p[1].y}}, true}};
    case ObjectKind::Circle:
      return {{CircleArc(p[0], object.radius, 0, kTurn, pixelsPerUnit), true}};
    case ObjectKind::Ellipse:
      return {{Sweep(p[0], p[1] - p[0], p[2] - p[0], 0, kTurn, pixelsPerUnit), true}};
    case ObjectKind::Polymarker:
    case ObjectKind::Text:
    case ObjectKind::RestrictedText:
    case ObjectKind::CellArray:
      return {};
    default:
      return ArcOutline(object, pixelsPerUnit);
  }
}

void AddExtent(const Drawing& drawing, const Object& object, TextBox textBox,
               const std::function<void(Point)>& add) {
  const std::vector<Point>& points = object.points;
  if (!IsFinite(object) || points.size() < PointsNeeded(object.kind)) return;
  switch (object.kind) {
    case ObjectKind::Circle: {
      const double radius = std::abs(object.radius);
      add(points[0] + Point{radius, radius});
      return add(points[0] - Point{radius, radius});
    }
    case ObjectKind::Polyline:
    case ObjectKind::Polygon:
    case ObjectKind::PolygonSet:
    case ObjectKind::Polymarker:
      std::for_each(points.begin(), points.end(), add);
      return;
    case ObjectKind::CellArray:
      std::for_each(points.begin(), points.end(), add);
      return add(points[0] + (points[1] - points[2]));
    case ObjectKind::Text:
    case ObjectKind::RestrictedText: {
      Point corners[4];
      TextCorners(drawing, object, textBox, corners);
      std::for_each(std::begin(corners), std::end(corners), add);
      return;
    }
    default:
      for (const Path& path : OutlineOf(object)) {
        for (const Point& point : path.points) {
          if (std::isfinite(point.x) && std::isfinite(point.y)) add(point);
        }
      }
  }
}

bool FindExtent(const Drawing& drawing, TextBox textBox, Point& least, Point& greatest) {
  bool any = false;
  const auto add = [&](Point p) {
    least = any ? Point{std::min(least.x, p.x), std::min(least.y, p.y)} : p;
    greatest = any ? Point{std::max(greatest.x, p.x), std::max(greatest.y, p.y)} : p;
    any = true;
  };
  for (const Layer& layer : drawing.layers) {
    for (const Object& object : layer.objects) AddExtent(drawing, object, textBox, add);
  }
  return any;
}

void SetExtent(Drawing& drawing, const Box& extent) {
  drawing.extent = extent;
  for (Layer& layer : drawing.layers) {
    for (Object& object : layer.objects) {
      if (object.attributes->clipGiven) continue;
      Attributes attributes = *object.attributes;
      attributes.clipBox = extent;
      object.attributes = std::make_shared<const Attributes>(attributes);
    }
  }
}

}  // namespace media
