// Facsimile data (ITU-T T.4), decoded by itself.
#pragma once

#include "media/codecs/stream.h"

namespace media {

struct FacsimileForm {
  uint32_t width, height;
  bool twoDimensional;
};
/// Gives the rows that decode: 8 pixels a byte from the highest bit on, 1 for white. Those behind the
/// first that does not decode are not there; BadData where not a single one is. Unsupported for sizes
/// beyond what the library takes. Throws std::bad_alloc.
Outcome DecodeFacsimile(Bytes data, const FacsimileForm& form,
                        const std::function<Outcome(uint32_t y, std::span<const uint8_t> row)>& take);

}  // namespace media
