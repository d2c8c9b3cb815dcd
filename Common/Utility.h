// The size of the composite display.
#pragma once

#include "Common/DisplayList.h"

/// The farthest right and bottom edges of the segments of `list`, which is the document's; 2048 x 2048
/// with the fixed canvas option or without segments, 2 x 2 for a document of texts. 1, or the failure of
/// loading a graphic; -1 when a side exceeds 2147483647.
Status MeasureComposite(NitfFile& document, const DisplayList& list, uint32_t& width, uint32_t& height);
