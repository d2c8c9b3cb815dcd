// Binary metafiles (ISO/IEC 8632-3).
#pragma once

#include <string>

#include "hostkit/vector/drawing.h"

namespace hostkit {

/// Decodes a binary metafile; kHostOk or kHostBadData. Throws std::bad_alloc.
int32_t DecodeCgm(const uint8_t* bytes, size_t size, Drawing& drawing);
/// Encodes a drawing as a version 1 metafile. Throws std::bad_alloc.
std::string EncodeCgm(const Drawing& drawing);

}  // namespace hostkit
