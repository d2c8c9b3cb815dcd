#include "core/pictures/picture.h"

#include <csetjmp>

#include <png.h>

#include "core/pictures/behind.h"
#include "media/drawing/picture.h"

namespace core {
namespace {

class PpmWriter : public PictureWriter {
 public:
  PpmWriter(std::FILE* file, uint32_t width, uint32_t height) : file_(file), stride_(size_t{width} * 3) {
    good_ = std::fprintf(file, "P6\n%u %u\n255\n", width, height) > 0;
  }
  bool PutRows(const uint8_t* rgb, uint32_t rows) override {
    return good_ = good_ && std::fwrite(rgb, stride_, rows, file_) == rows;
  }
  bool Finish() override { return good_ && std::fflush(file_) == 0; }

 private:
  std::FILE* file_;
  size_t stride_;
  bool good_;
};

// libpng's errors jump back into the call that met them; nothing with a destructor lives in between.
class PngWriter : public PictureWriter {
 public:
  PngWriter(std::FILE* file, uint32_t width, uint32_t height, bool alpha)
      : file_(file), stride_(size_t{width} * (alpha ? 4 : 3)) {
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, &Silent, &Silent);
    info_ = png_ != nullptr ? png_create_info_struct(png_) : nullptr;
    good_ = info_ != nullptr && Begin(width, height, alpha);
  }
  ~PngWriter() override { png_destroy_write_struct(&png_, &info_); }

  bool PutRows(const uint8_t* rgb, uint32_t rows) override {
    if (!good_ || setjmp(png_jmpbuf(png_)) != 0) return good_ = false;
    for (uint32_t row = 0; row < rows; ++row) png_write_row(png_, rgb + row * stride_);
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
  size_t stride_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  bool good_ = false;
};

std::unique_ptr<PictureWriter> StartForm(PictureForm form, std::FILE* file, uint32_t width,
                                         uint32_t height, const TiffOptions& options) {
  switch (form) {
    case PictureForm::Ppm:
      return std::make_unique<PpmWriter>(file, width, height);
    case PictureForm::Jpeg:
      return StartJpeg(file, width, height);
    case PictureForm::Tiff:
      return StartTiff(file, width, height, options);
    case PictureForm::Png:
      break;
  }
  return StartPng(file, width, height, false);
}

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

std::unique_ptr<PictureWriter> StartPicture(PictureForm form, std::FILE* file, uint32_t width,
                                            uint32_t height, const TiffOptions& options) {
  return WriteBehind(StartForm(form, file, width, height, options), size_t{3} * width);
}

std::unique_ptr<PictureWriter> StartPng(std::FILE* file, uint32_t width, uint32_t height, bool alpha) {
  return std::make_unique<PngWriter>(file, width, height, alpha);
}

media::Outcome PaintPng(const media::Drawing& drawing, int32_t longerSide, std::FILE* file) {
  std::unique_ptr<PictureWriter> writer;
  const media::Outcome outcome =
      media::PaintPicture(drawing, longerSide, [&](const uint8_t* rgba, uint32_t width, uint32_t height) {
        if (writer == nullptr) writer = StartPng(file, width, height, true);
        return writer->PutRow(rgba) ? media::Outcome::Ok : media::Outcome::NotTaken;
      });
  if (outcome != media::Outcome::Ok) return outcome;
  return writer != nullptr && writer->Finish() ? media::Outcome::Ok : media::Outcome::NotTaken;
}

}  // namespace core
