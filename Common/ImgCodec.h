// Compressed image data that the host's file-format library decodes: facsimile and the JPEG family.
#pragma once

#include "Common/ImgPixel.h"

/// Facsimile ("C1", "M1").
Status ReadFacsimileImage(KernelBitmap& segment, const ImageSource& source);
/// JPEG and JPEG 2000 ("C3", "C5", "C6", "C8", "I1" and the masked forms).
Status ReadJpegImage(KernelBitmap& segment, const ImageSource& source);
