// Binary metafiles (ISO/IEC 8632-3).
#pragma once

#include <string>

#include "media/drawing/drawing.h"
#include "media/outcome.h"

namespace media {

/// Decodes a binary metafile; Ok or BadData. Throws std::bad_alloc.
Outcome DecodeCgm(const uint8_t* bytes, size_t size, Drawing& drawing);
/// Encodes a drawing as a version 1 metafile. Throws std::bad_alloc.
std::string EncodeCgm(const Drawing& drawing);

}  // namespace media
