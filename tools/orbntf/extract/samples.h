// The samples of an image segment at their own depth: blocks put together, nothing shown.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/orbntf/inspect/survey.h"

namespace tool {

enum class SampleKind { Unsigned, Signed, Real, Complex };

struct SampleImage {
  uint32_t width = 0, height = 0, bands = 1;
  uint32_t bits = 8;         ///< of a sample: 1, 8, 12, 16, 32 or 64
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
struct ExtractFault {
  int32_t status = 1;
  std::string words;
  bool Met() const { return status != 1; }
};

/// Reads an image segment; JPEG and JPEG 2000 at 1/2^reduce of their size.
ExtractFault ReadSamples(const Survey& survey, const SurveyedPart& part, uint32_t reduce,
                         SampleImage& image);

}  // namespace tool
