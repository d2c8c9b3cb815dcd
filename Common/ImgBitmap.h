// The bitmap that a segment is read into: its depth, its colours, and the blocks that are placed on it.
#pragma once

#include <algorithm>

#include "Common/ImgPixel.h"

/// Depth of the bitmap that a segment is read into.
uint32_t SegmentBitsPerPixel(const ImageSubheader& header);

/// Creates a bitmap of a size with the depth and the colours of a segment.
Status CreateSegmentBitmap(OwnedBitmap& bitmap, const ImageSubheader& header, uint32_t width,
                           uint32_t height);

/// Gives a bitmap the colours of depth `bits`, entries 0 to 254.
Status PutDefaultColours(KernelBitmap& bitmap, uint32_t bits);
/// Gives a bitmap the segment's display palette; -1.
Status PutDisplayPalette(KernelBitmap& bitmap, const ImageSubheader& header);

/// Position of a block's top-left pixel in the segment bitmap.
struct BlockPlace {
  uint32_t column, row;
};
/// Place of block n; blocks are numbered row by row.
inline BlockPlace PlaceOfBlock(const ImageSubheader& header, uint64_t n) {
  return {static_cast<uint32_t>(n % header.NBPR.value) * header.NPPBH.value,
          static_cast<uint32_t>(n / header.NBPR.value) * header.NPPBV.value};
}

/// Copies a block's pixels to their place in a segment bitmap, which is not blank from then on. The
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
