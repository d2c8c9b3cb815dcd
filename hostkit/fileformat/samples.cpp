// Rows of decoded samples of any precision to bitmaps.
#include <algorithm>

#include "hostkit/fileformat/codec.h"
#include "media/shuffle.h"

namespace hostkit {
namespace {

uint32_t SampleAt(const uint8_t* samples, uint32_t sampleBytes, size_t index) {
  if (sampleBytes == 1) return samples[index];
  uint16_t value;
  std::memcpy(&value, samples + 2 * index, 2);
  return value;
}

// A sample stretched from its precision to `bits`.
uint32_t Stretch(uint32_t value, uint32_t precision, uint32_t bits) {
  const uint32_t from = (1u << precision) - 1, to = (1u << bits) - 1;
  return from == to ? value : static_cast<uint32_t>(uint64_t{std::min(value, from)} * to / from);
}

void PutGreyRow(const media::RowForm& form, const uint8_t* samples, uint8_t* row) {
  if (form.precision == 8) {
    std::memcpy(row, samples, form.width);
    return;
  }
  const uint32_t bits = 8 * form.SampleBytes();
  for (uint32_t x = 0; x < form.width; ++x) {
    const uint32_t value = Stretch(SampleAt(samples, form.SampleBytes(), x), form.precision, bits);
    if (bits == 8) {
      row[x] = static_cast<uint8_t>(value);
    } else {
      const auto word = static_cast<uint16_t>(value);
      std::memcpy(row + 2 * size_t{x}, &word, 2);
    }
  }
}

void PutColourRow(const media::RowForm& form, const uint8_t* samples, const uint32_t (&shown)[3],
                  bool isYcc, uint8_t* row) {
  size_t first = 0;
  for (uint32_t x = 0; x < form.width; ++x, first += form.components, row += 3) {
    for (int c = 0; c < 3; ++c)
      row[c] = static_cast<uint8_t>(
          Stretch(SampleAt(samples, form.SampleBytes(), first + shown[c]), form.precision, 8));
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

int32_t AllocateForSamples(const media::RowForm& form, KernelBitmap& bitmap) {
  const bool grey = form.components == 1;
  const uint32_t depth = !grey ? 24 : form.precision <= 8 ? 8 : 16;
  const KernelColourOrder order = !grey ? kOrderBgr : depth == 8 ? kOrderRgb : kOrderGrey;
  return KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, form.width, form.height, depth, order,
                              nullptr, kViewTopLeft, nullptr, 0);
}

void PutSamples(const media::RowForm& form, const uint8_t* samples, const HostLoadOptions& options,
                bool isYcc, KernelBitmap& bitmap, uint32_t y) {
  uint8_t* row = Row(bitmap, y);
  if (form.components == 1) return PutGreyRow(form, samples, row);
  const bool plain =
      form.components == 3 && form.precision == 8 && !isYcc && (options.flags & kLoadSelectedBands) == 0;
  if (plain) return media::SwapEnds(samples, form.width, row);
  const uint32_t shown[3] = {ShownComponent(options, 0, form.components),
                             ShownComponent(options, 1, form.components),
                             ShownComponent(options, 2, form.components)};
  PutColourRow(form, samples, shown, isYcc, row);
}

}  // namespace hostkit
