// Drawings of files.
#pragma once

#include <string>

#include "media/drawing/drawing.h"
#include "media/outcome.h"

namespace core {

/// Loads a binary metafile; BadData for bytes that are none. Throws std::bad_alloc.
media::Outcome LoadDrawing(const std::string& bytes, media::Drawing& drawing);

}  // namespace core
