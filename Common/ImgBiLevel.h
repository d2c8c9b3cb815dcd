// Bi-level image data: a bit a pixel, rows one behind the other without filling.
#pragma once

#include "Common/ImgPixel.h"

/// The reader of bi-level data (PVTYPE "B"), which ReadUncompressedImage calls.
Status ReadBiLevel(KernelBitmap& segment, const ImageSource& source);
