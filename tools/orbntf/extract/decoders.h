// What reads the samples of each compression. The image has its size, depth and fill already.
#pragma once

#include <map>

#include "media/outcome.h"
#include "tools/orbntf/check/blocks.h"
#include "tools/orbntf/extract/samples.h"

namespace tool {

using SharedBlocks = std::map<uint64_t, std::vector<uint64_t>>;

/// The data of an image while it is read.
struct SampleSource {
  const Survey& survey;
  const SurveyedPart& part;
  Blocks blocks;
  uint32_t reduce = 0;

  /// Offset of a block of the data; none where it is not stored. `number` counts blocks, of IMODE S those
  /// of all bands.
  std::optional<uint64_t> OffsetOf(uint64_t number, uint64_t blockBytes) const;
  /// The blocks that are stored, by where they begin: many may say the same place, and a place ends where
  /// the next one begins.
  SharedBlocks BlocksByOffset() const;
};

ExtractFault ReadPlain(const SampleSource& source, SampleImage& image);
ExtractFault ReadFacsimile(const SampleSource& source, SampleImage& image);
ExtractFault ReadJpeg(const SampleSource& source, SampleImage& image);
ExtractFault ReadJpeg2000(const SampleSource& source, SampleImage& image);
ExtractFault ReadVectorQuantised(const SampleSource& source, SampleImage& image);

/// -1 for an image of more samples than the host takes.
ExtractFault CheckSize(const SampleImage& image, uint64_t width, uint64_t height);
/// Makes the samples, all of them the image's fill. -1 for more than the host takes.
ExtractFault MakeSamples(SampleImage& image, uint64_t width, uint64_t height);
/// Puts a sample's value.
void PutSample(SampleImage& image, uint32_t x, uint32_t y, uint32_t band, uint64_t value);

/// Samples of a decoded stream, side by side in pixels, in host order.
struct DecodedStream {
  uint32_t width = 0, height = 0, components = 0, sampleBytes = 1;
  std::vector<uint8_t> bytes;
};
/// Copies what fits of a decoded block to its place, its components from a band on.
void PlaceStream(const DecodedStream& stream, uint32_t left, uint32_t top, uint32_t firstBand,
                 SampleImage& image);
/// What a decoder's outcome says of the stream that `what` names.
ExtractFault FaultOf(media::Outcome outcome, const std::string& what);

}  // namespace tool
