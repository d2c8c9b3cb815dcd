#include "Common/ImgBitmap.h"

#include "host/display.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImgBitmap";

KernelColourOrder SegmentColourOrder(const ImageSubheader& header, uint32_t bitsPerPixel) {
  if (bitsPerPixel == 1 || bitsPerPixel == 8) return kOrderRgb;
  return header.IsMono() ? kOrderGrey : kOrderBgr;
}

Status PutSegmentColours(KernelBitmap& bitmap, const ImageSubheader& header) {
  if (header.palette.size() != 0 && bitmap.bitsPerPixel <= 16) {
    return PutDisplayPalette(bitmap, header);
  }
  const uint32_t nbpp = header.NBPP.value;
  if (nbpp <= 8) return PutDefaultColours(bitmap, nbpp);
  return nbpp == 32 || nbpp == 64 ? PutDefaultColours(bitmap, 8) : Status::Success;
}

}  // namespace

uint32_t RowsOfStrip(const ImageSubheader& header, uint32_t bitsPerPixel) {
  constexpr uint64_t kStripBytes = 256 << 10;  // stays in the processor's cache
  const uint64_t rowBytes = std::max<uint64_t>(1, uint64_t{header.NPPBH.value} * bitsPerPixel / 8);
  const auto rows = static_cast<uint32_t>(std::max<uint64_t>(1, kStripBytes / rowBytes));
  return std::min(rows, header.NPPBV.value);
}

uint32_t SegmentBitsPerPixel(const ImageSubheader& header) {
  const uint32_t bits = header.BandCount() > 1 ? header.NBPP.value * 3 : header.NBPP.value;
  return header.IsMono() && (bits == 32 || bits == 64) ? 8 : bits;
}

Status CreateSegmentBitmap(OwnedBitmap& bitmap, const ImageSubheader& header, uint32_t width,
                           uint32_t height) {
  if (Status s = bitmap.Allocate(width, height, SegmentBitsPerPixel(header), kOrderBgr, kViewTopLeft);
      !Ok(s)) {
    return s;
  }
  bitmap.record.colourOrder = SegmentColourOrder(header, bitmap.record.bitsPerPixel);
  return PutSegmentColours(bitmap.record, header);
}

Status PlaceBlock(const ImageSource& source, KernelBitmap& segment, KernelBitmap& block,
                  BlockPlace place) {
  return PlaceRows(source, segment, block, block.height, place);
}

Status PlaceRows(const ImageSource& source, KernelBitmap& segment, KernelBitmap& rowsOfBlock,
                 uint32_t rows, BlockPlace place) {
  source.blank = false;
  rowsOfBlock.colourOrder = segment.colourOrder;
  return FromHost(ImageEffectsCombine(&segment, place.column, place.row, rowsOfBlock.width, rows,
                                      &rowsOfBlock, 0, 0, kCombineCopy));
}

Status PutDefaultColours(KernelBitmap& bitmap, uint32_t bits) {
  constexpr uint32_t kEntries = 255;
  KernelColour* colours = KernelMakePaletteTable(bits, __LINE__, kSourceFile);
  if (colours == nullptr) return Status::OutOfMemory;
  const Status status = FromHost(KernelPutColours(&bitmap, 0, kEntries, colours));
  KernelFree(colours, __LINE__, kSourceFile);
  return bitmap.bitsPerPixel <= 8 ? status : Status::Success;  // others have nothing to put them in
}

Status PutDisplayPalette(KernelBitmap& bitmap, const ImageSubheader& header) {
  const auto entries = static_cast<uint32_t>(header.palette.size());
  const uint32_t count = std::min(header.bands.size() != 0 ? header.bands[0].NELUT.value : 0, entries);
  if (count == 0) return Status::Success;
  const OwnedPalette palette(KernelCreatePalette(header.palette.data(), count), ORB_HERE);
  if (palette.get() == nullptr) return Status::OutOfMemory;
  return FromHost(KernelSetPalette(&bitmap, palette.get()));
}
