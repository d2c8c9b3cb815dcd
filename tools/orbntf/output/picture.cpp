#include "tools/orbntf/output/picture.h"

#include <algorithm>
#include <csetjmp>

#include <png.h>

#include "hostkit/hostkit.h"
#include "hostkit/kernel/pixels_shuffle.h"
#include "orbntf/orbntf.h"

namespace tool {
namespace {

class PpmWriter : public PictureWriter {
 public:
  PpmWriter(std::FILE* file, uint32_t width, uint32_t height) : file_(file), bytes_(size_t{width} * 3) {
    good_ = std::fprintf(file, "P6\n%u %u\n255\n", width, height) > 0;
    rows_.reserve(kPiece + bytes_);
  }
  bool PutRow(const uint8_t* rgb) override {
    rows_.insert(rows_.end(), rgb, rgb + bytes_);
    return rows_.size() < kPiece || Flush();
  }
  bool Finish() override { return Flush() && std::fflush(file_) == 0; }

 private:
  static constexpr size_t kPiece = 256 << 10;  // bytes that are written at once

  bool Flush() {
    good_ = good_ && std::fwrite(rows_.data(), 1, rows_.size(), file_) == rows_.size();
    rows_.clear();
    return good_;
  }

  std::FILE* file_;
  size_t bytes_;
  std::vector<uint8_t> rows_;
  bool good_;
};

// libpng's errors jump back into the call that met them; nothing with a destructor lives in between.
class PngWriter : public PictureWriter {
 public:
  PngWriter(std::FILE* file, uint32_t width, uint32_t height, bool alpha) : file_(file) {
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, &Silent, &Silent);
    info_ = png_ != nullptr ? png_create_info_struct(png_) : nullptr;
    good_ = info_ != nullptr && Begin(width, height, alpha);
  }
  ~PngWriter() override { png_destroy_write_struct(&png_, &info_); }

  bool PutRow(const uint8_t* rgb) override {
    if (!good_ || setjmp(png_jmpbuf(png_)) != 0) return good_ = false;
    png_write_row(png_, rgb);
    return true;
  }
  bool Finish() override {
    if (!good_ || setjmp(png_jmpbuf(png_)) != 0) return false;
    png_write_end(png_, nullptr);
    return std::fflush(file_) == 0;
  }

 private:
  static void Silent(png_structp png, png_const_charp) { png_longjmp(png, 1); }

  bool Begin(uint32_t width, uint32_t height, bool alpha) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_init_io(png_, file_);
    png_set_user_limits(png_, 0x7FFFFFFF, 0x7FFFFFFF);
    png_set_compression_level(png_, 4);
    png_set_IHDR(png_, info_, width, height, 8, alpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png_, info_);
    return true;
  }

  std::FILE* file_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  bool good_ = false;
};

}  // namespace

std::optional<PictureForm> PictureFormOf(std::string_view word) {
  constexpr std::pair<std::string_view, PictureForm> kForms[] = {
      {"png", PictureForm::Png},  {"ppm", PictureForm::Ppm},   {"jpeg", PictureForm::Jpeg},
      {"jpg", PictureForm::Jpeg}, {"tiff", PictureForm::Tiff}, {"tif", PictureForm::Tiff}};
  for (const auto& [name, form] : kForms) {
    if (word == name) return form;
  }
  return std::nullopt;
}

const char* EndingOf(PictureForm form) {
  constexpr const char* kEndings[] = {".png", ".ppm", ".jpg", ".tif"};
  return kEndings[static_cast<size_t>(form)];
}

std::unique_ptr<PictureWriter> PictureWriter::Start(PictureForm form, std::FILE* file, uint32_t width,
                                                    uint32_t height) {
  switch (form) {
    case PictureForm::Ppm:
      return std::make_unique<PpmWriter>(file, width, height);
    case PictureForm::Jpeg:
      return StartJpeg(file, width, height);
    case PictureForm::Tiff:
      return StartTiff(file, width, height);
    case PictureForm::Png:
      break;
  }
  return StartPng(file, width, height, false);
}

