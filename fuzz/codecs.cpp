#include "fuzz/support.h"

namespace {

using fuzz::Choices;

struct RawData {
  uint32_t format, width, height;
};

int32_t ORB_CALL Describe(HostRawDataInfo* info, void* userData) {
  const auto& raw = *static_cast<const RawData*>(userData);
  info->format = raw.format;
  info->width = raw.width;
  info->height = raw.height;
  info->bitsPerPixel = 1;
  info->bitOrder = 1;
  return 1;
}

int Load(const uint8_t* data, const size_t& size, Choices& choices, bool recognise) {
  HostLoadOptions options = {};
  options.size = kLoadOptionsSize;
  const uint8_t byte = choices.Byte();
  options.flags = (byte & 1 ? kLoadComponentsAreRgb : 0) | (byte & 2 ? kLoadSelectedBands : 0);
  for (int32_t& band : options.bands) band = static_cast<int8_t>(choices.Byte());
  const uint32_t depth = byte & 4 ? 24 : 0;
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, byte & 8 ? choices.Byte() : 0,
                         byte & 8 ? choices.Byte() : 0, 0);
  const auto bytes = static_cast<uint32_t>(size);
  HostFileInfo info = {};
  const bool known = FileFormatInfoMemory(data, &info, kFileInfoSize, bytes, 0, nullptr) == kHostOk;
  const int32_t status = FileFormatLoadMemory(data, &bitmap, kBitmapRecordSize, depth, kOrderAsDecoded,
                                              bytes, &options, nullptr);
  if (status == kHostOk) {
    fuzz::Require(known || !recognise, "what decodes is recognised");
    fuzz::Require(!recognise || (bitmap.width <= info.width && bitmap.height <= info.height),
                  "a picture no larger than was said");
  }
  KernelFreeBitmap(&bitmap);
  fuzz::RequireNothingHeld();
  return 0;
}

// Streams of one codec: others are left to their own target.
int LoadStream(const uint8_t* data, size_t size, bool jpeg) {
  fuzz::Begin(size);
  Choices choices(data, size);
  if (size < 2 || (data[0] == 0xFF && data[1] == 0xD8) != jpeg) return -1;
  return Load(data, size, choices, true);
}

}  // namespace

int fuzz::Jpeg(const uint8_t* data, size_t size) { return LoadStream(data, size, true); }
int fuzz::Jpeg2000(const uint8_t* data, size_t size) { return LoadStream(data, size, false); }

int fuzz::Facsimile(const uint8_t* data, size_t size) {
  Begin(size);
  Choices choices(data, size);
  RawData raw = {choices.Byte() % 2 == 0 ? kFormatFacsimile1D : kFormatFacsimile2D,
                 choices.Byte() * 16u + choices.Byte() % 16u, choices.Byte() * 4u};
  const HostLoadInfoCallback previous = FileFormatSetLoadInfoCallback(&Describe, &raw);
  (void)Load(data, size, choices, false);
  (void)FileFormatSetLoadInfoCallback(previous, nullptr);
  return 0;
}
