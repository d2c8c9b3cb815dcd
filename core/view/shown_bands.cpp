#include "core/view/shown_bands.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "core/format/numbers.h"
#include "core/format/words.h"

namespace core {
namespace {

constexpr uint32_t kMostLooked = 1000;  // bands whose codes are looked at

std::string NameOf(const char* field, uint32_t band) { return field + std::to_string(band + 1); }

class Chooser {
 public:
  explicit Chooser(const SurveyedPart& image)
      : image_(image), count_(static_cast<uint32_t>(std::max<int64_t>(0, image.Bands()))) {}

  ShownBands Choose() const {
    const std::string_view representation = image_.Trimmed("IREP");
    if (image_.Trimmed("PVTYPE") == "C") return {{First("M", 0)}, ShownAs::Magnitude, {}};
    if (const auto parts = InPhaseAndQuadrature()) return {*parts, ShownAs::Magnitude, {}};
    if (const auto differences = Coded({"Y", "Cb", "Cr"}); differences && representation == "YCbCr601")
      return {*differences, ShownAs::Differences, {}};
    if (representation == "YCbCr601" && count_ == 3) return {{0, 1, 2}, ShownAs::Differences, {}};
    if (count_ < 3) return Single();
    // Those that have no code stand in their order.
    if (representation == "RGB" || Find("R") || Find("G") || Find("B"))
      return {{First("R", 0), First("G", 1), First("B", 2)}, ShownAs::Colour, {}};
    if (Find("LU") || Find("M")) return Single();
    if (const auto nearest = ByWavelength()) return {*nearest, ShownAs::Colour, {}};
    return {{0, 1, 2}, ShownAs::Colour, {}};
  }

  // Of a band that is one of several, the first table is its own.
  BandTable TableOf(uint32_t band, bool isAlone) const {
    const std::string prefix = NameOf("LUTD", band) + ".";
    const std::string_view first = image_.Text(prefix + "1");
    BandTable table;
    // Two tables are the high and the low byte of what a sample stands for.
    table.isColour = isAlone && image_.Has(prefix + "3");
    for (size_t i = 0; i < first.size(); ++i) {
      table.entries.push_back(static_cast<uint8_t>(first[i]));
      for (const char* more : {"2", "3"}) {
        if (table.isColour) table.entries.push_back(static_cast<uint8_t>(image_.Text(prefix + more)[i]));
      }
    }
    return table;
  }

 private:
  std::optional<uint32_t> Find(std::string_view code) const {
    for (uint32_t band = 0; band < std::min(count_, kMostLooked); ++band) {
      if (image_.Trimmed(NameOf("IREPBAND", band)) == code) return band;
    }
    return std::nullopt;
  }
  uint32_t First(std::string_view code, uint32_t otherwise) const {
    return Find(code).value_or(otherwise);
  }

  std::optional<std::vector<uint32_t>> Coded(std::initializer_list<std::string_view> codes) const {
    std::vector<uint32_t> bands;
    for (const std::string_view code : codes) {
      const auto band = Find(code);
      if (!band) return std::nullopt;
      bands.push_back(*band);
    }
    return bands;
  }

  ShownBands Single() const {
    const auto table = Find("LU");
    return {{table ? *table : First("M", 0)}, ShownAs::Grey, {}};
  }

  // Radar stores the two parts, or magnitude and phase.
  std::optional<std::vector<uint32_t>> InPhaseAndQuadrature() const {
    if (count_ != 2) return std::nullopt;
    const std::string_view one = image_.Trimmed("ISUBCAT1"), two = image_.Trimmed("ISUBCAT2");
    if ((one == "I" && two == "Q") || (one == "Q" && two == "I")) return std::vector<uint32_t>{0, 1};
    if (one == "M" && two == "P") return std::vector<uint32_t>{0};
    if (one == "P" && two == "M") return std::vector<uint32_t>{1};
    return std::nullopt;
  }

  // The bands whose wavelengths in nanometres are nearest to red, green and blue.
  std::optional<std::vector<uint32_t>> ByWavelength() const {
    constexpr int64_t kColours[] = {660, 550, 470};
    std::vector<uint32_t> bands;
    for (const int64_t colour : kColours) {
      std::optional<uint32_t> nearest;
      int64_t least = 0;
      for (uint32_t band = 0; band < std::min(count_, kMostLooked); ++band) {
        const auto wavelength = NumberOf(image_.Trimmed(NameOf("ISUBCAT", band)));
        if (!wavelength || *wavelength < 100) continue;
        const int64_t distance = std::abs(*wavelength - colour);
        if (nearest && distance >= least) continue;
        nearest = band;
        least = distance;
      }
      if (!nearest || std::find(bands.begin(), bands.end(), *nearest) != bands.end()) return std::nullopt;
      bands.push_back(*nearest);
    }
    return bands;
  }

  const SurveyedPart& image_;
  uint32_t count_;
};

}  // namespace

SampleFault ChooseBands(const SurveyedPart& image, const std::vector<uint32_t>& asked,
                        ShownBands& shown) {
  const Chooser chooser(image);
  for (const uint32_t band : asked) {
    if (band >= image.Bands())
      return {media::Outcome::Invalid, "it has " + std::to_string(image.Bands()) + " bands, from 0"};
  }
  if (asked.empty()) {
    shown = chooser.Choose();
  } else if (asked.size() == 1 || asked.size() == 3) {
    const bool isComplex = image.Trimmed("PVTYPE") == "C";
    shown = {asked,
             asked.size() == 3 ? ShownAs::Colour
             : isComplex       ? ShownAs::Magnitude
                               : ShownAs::Grey,
             {}};
  } else {
    return {media::Outcome::Invalid, "one band is shown or three"};
  }
  const bool isAlone = shown.bands.size() == 1;
  for (const uint32_t band : shown.bands) shown.tables.push_back(chooser.TableOf(band, isAlone));
  if (isAlone && shown.tables[0].isColour) shown.as = ShownAs::Colour;
  return {};
}

}  // namespace core
