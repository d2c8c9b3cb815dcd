// One image segment by itself.
#pragma once

#include "Common/HandlImg.h"

namespace tool {

/// Draws an image of a document at the origin of a canvas of its own size, on the document's background.
/// A status of the module; 87 for an index without an image.
int32_t DrawImageAlone(NitfFile& document, uint32_t index, OwnedBitmap& canvas);

}  // namespace tool
