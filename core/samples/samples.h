// The samples of an image segment at their own depth: blocks put together, nothing shown.
#pragma once

#include <memory>
#include <optional>

#include "core/format/jpeg_stream.h"
#include "core/format/survey.h"
#include "core/samples/target.h"

namespace core {

/// What was found in an image's data and serves the next reading of it.
struct StreamCache {
  std::optional<std::vector<FoundJpeg>> jpeg;
  /// A stream of which rows were decoded, from its top down, to go on with.
  std::shared_ptr<class JpegRun> run;
};

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
