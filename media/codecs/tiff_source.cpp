#include "media/codecs/tiff_source.h"

#include <algorithm>
#include <new>

namespace media {
namespace {

tmsize_t ReadTiff(thandle_t handle, void* to, tmsize_t count) {
  auto& tiff = *static_cast<TiffSource*>(handle);
  const uint64_t left = tiff.Size() - std::min(tiff.Size(), tiff.position);
  const uint64_t some = std::min(left, static_cast<uint64_t>(std::max<tmsize_t>(count, 0)));
  const uint64_t inFront = tiff.front.size() - std::min<uint64_t>(tiff.front.size(), tiff.position);
  auto* bytes = static_cast<uint8_t*>(to);
  const uint64_t first = std::min(some, inFront);
  if (first != 0) tiff.front.copy(static_cast<char*>(to), first, tiff.position);
  tiff.position += first;
  if (some > first && !tiff.source.Read(tiff.position - tiff.front.size(), bytes + first, some - first))
    return 0;
  tiff.position += some - first;
  return static_cast<tmsize_t>(some);
}
toff_t SeekTiff(thandle_t handle, toff_t offset, int whence) {
  auto& tiff = *static_cast<TiffSource*>(handle);
  const uint64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? tiff.position : tiff.Size();
  return tiff.position = base + offset;
}
int DropTiffMessage(TIFF*, void*, const char*, const char*, va_list) { return 1; }

}  // namespace

TiffPtr OpenTiff(TiffSource& source) {
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (options == nullptr) throw std::bad_alloc();
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, kMostOfTiffAtOnce);
  TIFFOpenOptionsSetErrorHandlerExtR(options, DropTiffMessage, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options, DropTiffMessage, nullptr);
  TIFF* tiff = TIFFClientOpenExt(
      "picture", "rm", &source, ReadTiff, [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; },
      SeekTiff, [](thandle_t) { return 0; },
      [](thandle_t handle) -> toff_t { return static_cast<TiffSource*>(handle)->Size(); }, nullptr,
      nullptr, options);
  TIFFOpenOptionsFree(options);
  return {tiff, &TIFFClose};
}

}  // namespace media
