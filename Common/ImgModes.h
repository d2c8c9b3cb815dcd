// Readers of uncompressed blocked image data (MIL-STD-2500C, 5.4.3: IC "NC" and "NM").
#pragma once

#include <algorithm>

#include "Common/ImgPixel.h"

/// Position of a block's top-left pixel in the segment bitmap.
struct BlockPlace {
  uint32_t column, row;
};
/// Place of block n; blocks are numbered row by row.
inline BlockPlace PlaceOfBlock(const ImageSubheader& header, uint64_t n) {
  return {static_cast<uint32_t>(n % header.NBPR.value) * header.NPPBH.value,
          static_cast<uint32_t>(n / header.NBPR.value) * header.NPPBV.value};
}

/// Copies a block's pixels to their place in a segment bitmap, which is then no longer blank. The
/// image-effects library's status.
Status PlaceBlock(const ImageSource& source, KernelBitmap& segment, KernelBitmap& block,
                  BlockPlace place);
/// The same with the first `rows` rows of a bitmap.
Status PlaceRows(const ImageSource& source, KernelBitmap& segment, KernelBitmap& rowsOfBlock,
                 uint32_t rows, BlockPlace place);

/// Rows of a block of `bitsPerPixel` that are read at once: a large block is placed strip by strip.
uint32_t RowsOfStrip(const ImageSubheader& header, uint32_t bitsPerPixel);

/// A block of the segment, or a strip of it, while it is read.
class ScratchBlock {
 public:
  Status Allocate(const ImageSubheader& header, uint32_t rows, uint32_t bitsPerPixel,
                  KernelColourOrder order) {
    return bitmap_.Allocate(header.NPPBH.value, rows, bitsPerPixel, order, kViewTopLeft);
  }
  void Prepare() { (void)KernelPrepareScratchBitmap(&bitmap_.record); }
  KernelBitmap& Record() { return bitmap_.record; }
  uint32_t Rows() const { return bitmap_.record.height; }
  uint32_t BytesPerLine() const { return bitmap_.record.bytesPerLine; }
  uint32_t BytesPerPixel() const { return std::max(1u, bitmap_.record.bitsPerPixel / 8); }

 private:
  OwnedBitmap bitmap_;
};

/// Fills a segment bitmap from uncompressed data. 1, -1, -7, -9 (bi-level data runs out), or the status
/// of a kernel or image-effects operation; the blocks placed before a failure stay.
Status ReadUncompressedImage(KernelBitmap& segment, const ImageSource& source);

/// The reader of several bands of 9 to 16 bits, where the document's rules ask for it; 1, -1 or -7.
Status ReadDeepBands(KernelBitmap& segment, const ImageSource& source);

/// The reader of bi-level data (PVTYPE "B"), which ReadUncompressedImage calls.
Status ReadBiLevel(KernelBitmap& segment, const ImageSource& source);

/// Bytes that the readers need at the least; what a file that is too short is recognised by before any
/// memory is taken for its pixels.
CheckedSize LeastDataBytes(const ImageSubheader& header);

/// Depth of the bitmap that a segment is read into.
uint32_t SegmentBitsPerPixel(const ImageSubheader& header);
