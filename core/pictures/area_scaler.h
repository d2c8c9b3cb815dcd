// Pictures made smaller to any size.
#pragma once

#include <cstdint>
#include <vector>

namespace core {

/// Means of the areas that the pixels of a smaller picture have in a larger one, fractions of pixels
/// counted.
class AreaScaler {
 public:
  /// A side of the smaller picture is at most as long as that of the larger one.
  AreaScaler(uint32_t width, uint32_t height, uint32_t smallWidth, uint32_t smallHeight);
  /// Takes a row of pixels of three bytes; returns the row that it completes, until the next call, or
  /// null.
  const uint8_t* Take(const uint8_t* pixels);

 private:
  void SumColumns(const uint8_t* pixels);
  void Finish();

  uint64_t width_, height_, smallWidth_, smallHeight_;
  uint64_t missing_;  // of the height of the row that is summed, in parts of a row of the larger picture
  std::vector<uint64_t> columns_;  // sums over a row
  std::vector<double> sums_;       // over all rows that belong to the next one
  std::vector<uint8_t> row_;
};

}  // namespace core
