// What JPEG 2000 codestreams of images say of themselves (ISO/IEC 15444-1, A.5.1).
#pragma once

#include "core/format/bytes.h"
#include "core/format/part.h"

namespace core {

struct Codestream {
  bool begins = false, ends = false;
  uint64_t width = 0, height = 0, tileWidth = 0, tileHeight = 0, components = 0;
  uint64_t least = 0, most = 0;  ///< depth of the components
};

/// Whether an image says that its data is one.
bool HasCodestream(const SurveyedPart& part);
/// Reads the front of it, and its end; of an image without one nothing.
Codestream ReadCodestream(const FileBytes& file, const SurveyedPart& part);

}  // namespace core
