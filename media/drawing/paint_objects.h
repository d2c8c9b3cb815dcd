// Painting the objects of a drawing.
#pragma once

#include <span>

#include "media/drawing/paint.h"

namespace media {

/// Draws objects, one after the other; false when the limit was met, and what was drawn is not all.
bool PaintObjects(const Brush& brush, std::span<const Object* const> objects);

}  // namespace media
