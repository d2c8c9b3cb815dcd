// Palettes and device contexts where Windows has none to offer.
#pragma once

#include <memory>

#include "hostkit/kernel/internal.h"

namespace hostkit {

/// What a palette handle points to.
struct PaletteObject {
  uint32_t count;
  std::unique_ptr<KernelColour[]> entries;
};
/// What a device context points to.
struct DeviceContext {
  KernelBitmap* bitmap;
  HPALETTE palette;
};
inline DeviceContext* Context(HDC dc) { return reinterpret_cast<DeviceContext*>(dc); }

}  // namespace hostkit
