// Pictures made smaller.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace core {

/// Averages squares of N x N pixels; squares cut by an edge average what there is.
class BoxScaler {
 public:
  BoxScaler(uint32_t width, uint32_t height, uint32_t factor);
  uint32_t Width() const { return (width_ + factor_ - 1) / factor_; }
  uint32_t Height() const { return (height_ + factor_ - 1) / factor_; }
  /// Takes a row of pixels of three bytes; returns the finished row, in the same order of colours, until
  /// the next call, or null while squares are not complete.
  const uint8_t* Take(const uint8_t* pixels);

 private:
  static constexpr uint32_t kMostShort = 64;  // the factor up to which sums stay short

  template <class Sum>
  void Add(const uint8_t* pixels, std::vector<Sum>& sums);
  template <class Total, class Sum>
  void Average(std::vector<Sum>& sums);

  uint32_t width_, height_, factor_;
  uint32_t rowsTaken_ = 0, rowsHeld_ = 0;
  std::vector<uint16_t> shortSums_;  // of the rows held, three a column
  std::vector<uint32_t> longSums_;
  std::vector<uint8_t> row_;
};

}  // namespace core
