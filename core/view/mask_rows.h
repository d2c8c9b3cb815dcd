// What a mask leaves out of an image.
#pragma once

#include "core/format/blocks.h"
#include "core/view/shown_bands.h"

namespace core {

/// Tells which pixels are not shown: those of blocks that are not stored, pad pixels (MIL-STD-2500C,
/// table A-3(A)), and what is no number.
class MaskRows {
 public:
  /// All three stay where they are.
  MaskRows(const SurveyedPart& image, const SampleImage& form, const ShownBands& shown);
  bool LeavesOut() const { return misses_ || pads_ || isReal_; }
  /// Notes which pixels of a row, whose samples from a column on are given, are shown.
  void Look(uint64_t y, uint64_t column, const uint8_t* samples, std::vector<uint8_t>& isShown) const;

 private:
  uint64_t BlockAt(uint64_t y, uint64_t x) const;
  uint32_t Record(const std::vector<uint32_t>& records, uint64_t block, uint32_t band) const;
  bool IsMissing(uint64_t y, uint64_t x) const;
  bool IsEmpty(const uint8_t* pixel, uint64_t y, uint64_t x) const;

  const SurveyedMask& mask_;
  Blocks blocks_;
  const SampleImage& form_;
  const ShownBands& shown_;
  bool misses_ = false, pads_ = false, isReal_ = false;
};

}  // namespace core
