// Headers of vector-quantised image data (MIL-STD-188-199, 5.2), shared by the decoder and the writer.
#pragma once

#include "Common/ImgPixel.h"

/// The header at the start of the data; 21 bytes, big-endian.
struct VqHeader {
  static constexpr uint32_t kBytes = 21;

  uint32_t codeRows;  ///< image rows of codes in a block
  uint32_t codesPerRow;
  uint8_t codeBits;
  uint16_t algorithm;
  uint16_t lookupRecordCount;  ///< one lookup offset record per table
  uint16_t parameterRecordCount;
  uint32_t lookupTableOffset;
  uint16_t lookupRecordLength;

  /// Reads the header at the file's position; `raw` receives its bytes. -7.
  Status Read(int32_t file, uint8_t (&raw)[kBytes]);
};

/// A lookup offset record; 14 bytes, big-endian.
struct VqLookupRecord {
  static constexpr uint32_t kBytes = 14;

  uint16_t table;
  uint32_t recordCount;
  uint16_t valuesPerRecord;
  uint16_t valueBits;
  uint32_t tableOffset;

  Status Read(int32_t file, uint8_t (&raw)[kBytes]);
};

/// Goes to the first byte behind the mask table that "M4" data starts with.
void SeekPastMaskTable(const ImageSource& source);
