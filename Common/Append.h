// Adding segments to a document. After a failure the document is as it was before.
#pragma once

#include "Common/NitfFile.h"

/// See Orb_NITFAppendImageSegment.
Status AppendImage(NitfFile& document, const KernelBitmap* bitmap, uint32_t format, uint32_t bitsPerPixel,
                   int32_t quality);
/// See Orb_NITFAppendGraphicSegment.
Status AppendGraphic(NitfFile& document, VectorHandle* drawing, const RECT& rectangle);
/// See Orb_NITFAppendTextSegment.
Status AppendText(NitfFile& document, const char16_t* fileName);
