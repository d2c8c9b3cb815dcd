// Pictures stored as they are: the image record is described anew and its data replaced.
#include <algorithm>
#include <cstring>

#include "tools/orbntf/commands/compose.h"

namespace tool {
namespace {

constexpr char16_t kSourceFile[] = u"lossless";
constexpr uint32_t kLargestBlock = 8192, kBlock = 1024;

struct Blocking {
  uint32_t width, height;  // of a block
  uint32_t across, down;
};

Blocking BlockingOf(const Picture& picture) {
  if (picture.width <= kLargestBlock && picture.height <= kLargestBlock)
    return {picture.width, picture.height, 1, 1};
  return {kBlock, kBlock, (picture.width + kBlock - 1) / kBlock, (picture.height + kBlock - 1) / kBlock};
}

// The bands of each block one after the other; pixels beyond the picture are zero.
std::vector<uint8_t> BlockedSamples(const Picture& picture, const Blocking& blocking) {
  const size_t bytes = picture.bits / 8, bands = picture.channels;
  const size_t blockPixels = size_t{blocking.width} * blocking.height;
  std::vector<uint8_t> data(blockPixels * bands * bytes * blocking.across * blocking.down);
  uint8_t* block = data.data();
  for (uint32_t n = 0; n < blocking.across * blocking.down; ++n) {
    const uint32_t left = n % blocking.across * blocking.width,
                   top = n / blocking.across * blocking.height;
    const uint32_t columns = std::min(blocking.width, picture.width - left);
    const uint32_t rows = std::min(blocking.height, picture.height - top);
    for (size_t band = 0; band < bands; ++band, block += blockPixels * bytes) {
      for (uint32_t y = 0; y < rows; ++y) {
        const uint8_t* in = &picture.samples[((size_t{top} + y) * picture.width + left) * bands * bytes];
        uint8_t* out = block + size_t{y} * blocking.width * bytes;
        for (uint32_t x = 0; x < columns; ++x, in += bands * bytes, out += bytes)
          std::memcpy(out, in + band * bytes, bytes);
      }
    }
  }
  return data;
}

// A number's text and its value, which place and size follow from at once.
bool SetValue(ImageSubheader& image, const char* name, uint32_t value) {
  const FieldRow<ImageSubheader>* row = FindRow<ImageSubheader>(ImageSubheader::Table(), name);
  const FieldView field = row->view(image);
  if (!Ok(SetNumber(*row, field, static_cast<int32_t>(value)))) return false;
  *field.value = value;
  return true;
}

bool Describe(ImageSubheader& image, const Picture& picture, const Blocking& blocking) {
  const std::pair<const char*, uint32_t> numbers[] = {
      {"NROWS", picture.height}, {"NCOLS", picture.width},  {"ABPP", picture.bits},
      {"NBPP", picture.bits},    {"NBPR", blocking.across}, {"NBPC", blocking.down},
      {"NPPBH", blocking.width}, {"NPPBV", blocking.height}};
  for (const auto& [name, value] : numbers) {
    if (!SetValue(image, name, value)) return false;
  }
  const FieldRow<ImageSubheader>* mode = FindRow<ImageSubheader>(ImageSubheader::Table(), "IMODE");
  return Ok(SetCode(*mode, mode->view(image), "B")) && Ok(image.SetCompression("NC"));
}

}  // namespace

int32_t AppendUncompressed(NitfHandle document, const Picture& picture) {
  // One pixel makes the segment, its bands and its entry in the file header.
  Picture seed;
  seed.width = seed.height = 1;
  seed.channels = picture.channels;
  seed.samples.resize(seed.channels);
  Bitmap bitmap;
  int32_t status = bitmap.Take(seed);
  if (status != ORB_SUCCESS) return status;
  status = Orb_NITFAppendImageSegment(document, &bitmap.record, kFormatJpegRgb, seed.channels * 8, 2);
  if (status != ORB_SUCCESS) return status;
  const Blocking blocking = BlockingOf(picture);
  const std::vector<uint8_t> data = BlockedSamples(picture, blocking);
  ImageSubheader& image = *document->images.Last();
  FileHeader& header = document->header;
  if (data.size() > 9999999998u || data.size() > UINT32_MAX || !Describe(image, picture, blocking))
    return ORB_INVALID_PARAMETER;
  uint32_t& length = header.images.current[image.index].data;
  if (!Ok(header.SetFileLength(header.fileLength - length + data.size()))) return ORB_INVALID_PARAMETER;
  length = static_cast<uint32_t>(data.size());
  return ToCaller(image.appended.Set(data.data(), length, ORB_HERE));
}

}  // namespace tool
