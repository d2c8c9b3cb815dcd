// Vector-quantised data and the picture that it stands for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/builder.h"

namespace test {

/// Blocks of vectors; one table of vector-height values for each column of a vector.
struct VqForm {
  uint32_t blockWidth = 16, blockHeight = 16;
  uint32_t codeRows = 4, codesPerRow = 4, tables = 4, entries = 16;
  int codeBits = 12;
  int bits = 8;         ///< of a sample: 8, 12 or 16
  int bands = 1;        ///< 1 or 3
  uint32_t codes = 16;  ///< that are used
  std::vector<bool> stored = {true};

  uint32_t VectorWidth() const { return blockWidth / codesPerRow; }
  uint32_t VectorHeight() const { return blockHeight / codeRows; }
  /// Rows of codes in a block: a cut row counts.
  uint32_t CodedRows() const {
    return codeRows == 0 ? 0 : (blockHeight + VectorHeight() - 1) / VectorHeight();
  }
  uint32_t ValueBytes() const { return bands == 3 ? 3 : bits == 8 ? 1 : 2; }
};
/// The n-th code of the data.
uint32_t VqCode(uint32_t n);
std::string VqData(const VqForm& form);
ImageForm VqImage(const VqForm& form, const std::string& compression, int across, int down);
/// Bytes of a codebook entry, its tables' values side by side.
std::string VqEntry(const VqForm& form, uint32_t entry);

}  // namespace test
