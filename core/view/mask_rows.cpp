#include "core/view/mask_rows.h"

#include <algorithm>
#include <cmath>

#include "core/view/band_tones.h"

namespace core {

MaskRows::MaskRows(const SurveyedPart& image, const SampleImage& form, const ShownBands& shown)
    : mask_(image.mask), blocks_(image), form_(form), shown_(shown) {
  misses_ = image.IsMasked() &&
            std::find(mask_.blocks.begin(), mask_.blocks.end(), kNoRecord) != mask_.blocks.end();
  pads_ = image.IsMasked() && mask_.padBits != 0 && form.noData.has_value();
  isReal_ = form.kind == SampleKind::Real || form.kind == SampleKind::Complex;
}

void MaskRows::Look(uint64_t y, uint64_t column, const uint8_t* samples,
                    std::vector<uint8_t>& isShown) const {
  std::fill(isShown.begin(), isShown.end(), uint8_t{1});
  if (misses_) {
    const auto width = static_cast<uint64_t>(blocks_.width);
    for (uint64_t x = 0; x < isShown.size();) {
      const uint64_t end =
          std::min<uint64_t>(isShown.size(), ((column + x) / width + 1) * width - column);
      if (IsMissing(y, column + x))
        std::fill(isShown.begin() + static_cast<ptrdiff_t>(x),
                  isShown.begin() + static_cast<ptrdiff_t>(end), uint8_t{0});
      x = end;
    }
  }
  if (!pads_ && !isReal_) return;
  // Of bytes the first one tells for most pixels that they are no pad pixels.
  const bool isByte = form_.sampleBytes == 1 && form_.bits == 8 && !isReal_;
  const auto pad = static_cast<uint8_t>(form_.noData.value_or(0));
  const size_t step = form_.PixelBytes();
  for (size_t x = 0; x < isShown.size(); ++x, samples += step) {
    if (isByte && *samples != pad) continue;
    if (isShown[x] != 0 && IsEmpty(samples, y, column + x)) isShown[x] = 0;
  }
}

uint64_t MaskRows::BlockAt(uint64_t y, uint64_t x) const {
  return y / static_cast<uint64_t>(blocks_.height) * static_cast<uint64_t>(blocks_.across) +
         x / static_cast<uint64_t>(blocks_.width);
}

uint32_t MaskRows::Record(const std::vector<uint32_t>& records, uint64_t block, uint32_t band) const {
  const uint64_t number =
      block + (blocks_.sequential ? uint64_t{band} * static_cast<uint64_t>(blocks_.Count()) : 0);
  return number < records.size() ? records[static_cast<size_t>(number)] : kNoRecord;
}

// Of IMODE S every shown band has to be missing.
bool MaskRows::IsMissing(uint64_t y, uint64_t x) const {
  const uint64_t block = BlockAt(y, x);
  return std::all_of(shown_.bands.begin(), shown_.bands.end(),
                     [&](uint32_t band) { return Record(mask_.blocks, block, band) == kNoRecord; });
}

// Pad pixels in all shown bands, and what is no number.
bool MaskRows::IsEmpty(const uint8_t* pixel, uint64_t y, uint64_t x) const {
  for (size_t i = 0; i < shown_.bands.size(); ++i, pixel += form_.sampleBytes) {
    const bool isPad =
        pads_ && BitsOf(form_, pixel) == *form_.noData &&
        (mask_.pads.empty() || Record(mask_.pads, BlockAt(y, x), shown_.bands[i]) != kNoRecord);
    if (!isPad && !(isReal_ && std::isnan(ValueOf(form_, pixel)))) return false;
  }
  return true;
}

}  // namespace core
