#include "tools/orbntf/inspect/load.h"

#include <cstring>

#include "hostkit/hostkit.h"
#include "tools/orbntf/inputs.h"

namespace tool {
namespace {

// What the host's codecs give: 8-bit grey, 16-bit grey in host order, or blue, green, red.
void TakeBitmap(const KernelBitmap& bitmap, Picture& picture) {
  picture.width = bitmap.width;
  picture.height = bitmap.height;
  picture.channels = bitmap.bitsPerPixel == 24 ? 3 : 1;
  picture.bits = bitmap.bitsPerPixel == 16 ? 16 : 8;
  const size_t rowBytes = size_t{bitmap.width} * bitmap.bitsPerPixel / 8;
  picture.samples.resize(rowBytes * bitmap.height);
  const auto* rows = reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(bitmap.pixels));
  for (size_t y = 0; y < bitmap.height; ++y) {
    uint8_t* out = &picture.samples[y * rowBytes];
    std::memcpy(out, rows + y * bitmap.bytesPerLine, rowBytes);
    for (size_t x = 0; picture.channels == 3 && x < rowBytes; x += 3) std::swap(out[x], out[x + 2]);
    for (size_t x = 0; picture.bits == 16 && x < rowBytes; x += 2) {
      uint16_t value;
      std::memcpy(&value, out + x, sizeof value);
      out[x] = static_cast<uint8_t>(value >> 8);
      out[x + 1] = static_cast<uint8_t>(value);
    }
  }
}

int32_t LoadByHost(const std::string& bytes, Picture& picture) {
  Bitmap bitmap;
  const int32_t status =
      FileFormatLoadMemory(bytes.data(), &bitmap.record, kBitmapRecordSize, 0, kOrderAsDecoded,
                           static_cast<uint32_t>(bytes.size()), nullptr, nullptr);
  if (status == kHostOk) TakeBitmap(bitmap.record, picture);
  return status;
}

}  // namespace

int32_t LoadInput(const std::string& path, Picture& picture) {
  const std::string bytes = ReadWhole(path);
  const media::Outcome outcome = LoadPicture(bytes, picture);
  return outcome == media::Outcome::NotRecognised ? LoadByHost(bytes, picture)
                                                  : static_cast<int32_t>(outcome);
}

int32_t Bitmap::Take(const Picture& picture) {
  const bool grey = picture.channels == 1;
  const int32_t status =
      KernelAllocateBitmap(&record, kBitmapRecordSize, 1, picture.width, picture.height, grey ? 8 : 24,
                           grey ? kOrderRgb : kOrderBgr, nullptr, kViewTopLeft, nullptr, 0);
  if (status != kHostOk) return status;
  const size_t rowBytes = size_t{picture.width} * picture.channels;
  auto* rows = reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(record.pixels));
  for (size_t y = 0; y < picture.height; ++y) {
    uint8_t* out = rows + y * record.bytesPerLine;
    std::memcpy(out, &picture.samples[y * rowBytes], rowBytes);
    for (size_t x = 0; !grey && x < rowBytes; x += 3) std::swap(out[x], out[x + 2]);
  }
  return kHostOk;
}

int32_t DrawingHolder::Load(const std::string& path) {
  const std::string bytes = ReadWhole(path);
  HostLoadOptions options;
  FileFormatDefaultLoadOptions(&options, kLoadOptionsSize);
  options.flags |= kLoadFlagsAlways;
  return FileFormatLoadDrawingMemory(bytes.data(), &handle, static_cast<uint32_t>(bytes.size()), &options,
                                     0);
}

}  // namespace tool
