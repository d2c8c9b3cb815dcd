// What objects are drawn with.
#pragma once

#include "media/drawing/drawing.h"

namespace media {

/// The attributes that an object is drawn with.
struct UsedLooks {
  bool line = false, fill = false, edge = false, marker = false, text = false;
};
UsedLooks LooksOf(const Object& object);
/// Whether an object encloses an area.
bool IsFilled(ObjectKind kind);

}  // namespace media
