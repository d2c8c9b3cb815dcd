#include "core/format/blocks.h"

namespace core {

Blocks::Blocks(const SurveyedPart& image)
    : across(image.Number("NBPR")),
      down(image.Number("NBPC")),
      width(image.Number("NPPBH")),
      height(image.Number("NPPBV")),
      bands(image.Bands()),
      bits(image.Number("NBPP")),
      sequential(image.Text("IMODE") == "S"),
      byBand(image.Text("IMODE") == "B") {
  if (width == 0) width = image.Number("NCOLS");
  if (height == 0) height = image.Number("NROWS");
}

bool Blocks::Known() const {
  constexpr int64_t kMostSide = 100000000;
  return across > 0 && down > 0 && width > 0 && height > 0 && bands > 0 && bits > 0 &&
         width <= kMostSide && height <= kMostSide &&
         // 2^63 bits are more than any file has.
         static_cast<double>(width) * static_cast<double>(height) * static_cast<double>(bands) *
                 static_cast<double>(bits) * static_cast<double>(across) * static_cast<double>(down) <
             9e18;
}

bool Blocks::Cover(const SurveyedPart& image) const {
  const auto covers = [](int64_t pixels, int64_t count, int64_t side) {
    return pixels >= 1 && count >= 1 && count * side >= pixels && (count - 1) * side < pixels;
  };
  return covers(image.Number("NCOLS"), across, width) && covers(image.Number("NROWS"), down, height);
}

uint64_t Blocks::PlaneSamples() const {
  const auto samples = static_cast<uint64_t>(width * height);
  return bits == 1 && byBand ? (samples + 7) / 8 * 8 : samples;
}

uint64_t Blocks::BlockBytes() const {
  const uint64_t samples = PlaneSamples() * static_cast<uint64_t>(sequential ? 1 : bands);
  return (samples * static_cast<uint64_t>(bits) + 7) / 8;
}

}  // namespace core
