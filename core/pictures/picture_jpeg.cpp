// Pictures as JPEG, through libjpeg.
#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

#include "core/pictures/picture.h"

namespace core {
namespace {

// libjpeg's errors jump back into the call that met them; nothing with a destructor lives in between.
class JpegWriter : public PictureWriter {
 public:
  JpegWriter(std::FILE* file, uint32_t width, uint32_t height) : file_(file), stride_(size_t{3} * width) {
    codec_.err = jpeg_std_error(&errors_.manager);
    errors_.manager.error_exit = &Jump;
    errors_.manager.output_message = [](j_common_ptr) {};
    good_ = Begin(width, height);
  }
  ~JpegWriter() override { jpeg_destroy_compress(&codec_); }

  bool PutRows(const uint8_t* rgb, uint32_t rows) override {
    if (!good_ || setjmp(errors_.jump) != 0) return good_ = false;
    for (uint32_t y = 0; y < rows; ++y) {
      JSAMPROW row = const_cast<JSAMPROW>(rgb + y * stride_);
      jpeg_write_scanlines(&codec_, &row, 1);
    }
    return true;
  }
  bool Finish() override {
    if (!good_ || setjmp(errors_.jump) != 0) return false;
    jpeg_finish_compress(&codec_);
    return std::fflush(file_) == 0;
  }

 private:
  struct Errors {
    jpeg_error_mgr manager;
    jmp_buf jump;
  };
  static void Jump(j_common_ptr codec) { std::longjmp(reinterpret_cast<Errors*>(codec->err)->jump, 1); }

  bool Begin(uint32_t width, uint32_t height) {
    constexpr int kQuality = 90;
    if (setjmp(errors_.jump) != 0) return false;
    jpeg_create_compress(&codec_);
    jpeg_stdio_dest(&codec_, file_);
    codec_.image_width = width;
    codec_.image_height = height;
    codec_.input_components = 3;
    codec_.in_color_space = JCS_RGB;
    jpeg_set_defaults(&codec_);
    jpeg_set_quality(&codec_, kQuality, TRUE);
    jpeg_start_compress(&codec_, TRUE);
    return true;
  }

  std::FILE* file_;
  size_t stride_;
  jpeg_compress_struct codec_{};
  Errors errors_;
  bool good_ = false;
};

}  // namespace

std::unique_ptr<PictureWriter> StartJpeg(std::FILE* file, uint32_t width, uint32_t height) {
  return std::make_unique<JpegWriter>(file, width, height);
}

}  // namespace core
