#include "core/report/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "core/check/rule.h"
#include "core/format/words.h"
#include "core/pictures/box_scaler.h"
#include "core/pictures/load.h"
#include "core/pictures/picture.h"
#include "core/report/html.h"

namespace core {
namespace {

// An open file in memory.
class MemoryFile {
 public:
  MemoryFile() : file_(open_memstream(&bytes_, &size_)) {}
  ~MemoryFile() {
    if (file_ != nullptr) std::fclose(file_);
    std::free(bytes_);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  std::FILE* Stream() { return file_; }
  std::string Take() {
    std::fflush(file_);
    return {bytes_, size_};
  }

 private:
  char* bytes_ = nullptr;
  size_t size_ = 0;
  std::FILE* file_;
};

std::string Encode(const Pixels& pixels, PictureForm form) {
  MemoryFile memory;
  if (memory.Stream() == nullptr) return "";
  const auto writer = PictureWriter::Start(form, memory.Stream(), pixels.width, pixels.height);
  for (uint32_t y = 0; y < pixels.height; ++y) {
    if (!writer->PutRow(&pixels.rgb[size_t{y} * pixels.width * 3])) return "";
  }
  return writer->Finish() ? memory.Take() : "";
}

// A sample as a number, whatever it is.
double ValueAt(const SampleImage& image, const uint8_t* at) {
  uint64_t bits = 0;
  std::memcpy(&bits, at, image.sampleBytes);
  if (image.kind == SampleKind::Real && image.sampleBytes == 4) {
    float value;
    std::memcpy(&value, at, sizeof value);
    return std::isfinite(value) ? value : 0;
  }
  if (image.kind == SampleKind::Real) {
    double value;
    std::memcpy(&value, at, sizeof value);
    return std::isfinite(value) ? value : 0;
  }
  if (image.kind == SampleKind::Complex) {
    float parts[2];
    std::memcpy(parts, at, sizeof parts);
    const double size = std::hypot(parts[0], parts[1]);
    return std::isfinite(size) ? size : 0;
  }
  if (image.kind == SampleKind::Signed) {
    const uint32_t shift = 64 - image.bits;
    return static_cast<double>(static_cast<int64_t>(bits << shift) >> shift);
  }
  return static_cast<double>(bits);
}

// What is shown as black and as white.
struct Range {
  double low, high;
};
Range RangeOf(const SampleImage& image) {
  if (image.kind == SampleKind::Unsigned && image.bits <= 16)
    return {0, static_cast<double>((1u << std::min(image.significantBits, image.bits)) - 1)};
  Range range = {0, 0};
  const size_t count = image.samples.size() / image.sampleBytes;
  for (size_t i = 0; i < count; ++i) {
    const double value = ValueAt(image, &image.samples[i * image.sampleBytes]);
    range.low = i == 0 ? value : std::min(range.low, value);
    range.high = i == 0 ? value : std::max(range.high, value);
  }
  return range;
}

uint8_t ToByte(double value, const Range& range) {
  const double scaled = range.high > range.low ? 255 * (value - range.low) / (range.high - range.low) : 0;
  return static_cast<uint8_t>(std::clamp(scaled, 0.0, 255.0));
}

void ToColour(const SampleImage& image, uint8_t* rgb) {
  if (image.representation != "YCbCr601") return;
  const double y = rgb[0], cb = rgb[1] - 128.0, cr = rgb[2] - 128.0;
  const auto clamp = [](double value) {
    return static_cast<uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
  };
  rgb[0] = clamp(y + 1.402 * cr);
  rgb[1] = clamp(y - 0.344136 * cb - 0.714136 * cr);
  rgb[2] = clamp(y + 1.772 * cb);
}

}  // namespace

std::string DataUri(const Pixels& pixels, size_t mostPng) {
  if (pixels.width == 0 || pixels.height == 0) return "";
  // Few colours are smaller without loss, photographs with some.
  const std::string png = Encode(pixels, PictureForm::Png);
  if (!png.empty() && png.size() <= mostPng) return "data:image/png;base64," + Base64(png);
  const std::string jpeg = Encode(pixels, PictureForm::Jpeg);
  return jpeg.empty() ? "" : "data:image/jpeg;base64," + Base64(jpeg);
}

Pixels PictureOf(const SampleImage& image, uint32_t side) {
  const uint32_t longer = std::max(image.width, image.height), factor = (longer + side - 1) / side;
  const Range range = RangeOf(image);
  BoxScaler scaler(image.width, image.height, std::max(1u, factor));
  Pixels pixels = {scaler.Width(), scaler.Height(), {}};
  std::vector<uint8_t> row(size_t{image.width} * 3);
  for (uint32_t y = 0; y < image.height; ++y) {
    for (uint32_t x = 0; x < image.width; ++x) {
      const uint8_t* at = image.Pixel(x, y);
      uint8_t rgb[3];
      if (!image.palette.empty()) {
        const auto entry = static_cast<size_t>(ValueAt(image, at));
        for (size_t c = 0; c < 3; ++c)
          rgb[c] = 3 * entry + c < image.palette.size() ? image.palette[3 * entry + c] : 0;
      } else {
        for (size_t c = 0; c < 3; ++c) {
          const size_t band = image.bands >= 3 ? c : 0;
          rgb[c] = ToByte(ValueAt(image, at + band * image.sampleBytes), range);
        }
        ToColour(image, rgb);
      }
      std::copy(rgb, rgb + 3, &row[3 * size_t{x}]);
    }
    const uint8_t* scaled = scaler.Take(row.data());
    if (scaled != nullptr) pixels.rgb.insert(pixels.rgb.end(), scaled, scaled + size_t{pixels.width} * 3);
  }
  return pixels;
}

std::string DrawingUri(const Survey& survey, const SurveyedPart& part) {
  constexpr int32_t kSide = 480;
  MemoryFile memory;
  media::Drawing drawing;
  if (memory.Stream() == nullptr || LoadDrawing(survey.Data(part), drawing) != media::Outcome::Ok ||
      PaintPng(drawing, kSide, memory.Stream()) != media::Outcome::Ok)
    return "";
  return "data:image/png;base64," + Base64(memory.Take());
}

uint32_t ReduceFor(const SurveyedPart& part, uint32_t side) {
  const std::string_view compression = part.Text("IC");
  const bool isJpeg = IsOneOf(compression, "C3|M3"), isCodestream = IsOneOf(compression, "C8|M8");
  if (!isJpeg && !isCodestream) return 0;
  const int64_t longer = std::max(part.Number("NROWS"), part.Number("NCOLS"));
  uint32_t reduce = 0;
  while (longer >> (reduce + 1) >= static_cast<int64_t>(side) && reduce < (isJpeg ? 3u : 5u)) ++reduce;
  return reduce;
}

}  // namespace core
