#include "media/drawing/surface.h"
#include "media/drawing/paint_objects.h"

namespace media {
namespace {

Outcome StatusOf(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return Outcome::Ok;
  return status == CAIRO_STATUS_NO_MEMORY ? Outcome::NoMemory : Outcome::BadData;
}

}  // namespace

SurfacePtr MakeSurface(int width, int height) {
  return SurfacePtr(Cairo().image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
}

Outcome PaintOnSurface(cairo_surface_t* surface, const DeviceMap& whole, const DeviceArea& area,
                       std::span<const Object* const> objects, Painting& painting) {
  if (const Outcome made = StatusOf(Cairo().surface_status(surface)); made != Outcome::Ok) return made;
  const ContextPtr cairo(Cairo().create(surface));
  const Brush brush = {cairo.get(), painting.drawing, whole.Shifted(area.left, area.top),
                       area.left,   area.top,         area.width,
                       area.height, painting.limit,   painting};
  const bool complete = PaintObjects(brush, objects);
  if (const Outcome painted = StatusOf(Cairo().status(cairo.get())); painted != Outcome::Ok)
    return painted;
  if (!complete) return Outcome::OverBudget;
  Cairo().surface_flush(surface);
  return StatusOf(Cairo().surface_status(surface));
}

}  // namespace media
