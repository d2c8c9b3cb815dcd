// Pixels of every depth to and from blue, green, red triples: the general way.
#include "hostkit/kernel/internal.h"

namespace hostkit {
namespace {

// Depths between 9 and 64 other than 16, 24 and 32 are packed least significant bit first.
uint32_t GetBits(const uint8_t* row, uint64_t bit, uint32_t count) {
  uint32_t value = 0;
  for (uint32_t i = 0; i < count; ++i, ++bit) value |= (row[bit / 8] >> (bit % 8) & 1u) << i;
  return value;
}

void PutBits(uint8_t* row, uint64_t bit, uint32_t count, uint32_t value) {
  for (uint32_t i = 0; i < count; ++i, ++bit) {
    const auto mask = static_cast<uint8_t>(1u << (bit % 8));
    row[bit / 8] = static_cast<uint8_t>((row[bit / 8] & ~mask) | ((value >> i & 1) != 0 ? mask : 0));
  }
}

uint8_t HighByte(uint32_t value, uint32_t bits) {
  return static_cast<uint8_t>(bits >= 8 ? value >> (bits - 8) : value << (8 - bits));
}
uint32_t FromHighByte(uint8_t value, uint32_t bits) {
  return bits >= 8 ? static_cast<uint32_t>(value) << (bits - 8) : value >> (8 - bits);
}

uint32_t GetIndex(const uint8_t* row, uint32_t depth, uint32_t x) {
  if (depth == 8) return row[x];
  uint32_t index = 0;
  for (uint64_t bit = static_cast<uint64_t>(x) * depth, end = bit + depth; bit < end; ++bit) {
    index = index << 1 | (row[bit / 8] >> (7 - bit % 8) & 1u);
  }
  return index;
}

// A sample of 9 to 16 bits.
uint32_t GetSample(const uint8_t* row, uint32_t depth, uint32_t x) {
  if (depth != 16) return GetBits(row, static_cast<uint64_t>(x) * depth, depth);
  uint16_t value;
  std::memcpy(&value, row + 2 * static_cast<size_t>(x), 2);
  return value;
}

void PutIndex(uint8_t* row, uint32_t depth, uint32_t x, uint32_t index) {
  if (depth == 8) {
    row[x] = static_cast<uint8_t>(index);
    return;
  }
  uint64_t bit = static_cast<uint64_t>(x) * depth;
  for (uint32_t i = depth; i-- > 0; ++bit) {
    const auto mask = static_cast<uint8_t>(0x80u >> (bit % 8));
    row[bit / 8] = static_cast<uint8_t>((row[bit / 8] & ~mask) | ((index >> i & 1) != 0 ? mask : 0));
  }
}

void BytesToBgr(const uint8_t* in, uint32_t step, bool rgb, uint32_t count, uint8_t* bgr) {
  if (step == 3 && !rgb) {
    std::memcpy(bgr, in, 3 * static_cast<size_t>(count));
    return;
  }
  const int blue = rgb ? 2 : 0;
  for (uint32_t i = 0; i < count; ++i, in += step, bgr += 3) {
    bgr[0] = in[blue];
    bgr[1] = in[1];
    bgr[2] = in[2 - blue];
  }
}

void BgrToBytes(const uint8_t* bgr, uint32_t step, bool rgb, uint32_t count, uint8_t* out) {
  if (step == 3 && !rgb) {
    std::memcpy(out, bgr, 3 * static_cast<size_t>(count));
    return;
  }
  const int blue = rgb ? 2 : 0;
  for (uint32_t i = 0; i < count; ++i, out += step, bgr += 3) {
    out[blue] = bgr[0];
    out[1] = bgr[1];
    out[2 - blue] = bgr[2];
  }
}

void CopyBits(const uint8_t* source, uint64_t from, uint8_t* destination, uint64_t to, uint64_t bits,
              bool highFirst) {
  for (; bits > 0; --bits, ++from, ++to) {
    const uint64_t fromShift = highFirst ? 7 - from % 8 : from % 8;
    const auto mask = static_cast<uint8_t>(1u << (highFirst ? 7 - to % 8 : to % 8));
    const bool set = (source[from / 8] >> fromShift & 1) != 0;
    destination[to / 8] = static_cast<uint8_t>((destination[to / 8] & ~mask) | (set ? mask : 0));
  }
}

// Whole bytes of bits that begin anywhere, most significant first.
void ShiftBytes(const uint8_t* source, uint64_t from, uint8_t* destination, uint64_t bytes) {
  const uint8_t* in = source + from / 8;
  const auto shift = static_cast<uint32_t>(from % 8);
  if (shift == 0) {
    std::memcpy(destination, in, static_cast<size_t>(bytes));
    return;
  }
  for (uint64_t i = 0; i < bytes; ++i)
    destination[i] = static_cast<uint8_t>(in[i] << shift | in[i + 1] >> (8 - shift));
}

}  // namespace

void RowToBgr(const KernelBitmap& bitmap, const uint8_t* row, uint32_t first, uint32_t count,
              uint8_t* bgr) {
  const uint32_t depth = bitmap.bitsPerPixel;
  const bool rgb = bitmap.colourOrder == kOrderRgb;
  if (depth == 24 || depth == 32) {
    return BytesToBgr(row + static_cast<size_t>(first) * (depth / 8), depth / 8, rgb, count, bgr);
  }
  const KernelColour* palette = Palette(bitmap);
  for (uint32_t i = 0; i < count; ++i, bgr += 3) {
    const uint32_t x = first + i;
    if (depth <= 8) {
      std::memcpy(bgr, &palette[GetIndex(row, depth, x)], 3);
    } else if (depth <= 16) {
      const uint32_t value = GetSample(row, depth, x);
      if (value < bitmap.colourCount) {
        std::memcpy(bgr, &palette[value], 3);
      } else {
        std::memset(bgr, HighByte(value, depth), 3);
      }
    } else {
      const uint32_t bits = depth / 3;
      for (uint32_t c = 0; c < 3; ++c) {
        const uint32_t value = GetBits(row, static_cast<uint64_t>(x) * depth + c * bits, bits);
        bgr[rgb ? 2 - c : c] = HighByte(value, bits);
      }
    }
  }
}

void BgrToRow(const KernelBitmap& bitmap, NearestColour& nearest, const uint8_t* bgr, uint32_t first,
              uint32_t count, uint8_t* row) {
  const uint32_t depth = bitmap.bitsPerPixel;
  const bool rgb = bitmap.colourOrder == kOrderRgb;
  if (depth == 24 || depth == 32) {
    return BgrToBytes(bgr, depth / 8, rgb, count, row + static_cast<size_t>(first) * (depth / 8));
  }
  for (uint32_t i = 0; i < count; ++i, bgr += 3) {
    const uint32_t x = first + i;
    if (depth <= 8) {
      PutIndex(row, depth, x, nearest.Find(bgr[0], bgr[1], bgr[2]));
    } else if (depth == 16) {
      const auto value = static_cast<uint16_t>(Luminance(bgr) << 8);
      std::memcpy(row + 2 * static_cast<size_t>(x), &value, 2);
    } else if (depth < 16) {
      PutBits(row, static_cast<uint64_t>(x) * depth, depth, FromHighByte(Luminance(bgr), depth));
    } else {
      const uint32_t bits = depth / 3;
      for (uint32_t c = 0; c < 3; ++c) {
        PutBits(row, static_cast<uint64_t>(x) * depth + c * bits, bits,
                FromHighByte(bgr[rgb ? 2 - c : c], bits));
      }
    }
  }
}

void CopyPixels(uint32_t depth, const uint8_t* source, uint32_t sourceFirst, uint8_t* destination,
                uint32_t destinationFirst, uint32_t count) {
  uint64_t from = static_cast<uint64_t>(sourceFirst) * depth;
  uint64_t to = static_cast<uint64_t>(destinationFirst) * depth;
  uint64_t bits = static_cast<uint64_t>(count) * depth;
  const bool highFirst = depth < 8;
  if (from % 8 == 0 && to % 8 == 0) {
    std::memcpy(destination + to / 8, source + from / 8, static_cast<size_t>(bits / 8));
    from += bits / 8 * 8;
    to += bits / 8 * 8;
    bits %= 8;
  } else if (highFirst && bits >= 16) {
    const uint64_t head = (8 - to % 8) % 8;
    CopyBits(source, from, destination, to, head, true);
    const uint64_t bytes = (bits - head) / 8;
    ShiftBytes(source, from + head, destination + (to + head) / 8, bytes);
    from += head + 8 * bytes;
    to += head + 8 * bytes;
    bits -= head + 8 * bytes;
  }
  CopyBits(source, from, destination, to, bits, highFirst);
}

uint8_t NearestColour::Find(uint8_t blue, uint8_t green, uint8_t red) {
  constexpr uint32_t kKnown = 1u << 31;
  const auto colour = static_cast<uint32_t>(blue | green << 8 | red << 16) | kKnown;
  Remembered& known = remembered_[(colour ^ colour >> 11) % remembered_.size()];
  if (known.colour != colour) known = {colour, Search(blue, green, red)};
  return known.index;
}

uint8_t NearestColour::Search(uint8_t blue, uint8_t green, uint8_t red) const {
  const KernelColour* palette = Palette(bitmap_);
  int best = INT32_MAX;
  uint8_t index = 0;
  for (uint32_t i = 0; i < bitmap_.colourCount && best != 0; ++i) {
    const int db = palette[i].blue - blue, dg = palette[i].green - green, dr = palette[i].red - red;
    const int distance = db * db + dg * dg + dr * dr;
    if (distance >= best) continue;
    best = distance;
    index = static_cast<uint8_t>(i);
  }
  return index;
}

}  // namespace hostkit
