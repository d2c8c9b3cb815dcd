// JPEG streams as the host's bitmaps.
#include <vector>

#include "hostkit/fileformat/codec.h"
#include "hostkit/kernel/pixels_rows.h"
#include "media/codecs/jpeg.h"
#include "media/shuffle.h"

namespace hostkit {
namespace {

using media::Outcome;

bool Describe(Bytes bytes, HostFileInfo& info) {
  media::JpegFrame frame;
  if (!media::FindJpegFrame(media::WithoutFill(bytes), frame)) return false;
  info.format = kFormatJpegYcc;
  info.width = frame.width;
  info.height = frame.height;
  info.bitsPerPixel = frame.components >= 3 ? 24 : frame.precision <= 8 ? 8 : 16;
  info.pageNumber = info.pageCount = 1;
  return true;
}

// Whether libjpeg decodes a stream: then colour is converted where it is decoded.
bool IsNarrow(const media::JpegFrame& frame) {
  return frame.precision == 8 && !frame.IsLossless() && frame.components <= 4;
}

int32_t Load(Bytes stream, const HostLoadOptions& options, KernelBitmap& bitmap) {
  media::JpegFrame frame;
  if (!media::FindJpegFrame(media::WithoutFill(stream), frame)) return kHostNotRecognised;
  const bool selected = (options.flags & kLoadSelectedBands) != 0;
  const bool rgb = (options.flags & kLoadComponentsAreRgb) != 0;
  const bool three = frame.components == 3 && !selected;
  media::JpegRequest request;
  request.readsEnd = true;
  request.width = bitmap.width;
  request.height = bitmap.height;
  if (three && IsNarrow(frame))
    request.colours = rgb ? media::JpegColours::RgbUnlessDeclared : media::JpegColours::YccUnlessDeclared;
  const bool isYcc = three && !IsNarrow(frame) && !frame.IsLossless() && !rgb;
  bool started = false;
  const Outcome outcome =
      media::DecodeJpeg(stream, request, [&](const media::RowForm& form, uint32_t y, const uint8_t* row) {
        if (!started) {
          if (const int32_t status = AllocateForSamples(form, bitmap); status != kHostOk)
            return static_cast<Outcome>(status);
          started = true;
        }
        PutSamples(form, row, options, isYcc, bitmap, y);
        return Outcome::Ok;
      });
  return StatusOf(outcome);
}

// A quality factor of 2 keeps the most, 255 the least.
int32_t LibraryQuality(int32_t factor) { return 100 - (factor - 2) * 99 / 253; }

// Rows of a bitmap as they are encoded: blue, green, red, or their luminance.
class EncodedRows {
 public:
  EncodedRows(const KernelBitmap& bitmap, bool grey)
      : bitmap_(bitmap),
        reader_(bitmap, PixelCount(bitmap)),
        bgr_(3 * size_t{bitmap.width}),
        grey_(grey ? bitmap.width : 0) {}
  const uint8_t* Row(uint32_t y) {
    reader_.Read(PictureRow(bitmap_, y), 0, bitmap_.width, bgr_.data());
    if (grey_.empty()) return bgr_.data();
    for (size_t x = 0; x < grey_.size(); ++x) grey_[x] = Luminance(&bgr_[3 * x]);
    return grey_.data();
  }

 private:
  const KernelBitmap& bitmap_;
  RowReader reader_;
  std::vector<uint8_t> bgr_, grey_;
};

}  // namespace

const Codec kJpegCodec = {&Describe, &Load};

int32_t EncodeJpeg(const KernelBitmap& bitmap, uint32_t format, uint32_t bitsPerPixel,
                   int32_t qualityFactor, std::string& bytes) {
  const bool grey = bitsPerPixel == 8;
  EncodedRows rows(bitmap, grey);
  return StatusOf(media::EncodeJpeg(
      {bitmap.width, bitmap.height, grey, format == kFormatJpegRgb, LibraryQuality(qualityFactor)},
      [&](uint32_t y) { return rows.Row(y); }, bytes));
}

}  // namespace hostkit
