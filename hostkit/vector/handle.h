// Vector handles and the drawings behind them.
#pragma once

#include "hostkit/vector/drawing.h"

namespace hostkit {

inline Drawing* DrawingOf(const VectorHandle* handle) {
  return handle != nullptr ? static_cast<Drawing*>(handle->drawing) : nullptr;
}
/// Makes a drawing a handle's, in place of what it held. Throws std::bad_alloc.
void GiveDrawing(VectorHandle* handle, Drawing drawing);

}  // namespace hostkit
