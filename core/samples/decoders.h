// What reads the samples of each compression. The image has its size, depth and fill already.
#pragma once

#include <map>

#include "core/format/blocks.h"
#include "core/format/survey.h"
#include "core/samples/image.h"

namespace core {

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

SampleFault ReadPlain(const SampleSource& source, SampleImage& image);
SampleFault ReadFacsimile(const SampleSource& source, SampleImage& image);
SampleFault ReadJpeg(const SampleSource& source, SampleImage& image);
SampleFault ReadJpeg2000(const SampleSource& source, SampleImage& image);
SampleFault ReadVectorQuantised(const SampleSource& source, SampleImage& image);

}  // namespace core
