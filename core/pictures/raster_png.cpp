// PNG files row by row; those that are interlaced whole.
#include <csetjmp>
#include <cstring>

#include <png.h>

#include "core/pictures/raster.h"
#include "media/work.h"

namespace core {
namespace {

class PngRaster : public Raster {
 public:
  explicit PngRaster(const FileBytes& file) : file_(file) {
    Begin();
    TakeForm();
    End();
    RequireSize(form_);
    if (isInterlaced_ && !media::AllowsPixels(uint64_t{form_.width} * form_.height * form_.bands / 3))
      throw PictureError("it is interlaced and too large to be held");
  }
  ~PngRaster() override { End(); }
  PngRaster(const PngRaster&) = delete;
  PngRaster& operator=(const PngRaster&) = delete;

  void Read(const TakePiece& take) override {
    constexpr uint64_t kMostHeld = uint64_t{1} << 30;
    Begin();
    const uint64_t rowBytes = uint64_t{form_.width} * form_.bands * form_.sampleBytes;
    const uint32_t atOnce = isInterlaced_ ? form_.height : 1;
    if (rowBytes * atOnce > kMostHeld) throw PictureError("it is interlaced and too large to be held");
    samples_.resize(static_cast<size_t>(rowBytes * atOnce));
    for (uint32_t y = 0; y < form_.height; y += atOnce) {
      for (int pass = 0; pass < passes_; ++pass) {
        for (uint32_t row = 0; row < atOnce; ++row)
          ReadRow(&samples_[static_cast<size_t>(row * rowBytes)]);
      }
      take({0, y, form_.width, atOnce, 0, form_.bands, samples_.data()});
    }
    End();
  }

 private:
  static void ReadBytes(png_structp png, png_bytep to, png_size_t count) {
    auto& raster = *static_cast<PngRaster*>(png_get_io_ptr(png));
    try {
      if (!raster.file_.Read(raster.at_, to, count)) raster.words_ = "it ends too early";
    } catch (...) {
      raster.failure_ = std::current_exception();
    }
    if (raster.failure_ != nullptr || !raster.words_.empty()) png_error(png, "end");
    raster.at_ += count;
  }
  static void Jump(png_structp png, png_const_charp) { png_longjmp(png, 1); }
  static void Drop(png_structp, png_const_charp) {}

  // Nothing with a destructor lives where libpng's errors jump from.
  template <class Step>
  void Guard(Step step) {
    bool failed = false;
    if (setjmp(png_jmpbuf(png_)) != 0) {
      failed = true;
    } else {
      step();
    }
    if (!failed) return;
    End();
    if (failure_ != nullptr) std::rethrow_exception(failure_);
    throw PictureError("PNG: " + (words_.empty() ? std::string("it is damaged") : words_));
  }

  void Begin() {
    at_ = 0;
    words_.clear();
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, &Jump, &Drop);
    info_ = png_ != nullptr ? png_create_info_struct(png_) : nullptr;
    if (info_ == nullptr) throw std::bad_alloc();
    png_set_read_fn(png_, this, &ReadBytes);
    Guard([this] {
      png_read_info(png_, info_);
      if (png_get_bit_depth(png_, info_) < 8) png_set_packing(png_);
      const bool isPalette = png_get_color_type(png_, info_) == PNG_COLOR_TYPE_PALETTE;
      if (!isPalette && png_get_valid(png_, info_, PNG_INFO_tRNS) != 0) {
        png_set_tRNS_to_alpha(png_);
        bits_ = png_get_bit_depth(png_, info_) == 16 ? 16 : 8;
      } else {
        bits_ = png_get_bit_depth(png_, info_);
      }
      if (png_get_bit_depth(png_, info_) == 16) png_set_swap(png_);
      passes_ = png_set_interlace_handling(png_);
      png_read_update_info(png_, info_);
    });
    isInterlaced_ = passes_ > 1;
  }

  void TakeForm() {
    const png_byte colour = png_get_color_type(png_, info_);
    form_.width = png_get_image_width(png_, info_);
    form_.height = png_get_image_height(png_, info_);
    form_.bands = png_get_channels(png_, info_);
    form_.bits = bits_;
    form_.sampleBytes = PieceBytes(bits_);
    form_.isColour = (colour & PNG_COLOR_MASK_COLOR) != 0 && colour != PNG_COLOR_TYPE_PALETTE;
    form_.hasAlpha = (colour & PNG_COLOR_MASK_ALPHA) != 0;
    if (colour != PNG_COLOR_TYPE_PALETTE) return;
    png_colorp entries = nullptr;
    png_bytep alpha = nullptr;
    int count = 0, alphas = 0;
    if (png_get_PLTE(png_, info_, &entries, &count) == 0) throw PictureError("PNG: it has no palette");
    for (int i = 0; i < count; ++i)
      form_.palette.insert(form_.palette.end(), {entries[i].red, entries[i].green, entries[i].blue});
    if (png_get_tRNS(png_, info_, &alpha, &alphas, nullptr) != 0 && alpha != nullptr)
      form_.paletteAlpha.assign(alpha, alpha + alphas);
  }

  void ReadRow(uint8_t* row) {
    Guard([this, row] { png_read_row(png_, row, nullptr); });
  }
  void End() { png_destroy_read_struct(&png_, &info_, nullptr); }

  const FileBytes& file_;
  uint64_t at_ = 0;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  uint32_t bits_ = 8;
  int passes_ = 1;
  bool isInterlaced_ = false;
  std::string words_;
  std::exception_ptr failure_;
  std::vector<uint8_t> samples_;
};

}  // namespace

std::unique_ptr<Raster> OpenPng(const FileBytes& file) {
  constexpr size_t kSignature = 8;
  const std::string begin = file.At(0, kSignature);
  if (begin.size() != kSignature ||
      png_sig_cmp(reinterpret_cast<png_const_bytep>(begin.data()), 0, kSignature) != 0)
    return nullptr;
  return std::make_unique<PngRaster>(file);
}

}  // namespace core
