// Surfaces that a drawing is painted on.
#pragma once

#include <memory>
#include <span>

#include "media/drawing/paint.h"
#include "media/outcome.h"

namespace media {

using SurfacePtr = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using ContextPtr = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

/// An empty surface of premultiplied colours with alpha; one that cannot be used when memory is out.
SurfacePtr MakeSurface(int width, int height);

/// Paints objects on a surface that shows an area of the device. Ok; OverBudget when the painting's
/// limit was met; NoMemory, or BadData for what the library does not take: then not all is
/// there.
Outcome PaintOnSurface(cairo_surface_t* surface, const DeviceMap& whole, const DeviceArea& area,
                       std::span<const Object* const> objects, Painting& painting);

}  // namespace media
