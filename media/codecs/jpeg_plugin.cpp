// 12-bit and lossless JPEG by a plugin that is opened when it is first needed.
#include "media/codecs/jpeg_plugin.h"

#include <atomic>

#include "media/library.h"
#include "media/work.h"

namespace media {
namespace {

// What could not be opened, perhaps for want of memory, is tried again.
const WideJpegPlugin* Plugin() {
  static std::atomic<const WideJpegPlugin*> opened{nullptr};
  const WideJpegPlugin* plugin = opened;
  decltype(&media_wide_jpeg) get = nullptr;
  if (plugin == nullptr && Resolve(LoadPlugin("wide-jpeg.so"), kWideJpegExport, get))
    opened = plugin = get();
  return plugin;
}

}  // namespace

bool HasWideJpeg() { return Plugin() != nullptr; }

Outcome DecodeWideJpeg(Bytes bytes, const JpegFrame& frame, const TakeRow& take) {
  const WideJpegPlugin* plugin = Plugin();
  if (plugin == nullptr) return Outcome::Unsupported;
  if (!AllowsPixels(uint64_t{frame.width} * frame.height)) return Outcome::NoMemory;
  return plugin->decode(bytes, frame, take);
}

Outcome EncodeWideJpeg(const JpegPlan& plan, const uint16_t* samples, std::string& bytes) {
  const WideJpegPlugin* plugin = Plugin();
  return plugin != nullptr ? plugin->encode(plan, samples, bytes) : Outcome::Unsupported;
}

}  // namespace media
