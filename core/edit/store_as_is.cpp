// Streams of JPEG and JPEG 2000 files that become image data as they are.
#include <algorithm>
#include <cmath>

#include "core/edit/store_streams.h"
#include "core/format/file_source.h"
#include "core/format/part.h"
#include "media/codecs/jpeg.h"
#include "media/codecs/jpeg2000.h"

namespace core {
namespace {

constexpr uint32_t kLargestBlock = 8192;

void TakeColours(uint32_t components, bool isYcc, ImageForm& form) {
  constexpr const char* kRgb[] = {"R", "G", "B"};
  constexpr const char* kYcc[] = {"Y", "Cb", "Cr"};
  form.bands.assign(components, BandForm());
  form.representation = components == 1 ? "MONO" : components != 3 ? "MULTI" : isYcc ? "YCbCr601" : "RGB";
  form.category = components > 3 ? "MS" : "VIS";
  if (components == 1) form.bands[0].representation = "M";
  for (size_t i = 0; i < 3 && components == 3; ++i)
    form.bands[i].representation = isYcc ? kYcc[i] : kRgb[i];
}

// A side of more than 8192 pixels in one block is written as 0.
uint64_t SideOf(uint32_t side) { return side > kLargestBlock ? 0 : side; }

// Whether an Adobe segment says that three components are red, green and blue.
bool IsRgbJpeg(const FileBytes& file) {
  const std::string front = file.At(0, 64 << 10);
  const size_t adobe = front.find(std::string("\xFF\xEE\x00\x0E", 4) + "Adobe");
  return adobe != std::string::npos && adobe + 15 < front.size() && front[adobe + 15] == 0;
}

void DescribeJpeg(const FileBytes& file, const media::JpegFrame& frame, StoredImage& image) {
  ImageForm& form = image.form;
  TakeColours(frame.components, !IsRgbJpeg(file), form);
  form.rows = frame.height;
  form.columns = frame.width;
  form.bits = form.significantBits = frame.precision;
  form.compression = frame.IsLossless() ? "C5" : "C3";
  form.rate = "00.0";
  form.mode = frame.components == 1 ? 'B' : 'P';
  form.blockWidth = SideOf(frame.width);
  form.blockHeight = SideOf(frame.height);
}

// Whether the first coding style of a codestream's header is reversible.
bool IsReversible(const std::string& front) {
  const size_t cod = front.find("\xFF\x52");
  return cod != std::string::npos && cod + 13 < front.size() && front[cod + 13] == 1;
}

void DescribeCodestream(const std::string& front, const media::CodestreamSize& size, uint64_t bytes,
                        StoredImage& image) {
  ImageForm& form = image.form;
  constexpr size_t kDepths = 42;  // of the first component, in the codestream's size segment
  TakeColours(size.components, false, form);
  form.rows = size.height;
  form.columns = size.width;
  form.bits = form.significantBits = size.precision;
  if (front.size() > kDepths && (static_cast<uint8_t>(front[kDepths]) & 0x80) != 0) form.pixelType = "SI";
  form.compression = "C8";
  const double rate = 8.0 * static_cast<double>(bytes) /
                      (static_cast<double>(size.width) * size.height * size.components);
  form.rate =
      IsReversible(front)
          ? "N" +
                NumberDigits(static_cast<uint64_t>(std::llround(std::min(99.9, rate) * 10)), 3, "COMRAT")
          : NumberDigits(static_cast<uint64_t>(std::llround(std::min(99.99, rate) * 100)), 4, "COMRAT");
  const uint32_t width = std::min(size.tileWidth, size.width),
                 height = std::min(size.tileHeight, size.height);
  form.blocksAcross = (size.width + width - 1) / width;
  form.blocksDown = (size.height + height - 1) / height;
  form.blockWidth = SideOf(width);
  form.blockHeight = SideOf(height);
}

}  // namespace

StoredImage StoreAsIs(Draft& draft, const std::string& path) {
  const FileBytes& file = draft.Keep(std::make_shared<FileBytes>(path));
  if (!file.IsOpen()) throw ReadError(path, errno != 0 ? WordsOfErrno(errno) : "is no regular file");
  const FileSource bytes(file, 0, file.Size());
  const media::Source& source = bytes.Get();
  StoredImage image;
  media::JpegFrame frame;
  if (file.At(0, 2) == "\xFF\xD8" && media::FindJpegFrame(source, frame)) {
    DescribeJpeg(file, frame, image);
    image.data = {{&file, 0, file.Size()}};
    return image;
  }
  const media::Source stream = media::CodestreamOf(source);
  media::CodestreamSize size;
  bytes.Check();
  if (stream.Size() == 0 || !media::FindCodestreamSize(stream, size))
    throw PictureError("--as-is stores the stream of a JPEG or JPEG 2000 file, and this is neither");
  const uint64_t begin = file.Size() - stream.Size();
  DescribeCodestream(file.At(begin, 4096), size, stream.Size(), image);
  image.data = {{&file, begin, stream.Size()}};
  return image;
}

}  // namespace core
