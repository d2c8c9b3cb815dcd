// What differs between the pictures of two files.
#pragma once

#include "core/edit/pieces.h"
#include "core/view/view.h"

namespace core {

/// What two pictures by the published standard have that differs.
struct PixelDifference {
  SampleFault a, b;  ///< of drawing; the rest holds where both are drawn
  uint32_t widthA = 0, heightA = 0, widthB = 0, heightB = 0;
  uint64_t count = 0;                                 ///< of pixels, where the sizes are the same
  int largest = 0;                                    ///< difference of a sample of 8 bits
  uint32_t left = 0, top = 0, right = 0, bottom = 0;  ///< the box around them, its ends included

  bool BothDraw() const { return !a.Met() && !b.Met(); }
  bool SameSize() const { return widthA == widthB && heightA == heightB; }
  bool Differs() const { return a.outcome != b.outcome || (BothDraw() && (!SameSize() || count != 0)); }
};

/// Draws both pictures and compares them. `scratch` then holds a row of differences behind the other,
/// three bytes a pixel. Throws ReadError and WriteError.
PixelDifference ComparePixels(const Survey& a, const Survey& b, ScratchFile& scratch);
/// The sizes of both pictures, for files that are known to be the same.
PixelDifference ComparePictureSizes(const Survey& a, const Survey& b);

}  // namespace core
