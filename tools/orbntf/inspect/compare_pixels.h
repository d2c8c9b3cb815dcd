// What differs between the pictures of two files.
#pragma once

#include <cstdint>
#include <string>

namespace tool {

/// What two composites have that differs.
struct PixelDifference {
  int32_t statusA = 0, statusB = 0;  ///< of drawing; the rest holds where both are 1
  uint32_t widthA = 0, heightA = 0, widthB = 0, heightB = 0;
  uint64_t count = 0;                                 ///< of pixels, where the sizes are the same
  int largest = 0;                                    ///< difference of a sample of 8 bits
  uint32_t left = 0, top = 0, right = 0, bottom = 0;  ///< the box around them, its ends included

  bool BothDraw() const { return statusA == 1 && statusB == 1; }
  bool SameSize() const { return widthA == widthB && heightA == heightB; }
  bool Differs() const { return statusA != statusB || (BothDraw() && (!SameSize() || count != 0)); }
};

PixelDifference ComparePixels(const std::string& a, const std::string& b);

}  // namespace tool
