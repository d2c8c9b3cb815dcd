#include "tools/orbntf/inspect/compare_pixels.h"

#include <algorithm>
#include <cstdlib>

#include "Common/Owning.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/drawing.h"

namespace tool {
namespace {

int32_t Draw(const std::string& path, OwnedBitmap& canvas) {
  Document document;
  const WorkAccount account(path);
  if (const int32_t status = document.Open(path); status != ORB_SUCCESS) return status;
  uint32_t width = 0, height = 0;
  return DrawDocument(path, document, canvas, width, height);
}

const uint8_t* RowOf(const KernelBitmap& bitmap, uint32_t y) {
  const auto* rows = reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(bitmap.pixels));
  return rows + size_t{bitmap.height - 1 - y} * bitmap.bytesPerLine;
}

void CompareRow(const uint8_t* a, const uint8_t* b, uint32_t y, PixelDifference& pixels) {
  for (uint32_t x = 0; x < pixels.widthA; ++x, a += 3, b += 3) {
    const int largest = std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
    if (largest == 0) continue;
    if (pixels.count++ == 0) {
      pixels.left = pixels.right = x;
      pixels.top = y;
    }
    pixels.left = std::min(pixels.left, x);
    pixels.right = std::max(pixels.right, x);
    pixels.bottom = y;
    pixels.largest = std::max(pixels.largest, largest);
  }
}

}  // namespace

PixelDifference ComparePixels(const std::string& a, const std::string& b) {
  PixelDifference pixels;
  OwnedBitmap first, second;
  pixels.statusA = Draw(a, first);
  RequireHostReads(a);
  pixels.statusB = Draw(b, second);
  RequireHostReads(b);
  if (!pixels.BothDraw()) return pixels;
  pixels.widthA = first.record.width, pixels.heightA = first.record.height;
  pixels.widthB = second.record.width, pixels.heightB = second.record.height;
  if (!pixels.SameSize()) return pixels;
  for (uint32_t y = 0; y < pixels.heightA; ++y)
    CompareRow(RowOf(first.record, y), RowOf(second.record, y), y, pixels);
  return pixels;
}

}  // namespace tool
