// TIFF files of libtiff over descriptors.
#pragma once

#include <tiffio.h>

namespace core {

/// Opens a descriptor, which is closed with the file, for writing; "w" or "w8" for more than 4 GiB. Calls
/// that a signal breaks off are taken up again; libtiff says nothing of its own. Null on failure.
TIFF* OpenTiffFile(int descriptor, const char* mode);

}  // namespace core
