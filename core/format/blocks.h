// The blocks of an image as its subheader gives them.
#pragma once

#include "core/format/part.h"

namespace core {

struct Blocks {
  explicit Blocks(const SurveyedPart& image);

  int64_t across = 0, down = 0;   ///< NBPR, NBPC
  int64_t width = 0, height = 0;  ///< of a block, in pixels
  int64_t bands = 0, bits = 0;    ///< NBPP
  bool sequential = false;        ///< IMODE S
  bool byBand = false;            ///< IMODE B

  /// Whether all of it is told and small enough to be reckoned with.
  bool Known() const;
  /// Whether they cover the image and none lies outside it.
  bool Cover(const SurveyedPart& image) const;
  int64_t Count() const { return across * down; }
  /// Samples from a band of a block to the next one of IMODE B: bands of single bits begin on a byte.
  uint64_t PlaneSamples() const;
  /// Bytes of a block: of one band where bands are sequential, else of all.
  uint64_t BlockBytes() const;
  /// Bytes of all blocks.
  uint64_t Bytes() const {
    return BlockBytes() * static_cast<uint64_t>(Count() * (sequential ? bands : 1));
  }
};

}  // namespace core
