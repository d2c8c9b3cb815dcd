// Facsimile data as the host's bitmaps.
#include <algorithm>

#include "hostkit/fileformat/codec.h"
#include "media/codecs/facsimile.h"

namespace hostkit {

// Rows behind the first that does not decode stay white; data without a single row is an error.
int32_t LoadFacsimile(Bytes bytes, const HostRawDataInfo& info, KernelBitmap& bitmap) {
  if (info.format != kFormatFacsimile1D && info.format != kFormatFacsimile2D) return kHostUnsupported;
  if (info.bitsPerPixel != 1) return kHostUnsupported;
  const int32_t status = KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, info.width, info.height, 1,
                                              kOrderRgb, nullptr, kViewTopLeft, nullptr, 0);
  if (status != kHostOk) return status;
  std::memset(Pixels(bitmap), 0xFF, static_cast<size_t>(bitmap.byteCount));
  const media::FacsimileForm form = {info.width, info.height, info.format == kFormatFacsimile2D};
  return StatusOf(media::DecodeFacsimile(bytes, form, [&](uint32_t y, std::span<const uint8_t> row) {
    std::memcpy(Row(bitmap, y), row.data(), std::min<size_t>(row.size(), bitmap.bytesPerLine));
    return media::Outcome::Ok;
  }));
}

}  // namespace hostkit
