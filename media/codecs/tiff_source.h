// TIFF files through libtiff.
#pragma once

#include <memory>
#include <string>

#include <tiffio.h>

#include "media/codecs/source.h"

namespace media {

/// Bytes that libtiff takes memory for at once.
inline constexpr int64_t kMostOfTiffAtOnce = 256 << 20;

/// What libtiff reads: a source with some bytes in front of it.
struct TiffSource {
  const std::string front;
  const Source& source;
  uint64_t position = 0;

  uint64_t Size() const { return front.size() + source.Size(); }
};
using TiffPtr = std::unique_ptr<TIFF, decltype(&TIFFClose)>;

/// Opens what stays where it is; null for no TIFF. Messages are dropped. Throws std::bad_alloc.
TiffPtr OpenTiff(TiffSource& source);

}  // namespace media
