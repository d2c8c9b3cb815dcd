// Where a bitmap's pixels go on a device, and the painting itself, which each platform does in its way.
#pragma once

#include "host/display.h"
#include "hostkit/kernel/internal.h"

namespace hostkit {

/// What is copied where: pixel (left + i, top + j) of the device from (sourceX + i, sourceY + j).
struct Placement {
  int64_t left, top, sourceX, sourceY, width, height;
};
/// The part of `source` (null for the whole bitmap) that falls into the destination and into both of
/// `bounds` and `clip` (null for none); width or height is 0 or less when nothing does.
Placement PlaceBitmap(const RECT& bounds, const KernelBitmap& bitmap, const RECT* source,
                      const RECT& destination, const RECT* clip);

/// Paints a bitmap, leaving out the transparent colour unless it is null. Throws std::bad_alloc.
int32_t PaintBitmap(HDC dc, const KernelBitmap& bitmap, const RECT* source, const RECT& destination,
                    const RECT* clip, const COLORREF* transparent);

}  // namespace hostkit
