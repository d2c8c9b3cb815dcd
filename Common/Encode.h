// Content of new segments, encoded by the host.
#pragma once

#include "Common/AppendedData.h"
#include "host/fileformat.h"

/// Compresses a bitmap into a segment's data, which stays as it was after a failure. 1, -1 or the
/// file-format library's code.
Status EncodePicture(const KernelBitmap& bitmap, uint32_t format, uint32_t bitsPerPixel, int32_t quality,
                     AppendedData& data);
/// Encodes a drawing as CGM; -13 for more bytes than LS has digits for.
Status EncodeDrawing(const VectorHandle& drawing, AppendedData& data);
