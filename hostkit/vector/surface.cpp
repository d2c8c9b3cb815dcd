#include "hostkit/vector/surface.h"

#include "hostkit/hostkit.h"

namespace hostkit {
namespace {

int32_t StatusOf(cairo_status_t status) {
  if (status == CAIRO_STATUS_SUCCESS) return kHostOk;
  return status == CAIRO_STATUS_NO_MEMORY ? kHostNoMemory : kHostBadData;
}

}  // namespace

SurfacePtr MakeSurface(int width, int height) {
  return {cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height), &cairo_surface_destroy};
}

int32_t PaintOnSurface(cairo_surface_t* surface, const DeviceMap& whole, const DeviceArea& area,
                       std::span<const Object* const> objects, Painting& painting) {
  if (const int32_t made = StatusOf(cairo_surface_status(surface)); made != kHostOk) return made;
  const ContextPtr cairo(cairo_create(surface), &cairo_destroy);
  const Brush brush = {cairo.get(), painting.drawing, whole.Shifted(area.left, area.top),
                       area.left,   area.top,         area.width,
                       area.height, painting.limit,   painting};
  const bool complete = PaintObjects(brush, objects);
  if (const int32_t painted = StatusOf(cairo_status(cairo.get())); painted != kHostOk) return painted;
  if (!complete) return kHostOverBudget;
  cairo_surface_flush(surface);
  return StatusOf(cairo_surface_status(surface));
}

}  // namespace hostkit
