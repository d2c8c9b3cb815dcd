// What differs between two files.
#pragma once

#include <optional>

#include "tools/orbntf/records/records.h"

namespace tool {

/// A field or a record that is not the same; a text that one file does not have is none.
struct TextDifference {
  std::string part;  ///< "file header", "image 0"
  std::string name;  ///< the mnemonic, or of a record its tag and which one of that tag it is
  std::optional<std::string> a, b;
};
/// Segments whose data is not the same; a length that one file does not have is none.
struct DataDifference {
  std::string part;
  std::optional<uint64_t> a, b;         ///< bytes of data
  std::optional<uint64_t> firstOffset;  ///< of the first byte that differs, in the data
};
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

struct Comparison {
  std::vector<TextDifference> fields, records;
  std::vector<DataDifference> segments;
  PixelDifference pixels;

  bool Differs() const {
    return !fields.empty() || !records.empty() || !segments.empty() || pixels.Differs();
  }
};
Comparison Compare(const Survey& a, const Survey& b, const RecordDefinitions& definitions);

}  // namespace tool
