// Histogram, brightness, band merging and block combining.
#include <algorithm>
#include <new>
#include <vector>

#include "host/display.h"
#include "hostkit/kernel/internal.h"
#include "hostkit/kernel/pixels_rows.h"
#include "media/shuffle.h"
#include "media/work.h"

namespace {

using hostkit::IsAllocated;

int32_t Histogram(const KernelBitmap& bitmap, uint32_t* counters, uint32_t count) {
  if (!media::Spend(8 * uint64_t{bitmap.width} * bitmap.height)) return kHostOverBudget;
  std::vector<uint8_t> bgr(3 * static_cast<size_t>(bitmap.width));
  hostkit::RowReader reader(bitmap, hostkit::PixelCount(bitmap));
  for (uint32_t row = 0; row < bitmap.height; ++row) {
    reader.Read(hostkit::Row(bitmap, row), 0, bitmap.width, bgr.data());
    for (size_t i = 0; i < bgr.size(); i += 3) {
      const uint32_t luminance = hostkit::Luminance(&bgr[i]);
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
  if (!media::Spend(8 * uint64_t{bitmap.width} * bitmap.height)) return kHostOverBudget;
  std::vector<uint8_t> bgr(3 * static_cast<size_t>(bitmap.width));
  hostkit::NearestColour nearest(bitmap);
  hostkit::RowReader reader(bitmap, hostkit::PixelCount(bitmap));
  for (uint32_t row = 0; row < bitmap.height; ++row) {
    reader.Read(hostkit::Row(bitmap, row), 0, bitmap.width, bgr.data());
    for (uint8_t& value : bgr) value = Brighter(value, shift);
    hostkit::BgrToRow(bitmap, nearest, bgr.data(), 0, bitmap.width, hostkit::Row(bitmap, row));
  }
  return kHostOk;
}

// Rows of a band's grey values; zeros for a band that is not there, and beyond its edges.
class GreyRows {
 public:
  GreyRows(const KernelBitmap& band, uint32_t width)
      : band_(band),
        values_(width),
        bgr_(IsAllocated(&band) && !HasRamp() ? 3 * size_t{band.width} : 0),
        reader_(band, IsAllocated(&band) ? hostkit::PixelCount(band) : 0) {}
  const uint8_t* Row(uint32_t y) {
    if (!IsAllocated(&band_) || y >= band_.height) {
      std::fill(values_.begin(), values_.end(), uint8_t{0});
      return values_.data();
    }
    const uint8_t* row = hostkit::PictureRow(band_, y);
    if (bgr_.empty()) {
      std::copy_n(row, band_.width, values_.data());
      return values_.data();
    }
    reader_.Read(row, 0, band_.width, bgr_.data());
    for (uint32_t x = 0; x < band_.width; ++x) values_[x] = bgr_[3 * size_t{x} + 1];
    return values_.data();
  }

 private:
  // Whether the pixels are the values themselves.
  bool HasRamp() const {
    if (band_.bitsPerPixel != 8 || band_.colourCount != 256) return false;
    const KernelColour* palette = hostkit::Palette(band_);
    for (uint32_t i = 0; i < 256; ++i) {
      if (palette[i].green != i) return false;
    }
    return true;
  }

  const KernelBitmap& band_;
  std::vector<uint8_t> values_, bgr_;
  hostkit::RowReader reader_;
};

int32_t Merge(KernelBitmap* destination, const KernelBitmap* bands, uint32_t recordSize) {
  uint32_t width = 0, height = 0;
  for (int band = 0; band < 3; ++band) {
    if (!IsAllocated(&bands[band])) continue;
    width = std::max(width, bands[band].width);
    height = std::max(height, bands[band].height);
  }
  if (!media::Spend(10 * uint64_t{width} * height)) return kHostOverBudget;
  const int32_t status = KernelAllocateBitmap(destination, recordSize, 1, width, height, 24, kOrderBgr,
                                              nullptr, kViewTopLeft, nullptr, 0);
  if (status != kHostOk) return status;
  try {
    GreyRows blue(bands[0], width), green(bands[1], width), red(bands[2], width);
    for (uint32_t y = 0; y < height; ++y) {
      media::Interleave(blue.Row(y), green.Row(y), red.Row(y), width, hostkit::Row(*destination, y));
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
  if (!media::Spend(uint64_t{width} * height * pixelCost)) return kHostOverBudget;
  std::vector<uint8_t> bgr(convert ? 3 * static_cast<size_t>(width) : 0);
  hostkit::NearestColour nearest(destination);
  hostkit::RowReader reader(source, convert ? uint64_t{width} * height : 0);
  for (uint32_t row = 0; row < height; ++row) {
    const uint8_t* in = hostkit::PictureRow(source, sourceY + row);
    uint8_t* out = hostkit::PictureRow(destination, y + row);
    if (convert) {
      reader.Read(in, sourceX, width, bgr.data());
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
