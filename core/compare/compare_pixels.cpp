#include "core/compare/compare_pixels.h"

#include <algorithm>
#include <cstdlib>

#include "media/work.h"

namespace core {
namespace {

// Leaves the differences in place of the first row.
void CompareRow(std::vector<uint8_t>& row, const uint8_t* other, uint32_t y, PixelDifference& pixels) {
  for (uint32_t x = 0; x < pixels.widthA; ++x) {
    int largest = 0;
    for (size_t at = size_t{3} * x; at < size_t{3} * x + 3; ++at) {
      const int distance = std::abs(row[at] - other[at]);
      row[at] = static_cast<uint8_t>(distance);
      largest = std::max(largest, distance);
    }
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

// Finds the sizes. Whether there are rows to compare.
bool Start(FileView& a, FileView& b, PixelDifference& pixels) {
  pixels.a = a.Start();
  pixels.b = b.Start();
  if (!pixels.BothDraw()) return false;
  pixels.widthA = a.Width();
  pixels.heightA = a.Height();
  pixels.widthB = b.Width();
  pixels.heightB = b.Height();
  return pixels.SameSize();
}

}  // namespace

PixelDifference ComparePictureSizes(const Survey& a, const Survey& b) {
  const ViewRequest request;
  FileView first(a, request), second(b, request);
  PixelDifference pixels;
  Start(first, second, pixels);
  return pixels;
}

PixelDifference ComparePixels(const Survey& a, const Survey& b, ScratchFile& scratch) {
  const ViewRequest request;
  FileView first(a, request), second(b, request);
  PixelDifference pixels;
  if (!Start(first, second, pixels)) return pixels;
  media::AllowPixels(first.PixelsToMake());
  media::AllowPixels(second.PixelsToMake());
  std::vector<uint8_t> row(size_t{3} * pixels.widthA);
  pixels.a = first.Draw([&](uint32_t y, const uint8_t* rgb) {
    scratch.Write(uint64_t{y} * row.size(), rgb, row.size());
    return true;
  });
  if (!pixels.BothDraw()) return pixels;
  pixels.b = second.Draw([&](uint32_t y, const uint8_t* rgb) {
    scratch.ReadBack(uint64_t{y} * row.size(), row.data(), row.size());
    CompareRow(row, rgb, y, pixels);
    scratch.Write(uint64_t{y} * row.size(), row.data(), row.size());
    return true;
  });
  return pixels;
}

}  // namespace core
