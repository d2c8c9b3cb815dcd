// What writes a picture.
#pragma once

#include <cstdint>

namespace core {

/// Writes 24-bit RGB rows, top row first, into an open file; TIFF goes back in it.
class PictureWriter {
 public:
  virtual ~PictureWriter() = default;
  /// Puts rows that stand one behind the other. False when the file does not take them; nothing further
  /// is written.
  virtual bool PutRows(const uint8_t* rgb, uint32_t rows) = 0;
  bool PutRow(const uint8_t* rgb) { return PutRows(rgb, 1); }
  /// False when the picture is incomplete.
  virtual bool Finish() = 0;
};

}  // namespace core
