// Facsimile data (ITU-T T.4), decoded by itself.
#pragma once

#include <memory>

#include "media/codecs/source.h"

namespace media {

struct FacsimileForm {
  uint32_t width, height;
  bool twoDimensional;
};
/// Facsimile that is decoded row by row, from the first one down.
class FacsimileRows {
 public:
  /// The data, which stays readable as long as this lasts, is read when the first row is taken.
  /// Unsupported for sizes beyond what the library takes; BadData for what it does not take. Throws
  /// std::bad_alloc.
  static Outcome Open(const Source& data, const FacsimileForm& form,
                      std::unique_ptr<FacsimileRows>& rows);
  ~FacsimileRows();
  FacsimileRows(const FacsimileRows&) = delete;
  FacsimileRows& operator=(const FacsimileRows&) = delete;

  /// The number of the next row.
  uint32_t Position() const { return next_; }
  /// Takes the next row, which is there until the next call: 8 pixels a byte from the highest bit on, 1
  /// for white. False where it does not decode, and at the end.
  bool Next(std::span<const uint8_t>& row);

 private:
  struct File;
  FacsimileRows(std::unique_ptr<File> file, uint32_t height);

  std::unique_ptr<File> file_;
  uint32_t height_, next_ = 0;
  bool isBroken_ = false;
};

/// Gives the rows that decode: 8 pixels a byte from the highest bit on, 1 for white. Those behind the
/// first that does not decode are not there; BadData where not a single one is. Unsupported for sizes
/// beyond what the library takes. Throws std::bad_alloc.
Outcome DecodeFacsimile(const Source& data, const FacsimileForm& form,
                        const std::function<Outcome(uint32_t y, std::span<const uint8_t> row)>& take);

}  // namespace media
