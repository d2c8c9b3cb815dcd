// Which bands of an image are shown, and as what.
#pragma once

#include <vector>

#include "core/format/survey.h"
#include "core/samples/image.h"

namespace core {

enum class ShownAs {
  Grey,         ///< one band
  Colour,       ///< red, green, blue; or one band whose table has colours
  Differences,  ///< luminance, blue and red difference (ITU-R BT.601)
  Magnitude     ///< of a complex number: one complex band, or its two parts
};

/// The table of a band: grey, or red, green and blue of each entry.
struct BandTable {
  bool isColour = false;
  std::vector<uint8_t> entries;  ///< one or three bytes each
};

struct ShownBands {
  std::vector<uint32_t> bands;  ///< from 0, in the order that `as` has them
  ShownAs as = ShownAs::Grey;
  std::vector<BandTable> tables;  ///< of each shown band; empty ones where it has none
};

/// Chooses what is shown of an image: the bands that are asked for, one or three; else by the codes of
/// its bands (IREPBAND), by the wavelengths in ISUBCAT, or the first ones. Invalid for bands that it does
/// not have.
SampleFault ChooseBands(const SurveyedPart& image, const std::vector<uint32_t>& asked, ShownBands& shown);

}  // namespace core
