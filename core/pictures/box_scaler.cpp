#include "core/pictures/box_scaler.h"

#include <algorithm>

namespace core {

BoxScaler::BoxScaler(uint32_t width, uint32_t height, uint32_t factor)
    : width_(width), height_(height), factor_(factor), row_(3 * size_t{Width()}) {
  if (factor > kMostShort) longSums_.resize(3 * size_t{width});
  if (factor > 1 && factor <= kMostShort) shortSums_.resize(3 * size_t{width});
}

const uint8_t* BoxScaler::Take(const uint8_t* pixels) {
  ++rowsTaken_;
  if (factor_ == 1) return pixels;
  // Rows are added up first, the columns of a square only once.
  const bool isLast = ++rowsHeld_ == factor_ || rowsTaken_ == height_;
  if (factor_ <= kMostShort) {
    Add(pixels, shortSums_);
    if (isLast) Average<uint32_t>(shortSums_);
  } else {
    Add(pixels, longSums_);
    if (isLast) Average<uint64_t>(longSums_);
  }
  if (!isLast) return nullptr;
  rowsHeld_ = 0;
  return row_.data();
}

template <class Sum>
void BoxScaler::Add(const uint8_t* pixels, std::vector<Sum>& sums) {
  for (size_t i = 0; i < sums.size(); ++i) sums[i] = static_cast<Sum>(sums[i] + pixels[i]);
}

template <class Total, class Sum>
void BoxScaler::Average(std::vector<Sum>& sums) {
  // Dividing is multiplying by a reciprocal, exactly so for totals of short sums.
  constexpr uint32_t kBits = 43;
  uint64_t pixels = 0, reciprocal = 0;
  const Sum* sum = sums.data();
  uint8_t* out = row_.data();
  for (uint32_t first = 0; first < width_; first += factor_, out += 3) {
    const uint32_t columns = std::min(factor_, width_ - first);
    Total totals[3] = {};
    for (uint32_t i = 0; i < columns; ++i, sum += 3) {
      for (size_t c = 0; c < 3; ++c) totals[c] += sum[c];
    }
    if (pixels != uint64_t{columns} * rowsHeld_) {
      pixels = uint64_t{columns} * rowsHeld_;
      reciprocal = ((uint64_t{1} << kBits) + pixels - 1) / pixels;
    }
    const auto average = [&](uint64_t total) {
      total += pixels / 2;
      return static_cast<uint8_t>(sizeof(Total) == 4 ? total * reciprocal >> kBits : total / pixels);
    };
    for (size_t c = 0; c < 3; ++c) out[c] = average(totals[c]);
  }
  std::fill(sums.begin(), sums.end(), Sum{0});
}

}  // namespace core
