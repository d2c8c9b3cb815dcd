// Histogram, brightness, band merging and block combining.
#include <algorithm>
#include <new>
#include <vector>

#include "host/display.h"
#include "hostkit/kernel/budget.h"
#include "hostkit/kernel/internal.h"

namespace {

using hostkit::IsAllocated;

int32_t Histogram(const KernelBitmap& bitmap, uint32_t* counters, uint32_t count) {
  if (!hostkit::Spend(8 * uint64_t{bitmap.width} * bitmap.height)) return kHostOverBudget;
  std::vector<uint8_t> bgr(3 * static_cast<size_t>(bitmap.width));
  for (uint32_t row = 0; row < bitmap.height; ++row) {
    hostkit::RowToBgr(bitmap, hostkit::Row(bitmap, row), 0, bitmap.width, bgr.data());
    for (size_t i = 0; i < bgr.size(); i += 3) {
      const uint32_t luminance = (114u * bgr[i] + 587u * bgr[i + 1] + 299u * bgr[i + 2]) / 1000;
      ++counters[luminance * count / 256];
    }
  }
  return kHostOk;
}

uint8_t Brighter(uint8_t value, int32_t shift) {
  return static_cast<uint8_t>(std::clamp(value + shift, 0, 255));
}

int32_t Adjust(const KernelBitmap& bitmap, int32_t shift) {
  if (KernelColour* palette = hostkit::Palette(bitmap); palette != nullptr) {
    for (uint32_t i = 0; i < bitmap.colourCount; ++i) {
      palette[i].blue = Brighter(palette[i].blue, shift);
      palette[i].green = Brighter(palette[i].green, shift);
      palette[i].red = Brighter(palette[i].red, shift);
    }
    return kHostOk;
  }
  if (!hostkit::Spend(8 * uint64_t{bitmap.width} * bitmap.height)) return kHostOverBudget;
  std::vector<uint8_t> bgr(3 * static_cast<size_t>(bitmap.width));
  hostkit::NearestColour nearest(bitmap);
  for (uint32_t row = 0; row < bitmap.height; ++row) {
    hostkit::RowToBgr(bitmap, hostkit::Row(bitmap, row), 0, bitmap.width, bgr.data());
    for (uint8_t& value : bgr) value = Brighter(value, shift);
    hostkit::BgrToRow(bitmap, nearest, bgr.data(), 0, bitmap.width, hostkit::Row(bitmap, row));
  }
  return kHostOk;
}

int32_t Merge(KernelBitmap* destination, const KernelBitmap* bands, uint32_t recordSize) {
  uint32_t width = 0, height = 0;
  for (int band = 0; band < 3; ++band) {
    if (!IsAllocated(&bands[band])) continue;
    width = std::max(width, bands[band].width);
    height = std::max(height, bands[band].height);
  }
  if (!hostkit::Spend(10 * uint64_t{width} * height)) return kHostOverBudget;
  const int32_t status = KernelAllocateBitmap(destination, recordSize, 1, width, height, 24, kOrderBgr,
                                              nullptr, kViewTopLeft, nullptr, 0);
  if (status != kHostOk) return status;
  try {
    std::vector<uint8_t> bgr(3 * static_cast<size_t>(width));
    for (uint32_t band = 0; band < 3; ++band) {
      if (!IsAllocated(&bands[band])) continue;
      for (uint32_t y = 0; y < bands[band].height; ++y) {
        hostkit::RowToBgr(bands[band], hostkit::PictureRow(bands[band], y), 0, bands[band].width,
                          bgr.data());
        uint8_t* out = hostkit::Row(*destination, y) + band;
        for (uint32_t x = 0; x < bands[band].width; ++x) out[3 * x] = bgr[3 * x + 1];
      }
    }
  } catch (const std::bad_alloc&) {
    KernelFreeBitmap(destination);
    return kHostNoMemory;
  }
  return kHostOk;
}

int32_t Combine(const KernelBitmap& destination, uint32_t x, uint32_t y, uint32_t width, uint32_t height,
                const KernelBitmap& source, uint32_t sourceX, uint32_t sourceY) {
  if (x >= destination.width || y >= destination.height || sourceX >= source.width ||
      sourceY >= source.height) {
    return kHostOk;
  }
  width = std::min({width, destination.width - x, source.width - sourceX});
  height = std::min({height, destination.height - y, source.height - sourceY});
  const bool convert = destination.bitsPerPixel != source.bitsPerPixel;
  // Most pixels are the first of their page, which the system has yet to give.
  const uint64_t pixelCost = convert ? 8 : 1 + destination.bitsPerPixel * 13 / 8;
  if (!hostkit::Spend(uint64_t{width} * height * pixelCost)) return kHostOverBudget;
  std::vector<uint8_t> bgr(convert ? 3 * static_cast<size_t>(width) : 0);
  hostkit::NearestColour nearest(destination);
  for (uint32_t row = 0; row < height; ++row) {
    const uint8_t* in = hostkit::PictureRow(source, sourceY + row);
    uint8_t* out = hostkit::PictureRow(destination, y + row);
    if (convert) {
      hostkit::RowToBgr(source, in, sourceX, width, bgr.data());
      hostkit::BgrToRow(destination, nearest, bgr.data(), x, width, out);
    } else {
      hostkit::CopyPixels(destination.bitsPerPixel, in, sourceX, out, x, width);
    }
  }
  return kHostOk;
}

template <class Work>
int32_t Guarded(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}

}  // namespace

int32_t ORB_CALL ColourHistogram(KernelBitmap* bitmap, uint32_t* counters, uint32_t count, uint32_t) {
  if (!IsAllocated(bitmap) || counters == nullptr || count == 0) return kHostInvalid;
  return Guarded([&] { return Histogram(*bitmap, counters, count); });
}

int32_t ORB_CALL ColourAdjust(KernelBitmap* bitmap, int32_t thousandths) {
  if (!IsAllocated(bitmap)) return kHostInvalid;
  return Guarded([&] { return Adjust(*bitmap, thousandths * 255 / 1000); });
}

int32_t ORB_CALL ColourMerge(KernelBitmap* destination, const KernelBitmap* bands, uint32_t recordSize,
                             uint32_t flags) {
  if (destination == nullptr || bands == nullptr || flags != 0) return kHostInvalid;
  return Merge(destination, bands, recordSize);
}

int32_t ORB_CALL ImageEffectsCombine(KernelBitmap* destination, uint32_t x, uint32_t y, uint32_t width,
                                     uint32_t height, KernelBitmap* source, uint32_t sourceX,
                                     uint32_t sourceY, uint32_t operation) {
  if (!IsAllocated(destination) || !IsAllocated(source)) return kHostInvalid;
  if (operation != kCombineCopy) return kHostUnsupported;
  return Guarded([&] { return Combine(*destination, x, y, width, height, *source, sourceX, sourceY); });
}
