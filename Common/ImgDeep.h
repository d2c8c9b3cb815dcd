// Several bands of 9 to 16 bits, shown by the high 8 of their significant bits.
#pragma once

#include "Common/ImgPixel.h"

/// The reader of several bands of 9 to 16 bits, where the document's rules ask for it; 1, -1 or -7.
Status ReadDeepBands(KernelBitmap& segment, const ImageSource& source);
