// From samples to what a bitmap holds: band selection and sample conversion.
#pragma once

#include "Common/NitfFile.h"
#include "host/fileformat.h"

/// The data of one image segment while it is read.
struct ImageSource {
  NitfFile& document;
  const ImageSubheader& header;
  BandSelection& rememberedBands;  ///< of the image's last selection with equal bands
  uint32_t index;
  HostLoadRecord* record;     ///< of a running fltLoad, or null
  uint32_t length;            ///< LI
  int64_t dataStart;          ///< position of the segment's data in the file
  mutable bool blank = true;  ///< no pixel has reached the segment bitmap yet

  /// The source of an image segment; the index must be below the image count.
  static ImageSource Of(NitfFile& document, uint32_t index, HostLoadRecord* record);
  /// Reads `bytes` from an offset of the data; -7.
  Status ReadAt(int64_t offset, void* to, uint32_t bytes) const;
  /// -7 unless the file has `bytes` behind an offset of the data.
  Status Require(int64_t offset, CheckedSize bytes) const;
  /// Whether block n is stored and its record lies within the data.
  bool IsStored(uint64_t n) const {
    return header.mask.HasBlock(n) && header.mask.BlockRecord(n) <= length;
  }
};

/// Chooses the bands shown as red, green and blue by their representations, starting from `initial`. A
/// selection with equal indexes is remembered for images without representations.
BandSelection SelectBands(const ImageSubheader& header, BandSelection& remembered, BandSelection initial);

/// Smallest and largest 32-bit sample; both -1 before any was seen.
struct SampleRange {
  int32_t low = -1;
  int32_t high = -1;
};

/// Whether ConvertSamples scales samples of these depths by a range.
constexpr bool ScalesByRange(uint32_t nbpp, uint32_t abpp) {
  return nbpp != abpp && nbpp > 16 && nbpp <= 32;
}
/// Converts a row in place. 32-bit samples become bytes, scaled to the range (without one: to the values
/// of `abpp` bits); 9 to 16 significant bits are stretched to `nbpp` in host order; 12-bit pairs are
/// repacked; 16-bit samples of 16 significant bits get host order.
void ConvertSamples(std::span<uint8_t> row, uint32_t nbpp, uint32_t abpp, SampleRange range);

/// Finds the range of the big-endian 32-bit samples of all of the data. 1, -1 or -7.
Status FindSampleRange(const ImageSource& source, SampleRange& range);
