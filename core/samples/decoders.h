// What reads the samples of each compression. The image has its depth and fill already.
#pragma once

#include <algorithm>
#include <map>

#include "core/format/blocks.h"
#include "core/format/file_source.h"
#include "core/format/survey.h"
#include "core/samples/stream_cache.h"
#include "core/samples/target.h"

namespace core {

using SharedBlocks = std::map<uint64_t, std::vector<uint64_t>>;

/// The data of an image while it is read.
struct SampleSource {
  const Survey& survey;
  const SurveyedPart& part;
  Blocks blocks;
  StreamCache* cache = nullptr;

  /// Offset of a block of the data; none where it is not stored. `number` counts blocks, of IMODE S those
  /// of all bands.
  std::optional<uint64_t> OffsetOf(uint64_t number, uint64_t blockBytes) const;
  /// The blocks that are stored, by where they begin: many may say the same place, and a place ends where
  /// the next one begins.
  SharedBlocks BlocksByOffset() const;
};

/// Bytes of an image's data that a decoder reads.
class PartSource : public FileSource {
 public:
  PartSource(const SampleSource& source, uint64_t offset, uint64_t length)
      : FileSource(source.survey.file, source.part.dataOffset + offset,
                   std::min(length, source.part.dataLength - std::min(source.part.dataLength, offset))) {}
};

/// The bits of a byte, the highest one first, as bytes.
inline void SpreadBits(uint8_t bits, uint8_t* to) {
  for (uint32_t i = 0; i < 8; ++i) to[i] = bits >> (7 - i) & 1;
}

SampleFault ReadPlain(const SampleSource& source, SampleTarget& target);
SampleFault ReadFacsimile(const SampleSource& source, SampleTarget& target);
SampleFault ReadJpeg(const SampleSource& source, SampleTarget& target);
SampleFault ReadJpeg2000(const SampleSource& source, SampleTarget& target);
SampleFault ReadVectorQuantised(const SampleSource& source, SampleTarget& target);

}  // namespace core
