// Vector handles and the drawings behind them.
#pragma once

#include "host/vector.h"
#include "media/drawing/drawing.h"

namespace hostkit {

/// A drawing with what its holder says of it.
struct HeldDrawing : media::Drawing {
  COLORREF behind = 0xFFFFFF;       ///< colour behind the drawing
  VectorTranslation translation{};  ///< noted, not yet applied
};

inline HeldDrawing* DrawingOf(const VectorHandle* handle) {
  return handle != nullptr ? static_cast<HeldDrawing*>(handle->drawing) : nullptr;
}
/// Makes a drawing a handle's, in place of what it held. Throws std::bad_alloc.
void GiveDrawing(VectorHandle* handle, HeldDrawing drawing);

}  // namespace hostkit
