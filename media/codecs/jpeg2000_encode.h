// Making JPEG 2000 codestreams tile by tile.
#pragma once

#include <string>
#include <vector>

#include "media/codecs/stream.h"

namespace media {

struct Jpeg2000Plan {
  uint32_t width = 0, height = 0, tileWidth = 1024, tileHeight = 1024;
  uint32_t components = 1, precision = 8;
  bool isSigned = false;
  bool isColour = false;   ///< the first three components are decorrelated
  bool isLossless = true;  ///< reversible wavelets; the last layer holds everything
  std::vector<double>
      layers;           ///< bits a sample of each layer, growing; of a lossless stream but the last one
  uint32_t levels = 5;  ///< of wavelets
};

/// Wavelet levels that a plan comes to: a small image has fewer.
uint32_t LevelsOf(const Jpeg2000Plan& plan);

/// Gives the samples of a tile, one component behind the other, each of 1, 2 or 4 bytes in host order.
using GiveTile = std::function<void(const Window& place, std::vector<uint8_t>& samples)>;
/// Takes bytes of the codestream at a place; false where they do not go there.
using PutBytes = std::function<bool(uint64_t at, const uint8_t* bytes, size_t count)>;

/// Encodes an image in memory for a tile. BadData where the codec fails; NotTaken. What `give` throws
/// comes out.
Outcome EncodeJpeg2000(const Jpeg2000Plan& plan, const GiveTile& give, const PutBytes& put);

}  // namespace media
