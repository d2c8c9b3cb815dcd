// The samples of an image segment at their own depth: blocks put together, nothing shown.
#pragma once

#include "core/format/survey.h"
#include "core/samples/stream_cache.h"
#include "core/samples/target.h"

namespace core {

/// Reads what is asked for of an image segment, of any compression and mode, in memory for that and a
/// block.
SampleFault ReadSamples(const Survey& survey, const SurveyedPart& part, const SampleRequest& request,
                        SampleImage& image, StreamCache* cache = nullptr);
/// Depth, kind, bands, tables and fill of an image's samples, without any.
SampleFault DescribeSamples(const SurveyedPart& part, SampleImage& image);
/// How many samples a request asks for, of bands up to 16, for the account of a command: the whole image
/// where a codec decodes it whole.
uint64_t SamplesAskedFor(const SurveyedPart& part, const SampleRequest& request);
/// All of it, at 1/2^reduce of its size.
inline SampleFault ReadSamples(const Survey& survey, const SurveyedPart& part, uint32_t reduce,
                               SampleImage& image) {
  SampleRequest request;
  request.reduce = reduce;
  return ReadSamples(survey, part, request, image);
}

}  // namespace core
