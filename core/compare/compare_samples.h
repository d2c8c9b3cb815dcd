// What differs between the samples of two images.
#pragma once

#include <string>

#include "core/format/survey.h"
#include "core/samples/samples.h"

namespace core {

struct SampleDifference {
  std::string part;
  std::string problem;  ///< why the samples are not compared; empty where they are
  uint64_t samples = 0, differing = 0;
  double largest = 0, mean = 0;  ///< of the absolute differences; the mean is that of all samples
  uint64_t notNumbers = 0;       ///< samples that only one of the images has as a number
};

/// What differs, in words.
std::string WordsOf(const SampleDifference& samples);

/// Compares images of the same size and bands sample by sample, complex ones by the absolute value of
/// the difference. Throws ReadError.
SampleDifference CompareSamples(const Survey& a, const SurveyedPart& first, const Survey& b,
                                const SurveyedPart& second);

}  // namespace core
