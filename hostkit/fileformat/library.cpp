// The file-format library's calls on images.
#include <new>

#include "host/display.h"
#include "hostkit/fileformat/codec.h"

namespace {

using hostkit::Bytes;
using hostkit::Codec;

struct InfoCallback {
  HostLoadInfoCallback callback = nullptr;
  void* userData = nullptr;
};
thread_local InfoCallback infoCallback;

const Codec* FindCodec(Bytes bytes, HostFileInfo& info) {
  for (const Codec* codec : hostkit::Codecs()) {
    if (codec->describe(bytes, info)) return codec;
  }
  return nullptr;
}

// Gives a decoded bitmap the depth that the caller asked for.
int32_t ChangeDepth(KernelBitmap& bitmap, uint32_t bitsPerPixel) {
  if (bitsPerPixel == 0 || bitsPerPixel == bitmap.bitsPerPixel) return kHostOk;
  KernelBitmap changed;
  int32_t status = KernelAllocateBitmap(&changed, kBitmapRecordSize, 1, bitmap.width, bitmap.height,
                                        bitsPerPixel, kOrderBgr, nullptr, kViewTopLeft, nullptr, 0);
  if (status != kHostOk) return status;
  status = ImageEffectsCombine(&changed, 0, 0, bitmap.width, bitmap.height, &bitmap, 0, 0, kCombineCopy);
  KernelFreeBitmap(&bitmap);
  bitmap = changed;
  return status;
}

int32_t Load(Bytes bytes, const HostLoadOptions& options, uint32_t bitsPerPixel, KernelBitmap& bitmap,
             HostFileInfo& info) {
  if (HostkitShouldFail(kFaultCodec)) return kHostBadData;
  if (infoCallback.callback != nullptr) {
    HostRawDataInfo raw = {};
    raw.size = sizeof raw;
    const int32_t answer = infoCallback.callback(&raw, infoCallback.userData);
    if (answer != 1) return answer;
    const int32_t status = hostkit::LoadFacsimile(bytes, raw, bitmap);
    return status == kHostOk ? ChangeDepth(bitmap, bitsPerPixel) : status;
  }
  const Codec* codec = FindCodec(bytes, info);
  if (codec == nullptr) return hostkit::UnknownImage();
  const int32_t status = codec->load(bytes, options, bitmap);
  return status == kHostOk ? ChangeDepth(bitmap, bitsPerPixel) : status;
}

int32_t Guarded(KernelBitmap* bitmap, auto work) {
  int32_t status = kHostNoMemory;
  try {
    status = work();
  } catch (const std::bad_alloc&) {
    status = kHostNoMemory;
  }
  if (status != kHostOk && bitmap != nullptr) KernelFreeBitmap(bitmap);
  return status;
}

}  // namespace

int32_t ORB_CALL FileFormatDefaultLoadOptions(HostLoadOptions* options, uint32_t size) {
  if (options == nullptr || size != kLoadOptionsSize) return kHostInvalid;
  *options = {};
  options->size = size;
  return kHostOk;
}

int32_t ORB_CALL FileFormatDefaultSaveOptions(HostSaveOptions* options, uint32_t size) {
  if (options == nullptr || size != kSaveOptionsSize) return kHostInvalid;
  *options = {};
  options->size = size;
  return kHostOk;
}

HostLoadInfoCallback ORB_CALL FileFormatSetLoadInfoCallback(HostLoadInfoCallback callback,
                                                            void* userData) {
  const HostLoadInfoCallback previous = infoCallback.callback;
  infoCallback = {callback, userData};
  return previous;
}

int32_t ORB_CALL FileFormatInfoMemory(const void* bytes, HostFileInfo* info, uint32_t infoSize,
                                      uint32_t byteCount, uint32_t, const HostLoadOptions*) {
  if (bytes == nullptr || info == nullptr || infoSize != kFileInfoSize) return kHostInvalid;
  return Guarded(nullptr, [&] {
    if (HostkitShouldFail(kFaultCodec)) return kHostNotRecognised;
    *info = {};
    info->size = infoSize;
    const Bytes data(static_cast<const uint8_t*>(bytes), byteCount);
    return FindCodec(data, *info) != nullptr ? kHostOk : kHostNotRecognised;
  });
}

int32_t ORB_CALL FileFormatLoadMemory(const void* bytes, KernelBitmap* bitmap, uint32_t recordSize,
                                      uint32_t bitsPerPixel, uint32_t colourOrder, uint32_t byteCount,
                                      const HostLoadOptions* options, HostFileInfo* info) {
  if (bytes == nullptr || bitmap == nullptr || recordSize != kBitmapRecordSize) return kHostInvalid;
  if (colourOrder != kOrderBgr && colourOrder != kOrderAsDecoded) return kHostInvalid;
  if (options != nullptr && options->size != kLoadOptionsSize) return kHostInvalid;
  return Guarded(bitmap, [&] {
    HostFileInfo ownInfo = {};
    const HostLoadOptions ownOptions = {};
    return Load({static_cast<const uint8_t*>(bytes), byteCount},
                options != nullptr ? *options : ownOptions, bitsPerPixel, *bitmap,
                info != nullptr ? *info : ownInfo);
  });
}

int32_t ORB_CALL FileFormatSaveBitmapMemory(HGLOBAL* memory, const KernelBitmap* bitmap, uint32_t format,
                                            uint32_t bitsPerPixel, int32_t qualityFactor,
                                            uint32_t* byteCount, const HostSaveOptions* options) {
  if (options == nullptr || options->size != kSaveOptionsSize || (options->flags & kSaveToMemory) == 0)
    return kHostInvalid;
  if (memory == nullptr || byteCount == nullptr || !hostkit::IsAllocated(bitmap)) return kHostInvalid;
  if (format != kFormatJpegYcc && format != kFormatJpegRgb) return kHostUnsupported;
  return Guarded(nullptr, [&] {
    if (HostkitShouldFail(kFaultCodec)) return kHostUnsupported;
    std::string encoded;
    const int32_t status = hostkit::EncodeJpeg(*bitmap, format, bitsPerPixel, qualityFactor, encoded);
    if (status != kHostOk) return status;
    *memory = hostkit::CopyToGlobal(encoded);
    *byteCount = static_cast<uint32_t>(encoded.size());
    return *memory != nullptr ? kHostOk : kHostNoMemory;
  });
}
