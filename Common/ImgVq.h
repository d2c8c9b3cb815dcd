// Vector-quantised image data (MIL-STD-188-199, 5.2): its headers, which the writer needs too, and its
// reader.
#pragma once

#include "Common/ImgPixel.h"

/// What decoding takes of the header at the start of the data; 21 bytes, big-endian.
struct VqHeader {
  static constexpr uint32_t kBytes = 21;

  uint32_t codeRows;  ///< image rows of codes in a block
  uint32_t codesPerRow;
  uint8_t codeBits;
  uint16_t lookupRecordCount;  ///< one lookup offset record per table

  /// Reads the header at the file's position. -7.
  Status Read(int32_t file);
};

/// What decoding takes of a lookup offset record; 14 bytes, big-endian.
struct VqLookupRecord {
  static constexpr uint32_t kBytes = 14;

  uint32_t recordCount;

  /// Reads the record at the file's position. -7.
  Status Read(int32_t file);
};

/// Bytes of one codebook value: 1 for 8-bit bitmaps, 2 for 12 and 16 bits, else 3.
constexpr uint32_t VqBytesPerPixel(uint32_t bitsPerPixel) {
  return bitsPerPixel == 8 ? 1 : bitsPerPixel == 12 || bitsPerPixel == 16 ? 2 : 3;
}

/// The part of a vector-quantised image's data that means something: from the header behind the mask
/// table to the last code, the codes of `mask`'s absent blocks left out. Offsets count from the data's
/// start.
struct VqDataExtent {
  int64_t start;
  uint64_t bytes;
};
/// 1, -1, -7 (also for data that the segment does not hold) or -9.
Status FindVqDataExtent(const ImageSource& source, VqDataExtent& extent);

/// Goes to the first byte behind the mask table that "M4" data starts with; -7.
Status SeekPastMaskTable(const ImageSource& source);

/// Vector quantisation ("C4", "M4").
Status ReadVectorQuantisedImage(KernelBitmap& segment, const ImageSource& source);
