#include "core/pictures/area_scaler.h"

#include <algorithm>
#include <cmath>

namespace core {

// A pixel of the larger picture is as many units wide as the smaller one has columns, and one of the
// smaller picture as many as the larger one has: all shares are whole numbers.
AreaScaler::AreaScaler(uint32_t width, uint32_t height, uint32_t smallWidth, uint32_t smallHeight)
    : width_(width),
      height_(height),
      smallWidth_(smallWidth),
      smallHeight_(smallHeight),
      missing_(height),
      columns_(size_t{3} * smallWidth),
      sums_(columns_.size()),
      row_(columns_.size()) {}

void AreaScaler::SumColumns(const uint8_t* pixels) {
  std::fill(columns_.begin(), columns_.end(), uint64_t{0});
  uint64_t* sum = columns_.data();
  uint64_t missing = width_;
  for (uint64_t x = 0; x < width_; ++x, pixels += 3) {
    uint64_t share = smallWidth_;
    while (share != 0) {
      const uint64_t taken = std::min(share, missing);
      for (size_t c = 0; c < 3; ++c) sum[c] += pixels[c] * taken;
      share -= taken;
      missing -= taken;
      if (missing != 0) continue;
      missing = width_;
      sum += 3;
    }
  }
}

void AreaScaler::Finish() {
  const double area = static_cast<double>(width_) * static_cast<double>(height_);
  for (size_t i = 0; i < sums_.size(); ++i) {
    row_[i] = static_cast<uint8_t>(std::lround(sums_[i] / area));
    sums_[i] = 0;
  }
}

const uint8_t* AreaScaler::Take(const uint8_t* pixels) {
  SumColumns(pixels);
  const uint64_t taken = std::min(smallHeight_, missing_);
  for (size_t i = 0; i < sums_.size(); ++i) sums_[i] += static_cast<double>(columns_[i] * taken);
  missing_ -= taken;
  if (missing_ != 0) return nullptr;
  Finish();
  const uint64_t rest = smallHeight_ - taken;
  for (size_t i = 0; rest != 0 && i < sums_.size(); ++i)
    sums_[i] = static_cast<double>(columns_[i] * rest);
  missing_ = height_ - rest;
  return row_.data();
}

}  // namespace core
