// Painting into the stand-in device contexts, which are bitmaps.
#include <algorithm>
#include <new>
#include <vector>

#include "hostkit/display/placement.h"
#include "hostkit/kernel/gdi.h"
#include "hostkit/kernel/pixels_rows.h"
#include "hostkit/kernel/row_threads.h"
#include "media/work.h"

namespace {

bool SameForm(const KernelBitmap& a, const KernelBitmap& b) {
  return (a.bitsPerPixel == 24 || a.bitsPerPixel == 32) && a.bitsPerPixel == b.bitsPerPixel &&
         (a.colourOrder == kOrderRgb) == (b.colourOrder == kOrderRgb);
}

// Writes the runs of `bgr` that differ from the transparent colour; a byte behind them may be read.
void PutOpaqueRuns(const KernelBitmap& canvas, hostkit::NearestColour& nearest, const uint8_t* bgr,
                   COLORREF transparent, uint32_t x, uint32_t count, uint8_t* row) {
  const uint32_t pad = (transparent & 0xFF) << 16 | (transparent & 0xFF00) | (transparent >> 16 & 0xFF);
  const auto isTransparent = [&](uint32_t i) {
    uint32_t pixel;
    std::memcpy(&pixel, bgr + 3 * size_t{i}, sizeof pixel);
    return (pixel & 0xFFFFFF) == pad;
  };
  for (uint32_t i = 0; i < count;) {
    uint32_t end = i;
    while (end < count && !isTransparent(end)) ++end;
    hostkit::BgrToRow(canvas, nearest, bgr + 3 * size_t{i}, x + i, end - i, row);
    for (i = end; i < count && isTransparent(i);) ++i;
  }
}

}  // namespace

int32_t hostkit::PaintBitmap(HDC dc, const KernelBitmap& bitmap, const RECT* source,
                             const RECT& destination, const RECT* clip, const COLORREF* transparent) {
  KernelBitmap& canvas = *Context(dc)->bitmap;
  const RECT bounds = {0, 0, static_cast<LONG>(canvas.width), static_cast<LONG>(canvas.height)};
  const Placement place = PlaceBitmap(bounds, bitmap, source, destination, clip);
  if (place.width <= 0 || place.height <= 0) return kHostOk;
  const auto width = static_cast<uint32_t>(place.width), height = static_cast<uint32_t>(place.height);
  const auto left = static_cast<uint32_t>(place.left);
  const auto from = static_cast<uint32_t>(place.sourceX);
  const bool isBgr = canvas.bitsPerPixel == 24 && canvas.colourOrder != kOrderRgb;
  const bool copy = transparent == nullptr && SameForm(canvas, bitmap);
  const uint64_t pixels = uint64_t{width} * height;
  if (!media::Spend(pixels * (copy ? 3 : 5))) return kHostOverBudget;
  std::vector<uint8_t> bgr(3 * size_t{width} + 1);
  NearestColour nearest(canvas);
  const RowReader reader(bitmap, pixels);
  const auto in = [&](uint32_t y) {
    return PictureRow(bitmap, static_cast<uint32_t>(place.sourceY) + y);
  };
  const auto out = [&](uint32_t y) { return PictureRow(canvas, static_cast<uint32_t>(place.top) + y); };
  if (transparent == nullptr && (copy || isBgr)) {
    ForRows(height, pixels * canvas.bitsPerPixel / 8, [&](uint32_t y, uint32_t end) {
      for (; y < end; ++y) {
        copy ? CopyPixels(canvas.bitsPerPixel, in(y), from, out(y), left, width)
             : reader.Read(in(y), from, width, out(y) + 3 * size_t{left});
      }
    });
    return kHostOk;
  }
  for (uint32_t y = 0; y < height; ++y) {
    reader.Read(in(y), from, width, bgr.data());
    if (transparent != nullptr) {
      PutOpaqueRuns(canvas, nearest, bgr.data(), *transparent, left, width, out(y));
    } else {
      BgrToRow(canvas, nearest, bgr.data(), left, width, out(y));
    }
  }
  return kHostOk;
}
