// Graphic segments: loading their CGM data and painting the drawing at its place.
#pragma once

#include "Common/NitfFile.h"
#include "host/fileformat.h"

/// Where a graphic lies on the canvas: SBND1 to SBND2, moved by SLOC and the attachment's offsets. The
/// first number of each bound counts with the columns.
RECT GraphicRectangle(const GraphicSubheader& graphic, int32_t rowOffset, int32_t columnOffset);

/// Reads a graphic segment's data and, when it is CGM, decodes it into an initialised drawing; other
/// forms leave the drawing empty. 1, -1, -7, or the file-format library's code.
Status LoadSegmentDrawing(NitfFile& document, uint32_t index, VectorHandle& drawing);

/// Loads a graphic segment's drawing into its record, replacing what that held. 1, -1, -7, or the
/// file-format or vector library's code; the record holds no drawing after a failure.
Status LoadGraphicDrawing(NitfFile& document, uint32_t index);

/// Loads and paints a graphic segment; only CGM is painted. A drawing whose handle no caller holds is
/// freed again. 1, or the first failure.
Status DrawGraphicSegment(HDC dc, NitfFile& document, uint32_t index, int32_t rowOffset,
                          int32_t columnOffset);
