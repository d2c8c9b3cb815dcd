// What objects are drawn with.
#pragma once

#include "hostkit/vector/drawing.h"

namespace hostkit {

/// The attributes that an object is drawn with.
struct UsedLooks {
  bool line = false, fill = false, edge = false, marker = false, text = false;
};
UsedLooks LooksOf(const Object& object);
/// Whether an object encloses an area.
bool IsFilled(ObjectKind kind);

}  // namespace hostkit
