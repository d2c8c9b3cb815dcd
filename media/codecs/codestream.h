// What a JPEG 2000 codestream says of itself, read without a decoder, so that sizes are known before
// memory is taken (ISO/IEC 15444-1, annex A).
#pragma once

#include "media/codecs/source.h"

namespace media {

/// The image and tile size segment.
struct CodestreamSize {
  uint32_t left, top, right, bottom;  ///< of the image on the reference grid
  uint32_t width, height;             ///< in pixels of the most finely sampled component
  uint32_t components, precision;
  uint32_t stepX, stepY;          ///< of that component
  uint32_t mostStepX, mostStepY;  ///< of the most coarsely sampled one
  uint32_t tileWidth, tileHeight;
  uint64_t tiles;
};
/// Finds it in a codestream or a file around one.
bool FindCodestreamSize(const Source& stream, CodestreamSize& size);

/// Samples that are made of a stream at the most for one picture.
inline constexpr uint64_t kMostSamplesAtOnce = uint64_t{1} << 29;

/// Whether so many pixels of a codestream are worth decoding: no more samples than bytes can say, nor
/// than there is room for, nor tables out of all proportion to both.
enum class CodestreamWorth { Fine, TooManySamples, TooFewBytes, TooManyTables };
CodestreamWorth WeighCodestream(const Source& stream, const CodestreamSize& size, uint64_t pixels);

/// Bytes that a decoder takes, by a generous estimate, for the tables of all tiles and for the precincts
/// and code-blocks of one, whatever the samples themselves take.
uint64_t CodestreamTableBytes(const Source& stream, const CodestreamSize& size);

}  // namespace media
