// The samples of an image segment at their own depth: blocks put together, nothing shown.
#pragma once

#include "core/format/survey.h"
#include "core/samples/image.h"

namespace core {

/// Reads an image segment; JPEG and JPEG 2000 at 1/2^reduce of their size.
SampleFault ReadSamples(const Survey& survey, const SurveyedPart& part, uint32_t reduce,
                        SampleImage& image);

}  // namespace core
