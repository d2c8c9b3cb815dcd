#include "media/codecs/tiff_memory.h"

#include <algorithm>
#include <cstring>

namespace media {
namespace {

tmsize_t ReadTiff(thandle_t handle, void* to, tmsize_t count) {
  auto& source = *static_cast<TiffSource*>(handle);
  const uint64_t left = source.bytes.size() - std::min<uint64_t>(source.position, source.bytes.size());
  const auto moved =
      static_cast<size_t>(std::min<uint64_t>(left, static_cast<uint64_t>(std::max<tmsize_t>(count, 0))));
  if (moved != 0) std::memcpy(to, source.bytes.data() + source.position, moved);
  source.position += moved;
  return static_cast<tmsize_t>(moved);
}
toff_t SeekTiff(thandle_t handle, toff_t offset, int whence) {
  auto& source = *static_cast<TiffSource*>(handle);
  const uint64_t base = whence == SEEK_SET   ? 0
                        : whence == SEEK_CUR ? source.position
                                             : source.bytes.size();
  return source.position = base + offset;
}
// The bytes lie in memory already; without them there libtiff does not read tiles of less than 1024
// bytes.
int MapTiff(thandle_t handle, void** base, toff_t* size) {
  const std::string& bytes = static_cast<TiffSource*>(handle)->bytes;
  *base = const_cast<char*>(bytes.data());
  *size = bytes.size();
  return 1;
}
int DropTiffMessage(TIFF*, void*, const char*, const char*, va_list) { return 1; }

}  // namespace

TiffPtr OpenTiff(TiffSource& source) {
  constexpr tmsize_t kMostAtOnce = 256 << 20;
  TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
  if (options == nullptr) return {nullptr, &TIFFClose};
  TIFFOpenOptionsSetMaxSingleMemAlloc(options, kMostAtOnce);
  TIFFOpenOptionsSetErrorHandlerExtR(options, DropTiffMessage, nullptr);
  TIFFOpenOptionsSetWarningHandlerExtR(options, DropTiffMessage, nullptr);
  TIFF* tiff = TIFFClientOpenExt(
      "picture", "r", &source, ReadTiff, [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; },
      SeekTiff, [](thandle_t) { return 0; },
      [](thandle_t handle) -> toff_t { return static_cast<TiffSource*>(handle)->bytes.size(); }, MapTiff,
      [](thandle_t, void*, toff_t) {}, options);
  TIFFOpenOptionsFree(options);
  return {tiff, &TIFFClose};
}

}  // namespace media
