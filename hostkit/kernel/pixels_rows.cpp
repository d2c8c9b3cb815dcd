#include "hostkit/kernel/pixels_rows.h"

#include <algorithm>

#include "media/shuffle.h"

namespace hostkit {
namespace {

constexpr uint64_t kWorthTable = 4096;  // pixels
constexpr uint32_t kPiece = 1024;       // pixels on the stack

bool IsGreyRamp(const KernelBitmap& bitmap) {
  const KernelColour* palette = Palette(bitmap);
  for (uint32_t i = 0; i < 256; ++i) {
    if (palette[i].blue != i || palette[i].green != i || palette[i].red != i) return false;
  }
  return true;
}

}  // namespace

RowReader::RowReader(const KernelBitmap& bitmap, uint64_t pixels)
    : bitmap_(bitmap), way_(ChooseWay(pixels)) {
  MakeTable();
}

RowReader::Way RowReader::ChooseWay(uint64_t pixels) const {
  const bool worthTable = pixels >= kWorthTable, bare = bitmap_.colourCount == 0;
  switch (bitmap_.bitsPerPixel) {
    case 24:
      return bitmap_.colourOrder == kOrderRgb ? &RowReader::Swapped : &RowReader::Copied;
    case 8:
      if (bitmap_.colourCount != 256 || !worthTable) return &RowReader::AnyWay;
      return IsGreyRamp(bitmap_) ? &RowReader::OfGreyRamp : &RowReader::OfPalette;
    case 1:
      return bitmap_.colourCount == 2 && worthTable ? &RowReader::OfBits : &RowReader::AnyWay;
    case 12:
      return bare ? &RowReader::OfTwelveBits : &RowReader::AnyWay;
    case 16:
      return bare ? &RowReader::OfWords : &RowReader::AnyWay;
    default:
      return &RowReader::AnyWay;
  }
}

void RowReader::MakeTable() {
  const KernelColour* palette = Palette(bitmap_);
  if (way_ == &RowReader::OfPalette) {
    entries_.resize(256);
    for (uint32_t i = 0; i < 256; ++i) std::memcpy(&entries_[i], &palette[i], 3);
  } else if (way_ == &RowReader::OfBits) {
    eightPixels_.resize(256 * 24);
    for (uint32_t i = 0; i < 256 * 8; ++i)
      std::memcpy(&eightPixels_[3 * size_t{i}], &palette[i / 8 >> (7 - i % 8) & 1], 3);
  }
}

void RowReader::AnyWay(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const {
  RowToBgr(bitmap_, row, first, count, bgr);
}

void RowReader::Copied(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const {
  std::memcpy(bgr, row + 3 * size_t{first}, 3 * size_t{count});
}

void RowReader::Swapped(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const {
  media::SwapEnds(row + 3 * size_t{first}, count, bgr);
}

void RowReader::OfGreyRamp(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const {
  media::TripleBytes(row + first, count, bgr);
}

void RowReader::OfPalette(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const {
  if (count == 0) return;
  const uint8_t* in = row + first;
  // The fourth byte is written over by the pixel behind.
  for (const uint8_t* last = in + count - 1; in < last; ++in, bgr += 3)
    std::memcpy(bgr, &entries_[*in], 4);
  std::memcpy(bgr, &entries_[*in], 3);
}

void RowReader::OfBits(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const {
  const uint32_t head = std::min(count, (8 - first % 8) % 8);
  RowToBgr(bitmap_, row, first, head, bgr);
  first += head, count -= head, bgr += 3 * size_t{head};
  for (const uint8_t* in = row + first / 8; count >= 8; ++in, first += 8, count -= 8, bgr += 24)
    std::memcpy(bgr, &eightPixels_[24 * size_t{*in}], 24);
  RowToBgr(bitmap_, row, first, count, bgr);
}

void RowReader::OfTwelveBits(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const {
  uint8_t high[kPiece];
  const uint32_t odd = std::min(count, first % 2);
  RowToBgr(bitmap_, row, first, odd, bgr);
  first += odd, count -= odd, bgr += 3 * size_t{odd};
  for (const uint8_t* in = row + 3 * size_t{first / 2}; count >= 2;) {
    const uint32_t some = std::min(count & ~1u, kPiece);
    for (uint32_t i = 0; i < some; i += 2, in += 3) {
      high[i] = static_cast<uint8_t>(in[0] >> 4 | in[1] << 4);
      high[i + 1] = in[2];
    }
    media::TripleBytes(high, some, bgr);
    first += some, count -= some, bgr += 3 * size_t{some};
  }
  RowToBgr(bitmap_, row, first, count, bgr);
}

void RowReader::OfWords(const uint8_t* row, uint32_t first, uint32_t count, uint8_t* bgr) const {
  uint8_t high[kPiece];
  for (const uint8_t* in = row + 2 * size_t{first}; count > 0;) {
    const uint32_t some = std::min(count, kPiece);
    media::HighBytes(in, some, high);
    media::TripleBytes(high, some, bgr);
    in += 2 * size_t{some}, count -= some, bgr += 3 * size_t{some};
  }
}

}  // namespace hostkit
