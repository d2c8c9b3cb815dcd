// Decoded samples of any precision to bitmaps.
#include <algorithm>

#include "hostkit/fileformat/codec.h"

namespace hostkit {
namespace {

uint32_t SampleAt(const DecodedSamples& samples, size_t index) {
  if (samples.precision <= 8) return samples.bytes[index];
  uint16_t value;
  std::memcpy(&value, &samples.bytes[2 * index], 2);
  return value;
}

// A sample stretched from its precision to `bits`.
uint32_t Stretch(uint32_t value, uint32_t precision, uint32_t bits) {
  const uint32_t from = (1u << precision) - 1, to = (1u << bits) - 1;
  return from == to ? value : static_cast<uint32_t>(uint64_t{std::min(value, from)} * to / from);
}

void PutGreyRow(const DecodedSamples& samples, size_t first, uint32_t width, uint8_t* row) {
  const uint32_t bits = samples.precision <= 8 ? 8 : 16;
  for (uint32_t x = 0; x < width; ++x) {
    const uint32_t value = Stretch(SampleAt(samples, first + x), samples.precision, bits);
    if (bits == 8) {
      row[x] = static_cast<uint8_t>(value);
    } else {
      const auto word = static_cast<uint16_t>(value);
      std::memcpy(row + 2 * size_t{x}, &word, 2);
    }
  }
}

void PutColourRow(const DecodedSamples& samples, size_t first, uint32_t width, const uint32_t (&shown)[3],
                  bool isYcc, uint8_t* row) {
  for (uint32_t x = 0; x < width; ++x, first += samples.components, row += 3) {
    uint8_t bgr[3];  // the samples may be those of the row
    for (int c = 0; c < 3; ++c) {
      bgr[c] = static_cast<uint8_t>(Stretch(SampleAt(samples, first + shown[c]), samples.precision, 8));
    }
    std::memcpy(row, bgr, sizeof bgr);
    if (isYcc) YccToBgr(row);
  }
}

uint8_t Clamp(double value) { return static_cast<uint8_t>(std::clamp(value + 0.5, 0.0, 255.0)); }

}  // namespace

uint32_t ShownComponent(const HostLoadOptions& options, uint32_t colour, uint32_t count) {
  uint32_t component = 2 - colour;
  if ((options.flags & kLoadSelectedBands) != 0) {
    const int32_t band = options.bands[2 - colour];
    component = band < 0 ? 0 : static_cast<uint32_t>(band);
  }
  return std::min(component, count - 1);
}

void YccToBgr(uint8_t* bgr) {
  const double y = bgr[2], cb = bgr[1] - 128.0, cr = bgr[0] - 128.0;
  bgr[2] = Clamp(y + 1.402 * cr);
  bgr[1] = Clamp(y - 0.344136 * cb - 0.714136 * cr);
  bgr[0] = Clamp(y + 1.772 * cb);
}

int32_t AllocateForSamples(const DecodedSamples& samples, KernelBitmap& bitmap) {
  const bool grey = samples.components == 1;
  const uint32_t depth = !grey ? 24 : samples.precision <= 8 ? 8 : 16;
  const KernelColourOrder order = !grey ? kOrderBgr : depth == 8 ? kOrderRgb : kOrderGrey;
  return KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, Wanted(samples.width, bitmap.width),
                              Wanted(samples.height, bitmap.height), depth, order, nullptr, kViewTopLeft,
                              nullptr, 0);
}

void PutSamples(const DecodedSamples& samples, const HostLoadOptions& options, bool isYcc,
                KernelBitmap& bitmap) {
  const uint32_t shown[3] = {ShownComponent(options, 0, samples.components),
                             ShownComponent(options, 1, samples.components),
                             ShownComponent(options, 2, samples.components)};
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    const size_t first = size_t{y} * samples.width * samples.components;
    if (samples.components == 1) {
      PutGreyRow(samples, first, bitmap.width, Row(bitmap, y));
    } else {
      PutColourRow(samples, first, bitmap.width, shown, isYcc, Row(bitmap, y));
    }
  }
}

}  // namespace hostkit
