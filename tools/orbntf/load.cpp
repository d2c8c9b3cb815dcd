#include "tools/orbntf/load.h"

#include <fstream>
#include <sstream>
#include <vector>

#include <png.h>

#include "hostkit/hostkit.h"

namespace tool {
namespace {

bool ReadFile(const std::string& path, std::string& bytes) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  bytes = text.str();
  return file.good();
}

int32_t LoadPng(const std::string& bytes, KernelBitmap& bitmap) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0)
    return kHostNotRecognised;
  const bool grey = (image.format & PNG_FORMAT_FLAG_COLOR) == 0;
  image.format = grey ? PNG_FORMAT_GRAY : PNG_FORMAT_BGR;
  const int32_t status =
      KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, image.width, image.height, grey ? 8 : 24,
                           grey ? kOrderRgb : kOrderBgr, nullptr, kViewTopLeft, nullptr, 0);
  if (status == kHostOk) {
    std::vector<uint8_t> pixels(size_t{bitmap.bytesPerLine} * bitmap.height);
    const png_color white = {255, 255, 255};
    if (png_image_finish_read(&image, &white, pixels.data(), static_cast<png_int_32>(bitmap.bytesPerLine),
                              nullptr) != 0) {
      KernelSetBitmapData(&bitmap, pixels.data(), static_cast<uint32_t>(pixels.size()));
      return kHostOk;
    }
  }
  png_image_free(&image);
  return status == kHostOk ? kHostBadData : status;
}

}  // namespace

int32_t Bitmap::Load(const std::string& path) {
  std::string bytes;
  if (!ReadFile(path, bytes)) return -7;
  const int32_t status = LoadPng(bytes, record);
  if (status != kHostNotRecognised) return status;
  return FileFormatLoadMemory(bytes.data(), &record, kBitmapRecordSize, 0, kOrderAsDecoded,
                              static_cast<uint32_t>(bytes.size()), nullptr, nullptr);
}

int32_t DrawingHolder::Load(const std::string& path) {
  std::string bytes;
  if (!ReadFile(path, bytes)) return -7;
  HostLoadOptions options;
  FileFormatDefaultLoadOptions(&options, kLoadOptionsSize);
  options.flags |= kLoadFlagsAlways;
  return FileFormatLoadDrawingMemory(bytes.data(), &handle, static_cast<uint32_t>(bytes.size()), &options,
                                     0);
}

}  // namespace tool
