// 12-bit and lossless JPEG by a plugin that is opened when it is first needed.
#include "media/codecs/jpeg_plugin.h"

#include "media/library.h"
#include "media/work.h"

namespace media {
namespace {

const WideJpegPlugin* Plugin() {
  static const WideJpegPlugin* const plugin = [] {
    decltype(&media_wide_jpeg) get = nullptr;
    return Resolve(LoadPlugin("wide-jpeg.so"), kWideJpegExport, get) ? get() : nullptr;
  }();
  return plugin;
}

}  // namespace

bool HasWideJpeg() { return Plugin() != nullptr; }

Outcome DecodeWideJpeg(Bytes bytes, const JpegFrame& frame, const TakeRow& take) {
  if (!HasWideJpeg()) return Outcome::Unsupported;
  if (!AllowsPixels(uint64_t{frame.width} * frame.height)) return Outcome::NoMemory;
  return Plugin()->decode(bytes, frame, take);
}

Outcome EncodeWideJpeg(const JpegPlan& plan, const uint16_t* samples, std::string& bytes) {
  return HasWideJpeg() ? Plugin()->encode(plan, samples, bytes) : Outcome::Unsupported;
}

}  // namespace media
