// JPEG and JPEG 2000 files.
#include <cstring>

#include "core/format/file_source.h"
#include "core/pictures/raster.h"
#include "media/codecs/jpeg.h"
#include "media/codecs/jpeg2000.h"
#include "media/work.h"

namespace core {
namespace {

// A file as decoders read it.
class PictureSource : public FileSource {
 public:
  explicit PictureSource(const FileBytes& file) : FileSource(file, 0, file.Size()) {}
  void Require(media::Outcome outcome, const char* what) const {
    if (Checked(outcome) != media::Outcome::Ok) throw PictureError(FaultOf(outcome, what).words);
  }
};

class JpegRaster : public Raster {
 public:
  JpegRaster(const FileBytes& file, const media::JpegFrame& frame) : source_(file) {
    if (frame.components != 1 && frame.components != 3)
      throw PictureError("a JPEG file of " + std::to_string(frame.components) +
                         " components; --as-is stores its stream");
    form_.width = frame.width;
    form_.height = frame.height;
    form_.bands = frame.components;
    form_.bits = frame.precision;
    form_.sampleBytes = PieceBytes(frame.precision);
    form_.isColour = frame.components == 3;
    RequireSize(form_);
  }
  void Read(const TakePiece& take) override {
    media::AllowPixels(uint64_t{form_.width} * form_.height);
    media::JpegRequest request;
    request.colours = media::JpegColours::YccUnlessDeclared;
    source_.Require(media::DecodeJpeg(source_.Get(), request,
                                      [&](const media::RowForm& row, uint32_t y, const uint8_t* samples) {
                                        take({0, y, row.width, 1, 0, row.components, samples});
                                        return media::Outcome::Ok;
                                      }),
                    "the JPEG file");
  }

 private:
  PictureSource source_;
};

class Jpeg2000Raster : public Raster {
 public:
  explicit Jpeg2000Raster(const FileBytes& file) : source_(file) {
    media::CodestreamSize size;
    const bool isFound = media::FindCodestreamSize(source_.Get(), size);
    source_.Check();
    if (!isFound) throw PictureError("JPEG 2000: it is damaged");
    form_.width = size.width;
    form_.height = size.height;
    RequireSize(form_);
    // What its first pixel is tells of all: a file's palette may change the components.
    Decode({0, 0, 1, 1}, [this](const media::CodestreamPart& part) { TakeForm(part); });
  }
  void Read(const TakePiece& take) override {
    media::AllowPixels(uint64_t{form_.width} * form_.height * form_.bands);
    std::vector<uint8_t> samples;
    Decode({}, [&](const media::CodestreamPart& part) {
      samples.resize(size_t{part.place.width} * part.place.height * form_.bands * form_.sampleBytes);
      uint8_t* out = samples.data();
      for (uint32_t y = 0; y < part.place.height; ++y) {
        for (uint32_t x = 0; x < part.place.width; ++x) {
          for (const media::Plane& plane : part.planes) out = Put(plane.At(plane.Line(y), x), out);
        }
      }
      take({part.place.left, part.place.top, part.place.width, part.place.height, 0, form_.bands,
            samples.data()});
    });
  }

 private:
  uint8_t* Put(int32_t value, uint8_t* out) const {
    if (form_.sampleBytes == 1) {
      *out = static_cast<uint8_t>(value);
    } else if (form_.sampleBytes == 2) {
      const auto sample = static_cast<uint16_t>(value);
      std::memcpy(out, &sample, 2);
    } else {
      std::memcpy(out, &value, 4);
    }
    return out + form_.sampleBytes;
  }
  template <class Take>
  void Decode(const media::Window& window, Take take) {
    media::Jpeg2000Request request;
    request.window = window;
    source_.Require(media::DecodeJpeg2000(source_.Get(), request,
                                          [&](const media::CodestreamPart& part) {
                                            take(part);
                                            return media::Outcome::Ok;
                                          }),
                    "the JPEG 2000 file");
  }
  void TakeForm(const media::CodestreamPart& part) {
    if (part.colour == media::DeclaredColour::Ycc)
      throw PictureError(
          "JPEG 2000: its colours are luminance and differences; --as-is stores its stream");
    form_.bands = static_cast<uint32_t>(part.planes.size());
    form_.bits = 1;
    for (const media::Plane& plane : part.planes) {
      if (plane.isSigned != part.planes[0].isSigned)
        throw PictureError("JPEG 2000: some of its components are signed");
      form_.bits = std::max(form_.bits, plane.precision);
    }
    form_.kind = part.planes[0].isSigned ? SampleKind::Signed : SampleKind::Unsigned;
    form_.sampleBytes = PieceBytes(form_.bits);
    form_.isColour = form_.bands == 3 && part.colour != media::DeclaredColour::Other;
  }

  PictureSource source_;
};

}  // namespace

std::unique_ptr<Raster> OpenJpegPicture(const FileBytes& file) {
  const PictureSource source(file);
  const bool isJpeg2000 = media::IsCodestream(source.Get()) || media::IsJp2(source.Get());
  source.Require(media::Outcome::Ok, "");
  if (isJpeg2000) return std::make_unique<Jpeg2000Raster>(file);
  media::JpegFrame frame;
  if (file.At(0, 2) != "\xFF\xD8") return nullptr;
  const bool isFound = media::FindJpegFrame(source.Get(), frame);
  source.Check();
  if (!isFound) throw PictureError("JPEG: it is damaged");
  return std::make_unique<JpegRaster>(file, frame);
}

}  // namespace core
