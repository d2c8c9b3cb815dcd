// What decoders take and give.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "media/outcome.h"

namespace media {

using Bytes = std::span<const uint8_t>;

/// A part of a picture in pixels.
struct Window {
  uint32_t left = 0, top = 0, width = 0, height = 0;
  uint64_t Right() const { return uint64_t{left} + width; }
  uint64_t Bottom() const { return uint64_t{top} + height; }
};

/// What the rows of a decoded stream are.
struct RowForm {
  uint32_t width, height;  ///< of what is given
  uint32_t components;     ///< interleaved
  uint32_t precision;      ///< bits of a sample
  uint32_t SampleBytes() const { return precision <= 8 ? 1 : 2; }
};
/// Receives rows, the top one first: samples of a byte up to 8 bits, else of two in host order. Ok to go
/// on; another outcome ends the decoding and is its result.
using TakeRow = std::function<Outcome(const RowForm& form, uint32_t y, const uint8_t* row)>;

/// Numbers in streams are big-endian.
inline uint32_t Big16(const uint8_t* p) { return static_cast<uint32_t>(p[0] << 8 | p[1]); }
inline uint32_t Big32(const uint8_t* p) { return Big16(p) << 16 | Big16(p + 2); }

/// A side at 1/2^reduce of its size, rounded up.
constexpr uint32_t Reduced(uint32_t side, uint32_t reduce) {
  return static_cast<uint32_t>((uint64_t{side} + (uint64_t{1} << reduce) - 1) >> reduce);
}

}  // namespace media
