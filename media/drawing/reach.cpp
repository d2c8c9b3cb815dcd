#include "media/drawing/reach.h"

#include <algorithm>

#include "media/drawing/looks.h"

namespace media {
namespace {

bool Overlap(const Extent& a, const Extent& b, double margin) {
  return a.left - margin <= b.right && a.right + margin >= b.left && a.top - margin <= b.bottom &&
         a.bottom + margin >= b.top;
}

// How far an object's ink may lie from its points.
double MarginOf(const Object& object, const DeviceMap& map) {
  constexpr double kMitre = 10, kEdge = 2;  // Cairo's limit of a mitre, in line widths
  const Attributes& attributes = *object.attributes;
  const UsedLooks used = LooksOf(object);
  double margin = kEdge;
  if (used.line) margin += kMitre * PixelWidth(attributes.line, map);
  if (used.fill) margin += kMitre;
  if (used.edge) margin += kMitre * PixelWidth(attributes.edge, map);
  if (used.marker) margin += HalfMarker(attributes.marker, map);
  if (used.text) margin += map.Length(2 * attributes.text.height);  // what letters reach beyond their box
  return Bounded(margin);
}

bool Contains(const Box& box, const DeviceMap& map, const Extent& area) {
  Extent extent;
  extent.Add(map.ToDevice(box.first));
  extent.Add(map.ToDevice(box.second));
  return extent.left <= area.left && extent.top <= area.top && extent.right >= area.right &&
         extent.bottom >= area.bottom;
}

// Whether a plain rectangle hides all of an area.
bool Hides(const Drawing& drawing, const Object& object, const DeviceMap& map, const Extent& area) {
  const Attributes& attributes = *object.attributes;
  return object.kind == ObjectKind::Rectangle && attributes.fill.interior == Interior::Solid &&
         Contains({object.points[0], object.points[1]}, map, area) &&
         (!drawing.Clips(attributes) || Contains(attributes.clipBox, map, area));
}

}  // namespace

Reach::Reach(const Drawing& drawing, const DeviceMap& map) : drawing_(drawing), map_(map) {
  for (const Layer& layer : drawing.layers) {
    for (const Object& object : layer.objects) {
      Entry entry = {&object, {}, MarginOf(object, map)};
      AddExtent(drawing, object, TextBox::Full, [&](Point p) { entry.extent.Add(map.ToDevice(p)); });
      if (entry.extent.left > entry.extent.right) continue;
      entries_.push_back(entry);
      whole_.Add({entry.extent.left - entry.margin, entry.extent.top - entry.margin});
      whole_.Add({entry.extent.right + entry.margin, entry.extent.bottom + entry.margin});
    }
  }
}

bool Reach::Touches(const Entry& entry, const Extent& area) const {
  if (!Overlap(entry.extent, area, entry.margin)) return false;
  const ObjectKind kind = entry.object->kind;
  if (kind != ObjectKind::Polyline && kind != ObjectKind::DisjointPolyline) return true;
  // A long line touches little of its box.
  const std::vector<Point>& points = entry.object->points;
  const size_t step = kind == ObjectKind::Polyline ? 1 : 2;
  for (size_t i = 0; i + 1 < points.size(); i += step) {
    Extent segment;
    segment.Add(map_.ToDevice(points[i]));
    segment.Add(map_.ToDevice(points[i + 1]));
    if (Overlap(segment, area, entry.margin)) return true;
  }
  return points.size() == 1;
}

std::vector<const Object*> Reach::Within(double left, double top, double right, double bottom) const {
  Extent area;
  area.Add({left, top});
  area.Add({right, bottom});
  std::vector<const Object*> objects;
  for (const Entry& entry : entries_) {
    if (!Touches(entry, area)) continue;
    if (Hides(drawing_, *entry.object, map_, area)) objects.clear();
    objects.push_back(entry.object);
  }
  return objects;
}

}  // namespace media
