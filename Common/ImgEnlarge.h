// Downsampled images at their full size.
#pragma once

#include "Common/ImgPixel.h"

/// Makes the bitmap of a downsampled image as large as its subheader says, where the document's rules ask
/// for it. 1, -1, or the host's status.
Status EnlargeToFullSize(const ImageSubheader& header, OwnedBitmap& bitmap);
