// TIFF files in memory through libtiff.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include <tiffio.h>

namespace media {

struct TiffSource {
  const std::string& bytes;
  uint64_t position = 0;
};
using TiffPtr = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

/// Opens bytes that stay where they are; null for no TIFF. Messages are dropped.
TiffPtr OpenTiff(TiffSource& source);

}  // namespace media