std::unique_ptr<PictureWriter> StartPng(std::FILE* file, uint32_t width, uint32_t height, bool alpha) {
  return std::make_unique<PngWriter>(file, width, height, alpha);
}

namespace {

struct PaintedPng {
  std::FILE* file;
  std::unique_ptr<PictureWriter> writer;
};

int32_t ORB_CALL PutPaintedRow(const uint8_t* rgba, uint32_t width, uint32_t height, void* userData) {
  auto& png = *static_cast<PaintedPng*>(userData);
  if (png.writer == nullptr) png.writer = StartPng(png.file, width, height, true);
  return png.writer->PutRow(rgba) ? ORB_SUCCESS : ORB_SHORT_WRITE;
}

}  // namespace

int32_t PaintPng(const VectorHandle& drawing, int32_t longerSide, std::FILE* file) {
  PaintedPng png = {file, nullptr};
  const int32_t status = HostkitPaintDrawing(&drawing, longerSide, &PutPaintedRow, &png);
  if (status != ORB_SUCCESS) return status;
  return png.writer != nullptr && png.writer->Finish() ? ORB_SUCCESS : ORB_SHORT_WRITE;
}

BoxScaler::BoxScaler(uint32_t width, uint32_t height, uint32_t factor)
    : width_(width), height_(height), factor_(factor), rgb_(3 * size_t{Width()}) {
  if (factor > kMostShort) longSums_.resize(3 * size_t{width});
  if (factor > 1 && factor <= kMostShort) shortSums_.resize(3 * size_t{width});
}

const uint8_t* BoxScaler::Take(const uint8_t* bgr) {
  ++rowsTaken_;
  if (factor_ == 1) {
    hostkit::SwapEnds(bgr, width_, rgb_.data());
    return rgb_.data();
  }
  // Rows are added up first, the columns of a square only once.
  const bool isLast = ++rowsHeld_ == factor_ || rowsTaken_ == height_;
  if (factor_ <= kMostShort) {
    Add(bgr, shortSums_);
    if (isLast) Average<uint32_t>(shortSums_);
  } else {
    Add(bgr, longSums_);
    if (isLast) Average<uint64_t>(longSums_);
  }
  if (!isLast) return nullptr;
  rowsHeld_ = 0;
  return rgb_.data();
}

template <class Sum>
void BoxScaler::Add(const uint8_t* bgr, std::vector<Sum>& sums) {
  for (size_t i = 0; i < sums.size(); ++i) sums[i] = static_cast<Sum>(sums[i] + bgr[i]);
}

template <class Total, class Sum>
void BoxScaler::Average(std::vector<Sum>& sums) {
  // Dividing is multiplying by a reciprocal, exactly so for totals of short sums.
  constexpr uint32_t kBits = 43;
  uint64_t pixels = 0, reciprocal = 0;
  const Sum* sum = sums.data();
  uint8_t* out = rgb_.data();
  for (uint32_t first = 0; first < width_; first += factor_, out += 3) {
    const uint32_t columns = std::min(factor_, width_ - first);
    Total blue = 0, green = 0, red = 0;
    for (uint32_t i = 0; i < columns; ++i, sum += 3) blue += sum[0], green += sum[1], red += sum[2];
    if (pixels != uint64_t{columns} * rowsHeld_) {
      pixels = uint64_t{columns} * rowsHeld_;
      reciprocal = ((uint64_t{1} << kBits) + pixels - 1) / pixels;
    }
    const auto average = [&](uint64_t total) {
      total += pixels / 2;
      return static_cast<uint8_t>(sizeof(Total) == 4 ? total * reciprocal >> kBits : total / pixels);
    };
    out[0] = average(red), out[1] = average(green), out[2] = average(blue);
  }
  std::fill(sums.begin(), sums.end(), Sum{0});
}

}  // namespace tool
