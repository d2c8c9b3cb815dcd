// Rows of one bitmap as colour, by the shortest way that its depth, order and palette allow.
#pragma once

#include <vector>

#include "hostkit/kernel/internal.h"

namespace hostkit {

/// Turns rows of a bitmap into blue, green, red triples: RowToBgr, with the way chosen once and tables
/// made where the pixels to read are worth it. The bitmap and its palette stay as they are meanwhile.
class RowReader {
 public:
  /// `pixels` is about how many will be read. Throws std::bad_alloc.
  RowReader(const KernelBitmap& bitmap, uint64_t pixels);
  /// Reads `count` pixels of `row` from pixel `first` on.
  void Read(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const {
    (this->*way_)(row, first, count, bgr);
  }

 private:
  using Way = void (RowReader::*)(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const;
  Way ChooseWay(uint64_t pixels) const;
  void MakeTable();

  void AnyWay(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const;
  void Copied(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const;
  void Swapped(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const;
  void OfGreyRamp(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const;
  void OfPalette(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const;
  void OfBits(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const;
  void OfTwelveBits(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const;
  void OfWords(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const;

  const KernelBitmap& bitmap_;
  Way way_;
  std::vector<uint32_t> entries_;     // of an 8-bit palette: blue, green, red and a byte to spare
  std::vector<uint8_t> eightPixels_;  // what each byte of eight 1-bit pixels shows, 24 bytes each
};

}  // namespace hostkit
