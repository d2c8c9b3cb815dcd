// Readers of uncompressed blocked image data (MIL-STD-2500C, 5.4.3: IC "NC" and "NM").
#pragma once

#include "Common/ImgPixel.h"

/// Fills a segment bitmap from uncompressed data. 1, -1, -7, -9 (bi-level data runs out), or the status
/// of a kernel or image-effects operation; the blocks placed before a failure stay.
Status ReadUncompressedImage(KernelBitmap& segment, const ImageSource& source);

/// Bytes that the readers need at the least; what a file that is too short is recognised by before any
/// memory is taken for its pixels.
CheckedSize LeastDataBytes(const ImageSubheader& header);
