// Painting bitmaps into device contexts on bitmaps.
#include <algorithm>
#include <new>
#include <vector>

#include "host/display.h"
#include "hostkit/kernel/internal.h"

namespace {

using hostkit::IsAllocated;

// What is copied where: pixel (left + i, top + j) of the canvas from (sourceX + i, sourceY + j).
struct Placement {
  int64_t left, top, sourceX, sourceY, width, height;
};

void ClipAxis(int64_t& target, int64_t& source, int64_t& length, int64_t low, int64_t high) {
  const int64_t cut = std::max<int64_t>(0, low - target);
  target += cut;
  source += cut;
  length = std::min(length - cut, high - target);
}

void Clip(Placement& place, const RECT& bounds) {
  ClipAxis(place.left, place.sourceX, place.width, bounds.left, bounds.right);
  ClipAxis(place.top, place.sourceY, place.height, bounds.top, bounds.bottom);
}

Placement Place(const KernelBitmap& canvas, const KernelBitmap& bitmap, const RECT* source,
                const RECT& destination, const RECT* destinationClip) {
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
  Clip(place, {0, 0, static_cast<LONG>(canvas.width), static_cast<LONG>(canvas.height)});
  if (destinationClip != nullptr) Clip(place, *destinationClip);
  return place;
}

bool SameForm(const KernelBitmap& a, const KernelBitmap& b) {
  return (a.bitsPerPixel == 24 || a.bitsPerPixel == 32) && a.bitsPerPixel == b.bitsPerPixel &&
         (a.colourOrder == kOrderRgb) == (b.colourOrder == kOrderRgb);
}

// Writes the runs of `row` that differ from the transparent colour.
void PutOpaqueRuns(const KernelBitmap& canvas, hostkit::NearestColour& nearest, const uint8_t* bgr,
                   COLORREF transparent, uint32_t x, uint32_t count, uint8_t* row) {
  const auto isTransparent = [&](uint32_t i) {
    const uint8_t* p = bgr + 3 * static_cast<size_t>(i);
    return (p[2] | p[1] << 8 | static_cast<COLORREF>(p[0]) << 16) == transparent;
  };
  for (uint32_t i = 0; i < count;) {
    uint32_t end = i;
    while (end < count && !isTransparent(end)) ++end;
    hostkit::BgrToRow(canvas, nearest, bgr + 3 * static_cast<size_t>(i), x + i, end - i, row);
    for (i = end; i < count && isTransparent(i);) ++i;
  }
}

int32_t Paint(HDC dc, const KernelBitmap* bitmap, const RECT* source, const RECT* destination,
              const RECT* destinationClip, const COLORREF* transparent) {
  if (dc == nullptr || !IsAllocated(bitmap) || destination == nullptr) return kHostInvalid;
  KernelBitmap& canvas = *hostkit::Context(dc)->bitmap;
  const Placement place = Place(canvas, *bitmap, source, *destination, destinationClip);
  if (place.width <= 0 || place.height <= 0) return kHostOk;
  const auto width = static_cast<uint32_t>(place.width);
  const auto left = static_cast<uint32_t>(place.left);
  const auto from = static_cast<uint32_t>(place.sourceX);
  std::vector<uint8_t> bgr(3 * static_cast<size_t>(width));
  hostkit::NearestColour nearest(canvas);
  const bool copy = transparent == nullptr && SameForm(canvas, *bitmap);
  for (int64_t y = 0; y < place.height; ++y) {
    const uint8_t* in = hostkit::PictureRow(*bitmap, static_cast<uint32_t>(place.sourceY + y));
    uint8_t* out = hostkit::PictureRow(canvas, static_cast<uint32_t>(place.top + y));
    if (copy) {
      hostkit::CopyPixels(canvas.bitsPerPixel, in, from, out, left, width);
      continue;
    }
    hostkit::RowToBgr(*bitmap, in, from, width, bgr.data());
    if (transparent != nullptr) {
      PutOpaqueRuns(canvas, nearest, bgr.data(), *transparent, left, width, out);
    } else {
      hostkit::BgrToRow(canvas, nearest, bgr.data(), left, width, out);
    }
  }
  return kHostOk;
}

}  // namespace

HPALETTE ORB_CALL DisplayCreatePalette(HDC, const KernelBitmap* bitmap) {
  if (!IsAllocated(bitmap) || bitmap->colourCount == 0) return nullptr;
  return KernelCreatePalette(hostkit::Palette(*bitmap), bitmap->colourCount);
}

int32_t ORB_CALL DisplayPaintBitmap(HDC dc, KernelBitmap* bitmap, const RECT* source, const RECT*,
                                    const RECT* destination, const RECT* destinationClip, uint32_t) {
  try {
    return Paint(dc, bitmap, source, destination, destinationClip, nullptr);
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}

int32_t ORB_CALL EffectsPaintTransparent(HDC dc, KernelBitmap* bitmap, const RECT* source, const RECT*,
                                         const RECT* destination, const RECT* destinationClip, int32_t,
                                         int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t,
                                         COLORREF transparent, int32_t, int32_t, uint32_t) {
  try {
    return Paint(dc, bitmap, source, destination, destinationClip, &transparent);
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}
