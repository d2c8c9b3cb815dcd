// Cairo's fonts.
#pragma once

#include "media/drawing/cairo_library.h"

#include "media/drawing/text.h"

namespace media {

/// Latin-1 as Cairo takes it; control characters as spaces.
std::string Utf8(const std::string& latin1);
void SelectFont(cairo_t* cairo, const FontName& name);

}  // namespace media
