// Histograms of bands.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include "core/report/html.h"
#include "core/report/report.h"

namespace core {
namespace {

constexpr size_t kBins = 64, kMostBands = 8;
using Bins = std::array<uint64_t, kBins>;

uint64_t BitsAt(const SampleImage& image, size_t pixel, uint32_t band) {
  uint64_t bits = 0;
  std::memcpy(&bits, &image.samples[pixel * image.PixelBytes() + size_t{band} * image.sampleBytes],
              image.sampleBytes);
  return bits;
}

// Integers of up to 16 bits fall into equal parts of what their bits can say.
Bins CountBand(const SampleImage& image, uint32_t band, uint64_t& least, uint64_t& most) {
  Bins bins = {};
  const uint64_t values = uint64_t{1} << image.significantBits;
  const size_t pixels = size_t{image.width} * image.height;
  least = UINT64_MAX;
  most = 0;
  for (size_t i = 0; i < pixels; ++i) {
    const uint64_t value = BitsAt(image, i, band);
    least = std::min(least, value);
    most = std::max(most, value);
    ++bins[static_cast<size_t>(std::min(value, values - 1) * kBins / values)];
  }
  return bins;
}

std::string Draw(const Bins& bins, size_t colour, const std::string& words) {
  constexpr double kHeight = 32;
  const uint64_t highest = std::max<uint64_t>(1, *std::max_element(bins.begin(), bins.end()));
  std::string path = "M0 " + Fixed(kHeight, 0);
  for (size_t i = 0; i < kBins; ++i) {
    // Square roots show what is rare.
    const double share = std::sqrt(static_cast<double>(bins[i]) / static_cast<double>(highest));
    const std::string y = Fixed(kHeight - kHeight * share, 1);
    for (const size_t x : {i, i + 1}) path.append("L").append(std::to_string(x)).append(" ").append(y);
  }
  path += "L" + std::to_string(kBins) + " " + Fixed(kHeight, 0) + "Z";
  return Tag("svg",
             Tag("path", "", "d=\"" + path + "\" fill=\"var(--c" + std::to_string(colour % 6) + ")\""),
             "class=\"histogram\" role=\"img\" aria-label=\"" + Escaped(words) +
                 "\" preserveAspectRatio=\"none\" viewBox=\"0 0 " + std::to_string(kBins) + " 32\"");
}

}  // namespace

std::string Histograms(const SampleImage& image) {
  if (image.kind != SampleKind::Unsigned || image.bits > 16 || image.width == 0 || image.height == 0)
    return "";
  std::string all;
  const bool isColour = image.bands == 3 && image.representation == "RGB";
  constexpr size_t kColours[] = {3, 2, 0};  // nearest to red, green and blue
  for (uint32_t band = 0; band < std::min<size_t>(image.bands, kMostBands); ++band) {
    uint64_t least = 0, most = 0;
    const Bins bins = CountBand(image, band, least, most);
    const std::string words = "Histogram of band " + std::to_string(band + 1) + ": values " +
                              std::to_string(least) + " to " + std::to_string(most);
    all += Draw(bins, isColour ? kColours[band] : 0, words) + Tag("p", words, "class=\"soft\"");
  }
  if (image.bands > kMostBands)
    all += Tag("p", "and " + std::to_string(image.bands - kMostBands) + " more bands");
  return all;
}

}  // namespace core
