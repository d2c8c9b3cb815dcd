// Samples at their own depth.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "media/outcome.h"

namespace core {

enum class SampleKind { Unsigned, Signed, Real, Complex };

struct SampleImage {
  uint32_t width = 0, height = 0, bands = 1;
  uint32_t bits = 8;         ///< of a sample: 1 to 64
  uint32_t sampleBytes = 1;  ///< that a sample takes here, in host order: 1, 2, 4 or 8
  uint32_t significantBits = 8;
  SampleKind kind = SampleKind::Unsigned;
  std::string representation;      ///< IREP
  std::vector<uint8_t> samples;    ///< side by side in pixels, rows from the top
  std::optional<uint64_t> noData;  ///< what stands where a mask has no pixels
  std::vector<uint8_t> palette;    ///< red, green, blue of each entry of the lookup tables

  size_t PixelBytes() const { return size_t{bands} * sampleBytes; }
  uint8_t* Pixel(uint32_t x, uint32_t y) {
    return samples.data() + (size_t{y} * width + x) * PixelBytes();
  }
  const uint8_t* Pixel(uint32_t x, uint32_t y) const {
    return const_cast<SampleImage*>(this)->Pixel(x, y);
  }
};

/// Why samples could not be had.
struct SampleFault {
  media::Outcome outcome = media::Outcome::Ok;
  std::string words;
  const char* field = "";  ///< of the subheader, where one is at fault
  /// As a number: 1, -1, -7, -9, -13, -16, -31.
  int32_t Code() const { return static_cast<int32_t>(outcome); }
  bool Met() const { return outcome != media::Outcome::Ok; }
};

/// A receiver did not want more.
inline SampleFault Stopped() { return {media::Outcome::Stopped, "stopped"}; }

/// Makes the samples, all of them the image's fill. NoMemory for more than may be.
SampleFault MakeSamples(SampleImage& image, uint64_t width, uint64_t height);
/// The number of so many bits, up to 64, from a bit of some bytes on, the highest one first.
uint64_t BitsAt(std::string_view bytes, uint64_t bit, uint32_t count);
/// Puts a sample's value.
void PutSample(SampleImage& image, uint32_t x, uint32_t y, uint32_t band, uint64_t value);

/// What a decoder's outcome says of the stream that `what` names.
SampleFault FaultOf(media::Outcome outcome, const std::string& what);

}  // namespace core
