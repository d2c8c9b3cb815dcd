// From samples to bytes that a screen shows.
#pragma once

#include "core/format/survey.h"
#include "core/view/shown_bands.h"

namespace core {

/// How samples of more than eight bits become bytes.
struct Stretch {
  enum class By { Percent, MinMax, None } by = By::Percent;
  double low = 2, high = 98;  ///< percent of the samples that are black and that are not white
  bool each = false;          ///< of each band by itself, not of all that are shown together
};

/// What is shown as black and as white.
struct ToneRange {
  double low = 0, high = 255;
};

/// What the samples of an image are, as they are shown: those that are justified left have significant
/// bits down to the last one.
SampleFault DescribeShown(const SurveyedPart& image, SampleImage& form);

/// Whether samples are shown as they are stored, without a stretch.
bool ShownAsStored(const SampleImage& form);

/// The value of a sample, whatever it is; of a complex number its magnitude. NaN for none.
double ValueOf(const SampleImage& form, const uint8_t* sample);

/// Finds what is black and white of each shown band: of reals, of signed and of deep samples. It follows
/// from the file alone, of which a fixed part is looked at.
SampleFault FindTones(const Survey& survey, const SurveyedPart& image, const ShownBands& shown,
                      const Stretch& stretch, std::vector<ToneRange>& tones);

/// The byte that a value is shown as.
uint8_t ToneOf(double value, const ToneRange& range);

}  // namespace core
