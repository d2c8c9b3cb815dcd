// Surfaces that a drawing is painted on.
#pragma once

#include <memory>
#include <span>

#include "media/drawing/cairo_library.h"
#include "media/drawing/paint.h"
#include "media/outcome.h"

namespace media {

struct DestroySurface {
  void operator()(cairo_surface_t* surface) const { Cairo().surface_destroy(surface); }
};
struct DestroyContext {
  void operator()(cairo_t* context) const { Cairo().destroy(context); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, DestroySurface>;
using ContextPtr = std::unique_ptr<cairo_t, DestroyContext>;

/// An empty surface of premultiplied colours with alpha; one that cannot be used when memory is out.
SurfacePtr MakeSurface(int width, int height);

/// Paints objects on a surface that shows an area of the device. Ok; OverBudget when the painting's
/// limit was met; NoMemory, or BadData for what the library does not take: then not all is
/// there.
Outcome PaintOnSurface(cairo_surface_t* surface, const DeviceMap& whole, const DeviceArea& area,
                       std::span<const Object* const> objects, Painting& painting);

}  // namespace media
