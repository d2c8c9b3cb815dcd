// What an image says of its bands, for people.
#pragma once

#include <string>
#include <vector>

#include "core/format/records.h"

namespace core {

/// A line a band: its name (IREPBAND, ISUBCAT, BANDID of BANDSB) and the wavelength that BANDSB, BANDSA
/// or, of MULTI images, ISUBCAT gives. Empty texts where nothing is said of a band.
std::vector<std::string> WordsOfBands(const SurveyedPart& image, const RecordDefinitions& definitions);

}  // namespace core
