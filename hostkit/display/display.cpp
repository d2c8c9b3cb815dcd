// The display and effects libraries' calls.
#include <algorithm>
#include <new>

#include "hostkit/display/placement.h"

namespace {

void ClipAxis(int64_t& target, int64_t& source, int64_t& length, int64_t low, int64_t high) {
  const int64_t cut = std::max<int64_t>(0, low - target);
  target += cut;
  source += cut;
  length = std::min(length - cut, high - target);
}

void Clip(hostkit::Placement& place, const RECT& bounds) {
  ClipAxis(place.left, place.sourceX, place.width, bounds.left, bounds.right);
  ClipAxis(place.top, place.sourceY, place.height, bounds.top, bounds.bottom);
}

int32_t Paint(HDC dc, const KernelBitmap* bitmap, const RECT* source, const RECT* destination,
              const RECT* clip, const COLORREF* transparent) {
  if (dc == nullptr || !hostkit::IsAllocated(bitmap) || destination == nullptr) return kHostInvalid;
  try {
    return hostkit::PaintBitmap(dc, *bitmap, source, *destination, clip, transparent);
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}

}  // namespace

hostkit::Placement hostkit::PlaceBitmap(const RECT& bounds, const KernelBitmap& bitmap,
                                        const RECT* source, const RECT& destination, const RECT* clip) {
  const RECT whole = {0, 0, static_cast<LONG>(bitmap.width), static_cast<LONG>(bitmap.height)};
  const RECT from = source != nullptr ? *source : whole;
  Placement place = {
      destination.left,
      destination.top,
      from.left,
      from.top,
      std::min<int64_t>(int64_t{from.right} - from.left, int64_t{destination.right} - destination.left),
      std::min<int64_t>(int64_t{from.bottom} - from.top, int64_t{destination.bottom} - destination.top)};
  ClipAxis(place.sourceX, place.left, place.width, 0, bitmap.width);
  ClipAxis(place.sourceY, place.top, place.height, 0, bitmap.height);
  Clip(place, bounds);
  if (clip != nullptr) Clip(place, *clip);
  return place;
}

HPALETTE ORB_CALL DisplayCreatePalette(HDC, const KernelBitmap* bitmap) {
  if (!hostkit::IsAllocated(bitmap) || bitmap->colourCount == 0) return nullptr;
  return KernelCreatePalette(hostkit::Palette(*bitmap), bitmap->colourCount);
}

int32_t ORB_CALL DisplayPaintBitmap(HDC dc, KernelBitmap* bitmap, const RECT* source, const RECT*,
                                    const RECT* destination, const RECT* destinationClip,
                                    uint32_t rasterOperation) {
  if (rasterOperation != SRCCOPY) return kHostInvalid;
  return Paint(dc, bitmap, source, destination, destinationClip, nullptr);
}

int32_t ORB_CALL EffectsPaintTransparent(HDC dc, KernelBitmap* bitmap, const RECT* source, const RECT*,
                                         const RECT* destination, const RECT* destinationClip,
                                         int32_t steps, int32_t delay, int32_t speed, int32_t cycles,
                                         int32_t pass, int32_t maximumPass, int32_t kind, int32_t smooth,
                                         COLORREF transparent, int32_t reserved1, int32_t reserved2,
                                         uint32_t rasterOperation) {
  // A paint at once: one step of every effect.
  for (const int32_t setting : {delay, speed, cycles, pass, maximumPass, kind, smooth}) {
    if (setting != 1) return kHostInvalid;
  }
  if (steps != 1000 || reserved1 != 0 || reserved2 != 0 || rasterOperation != SRCCOPY)
    return kHostInvalid;
  return Paint(dc, bitmap, source, destination, destinationClip, &transparent);
}
