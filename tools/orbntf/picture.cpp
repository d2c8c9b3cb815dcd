#include "tools/orbntf/picture.h"

#include <algorithm>
#include <csetjmp>

#include <png.h>

#include "hostkit/kernel/pixels_shuffle.h"

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
  PngWriter(std::FILE* file, uint32_t width, uint32_t height) : file_(file) {
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, &Silent, &Silent);
    info_ = png_ != nullptr ? png_create_info_struct(png_) : nullptr;
    good_ = info_ != nullptr && Begin(width, height);
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

  bool Begin(uint32_t width, uint32_t height) {
    if (setjmp(png_jmpbuf(png_)) != 0) return false;
    png_init_io(png_, file_);
    png_set_user_limits(png_, 0x7FFFFFFF, 0x7FFFFFFF);
    png_set_compression_level(png_, 4);
    png_set_IHDR(png_, info_, width, height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png_, info_);
    return true;
  }

  std::FILE* file_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  bool good_ = false;
};

}  // namespace

std::unique_ptr<PictureWriter> PictureWriter::Start(PictureForm form, std::FILE* file, uint32_t width,
                                                    uint32_t height) {
  if (form == PictureForm::Ppm) return std::make_unique<PpmWriter>(file, width, height);
  return std::make_unique<PngWriter>(file, width, height);
}

BoxScaler::BoxScaler(uint32_t width, uint32_t height, uint32_t factor)
    : width_(width), height_(height), factor_(factor), rgb_(3 * size_t{Width()}) {
  if (factor > 1) sums_.resize(3 * size_t{width});
}

const uint8_t* BoxScaler::Take(const uint8_t* bgr) {
  ++rowsTaken_;
  if (factor_ == 1) {
    hostkit::SwapEnds(bgr, width_, rgb_.data());
    return rgb_.data();
  }
  // Rows are added up first, the columns of a square only once.
  for (size_t i = 0; i < sums_.size(); ++i) sums_[i] += bgr[i];
  if (++rowsHeld_ < factor_ && rowsTaken_ < height_) return nullptr;
  for (uint32_t x = 0; x < Width(); ++x) Average(x);
  std::fill(sums_.begin(), sums_.end(), 0);
  rowsHeld_ = 0;
  return rgb_.data();
}

void BoxScaler::Average(uint32_t x) {
  const uint32_t first = x * factor_, columns = std::min(factor_, width_ - first);
  uint64_t totals[3] = {};
  for (size_t i = 3 * size_t{first}; i < 3 * size_t{first + columns}; i += 3) {
    for (size_t c = 0; c < 3; ++c) totals[c] += sums_[i + c];
  }
  const uint64_t pixels = uint64_t{std::max(1u, columns)} * rowsHeld_;
  for (size_t c = 0; c < 3; ++c)
    rgb_[3 * size_t{x} + c] = static_cast<uint8_t>((totals[2 - c] + pixels / 2) / pixels);
}

}  // namespace tool
