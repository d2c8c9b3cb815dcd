// Pictures as tiled BigTIFF, through libtiff.
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "core/pictures/cloud_tiff.h"
#include "core/pictures/geo_tags.h"
#include "core/pictures/picture.h"
#include "core/pictures/tiff_file.h"

namespace core {
namespace {

constexpr uint32_t kTile = 256;

bool SetColours(TIFF* tiff) {
  return TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8) && TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 3) &&
         TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
}

class TiffWriter : public PictureWriter {
 public:
  TiffWriter(std::FILE* file, uint32_t width, uint32_t height, const TiffOptions& options)
      : stride_(3 * size_t{width}),
        columns_((width + kTile - 1) / kTile),
        height_(height),
        rows_(stride_ * std::min(height, kTile)),
        tile_(size_t{3} * kTile * kTile) {
    tiff_ = OpenTiffFile(dup(fileno(file)), "w8");
    if (tiff_ == nullptr) return;
    good_ = TIFFSetField(tiff_, TIFFTAG_IMAGEWIDTH, width) &&
            TIFFSetField(tiff_, TIFFTAG_IMAGELENGTH, height) && SetColours(tiff_) &&
            TIFFSetField(tiff_, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
            TIFFSetField(tiff_, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE) &&
            TIFFSetField(tiff_, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) &&
            TIFFSetField(tiff_, TIFFTAG_TILEWIDTH, kTile) &&
            TIFFSetField(tiff_, TIFFTAG_TILELENGTH, kTile) &&
            (!options.reference || SetGeoTags(tiff_, *options.reference));
  }
  ~TiffWriter() override {
    if (tiff_ != nullptr) TIFFClose(tiff_);
  }

  bool PutRows(const uint8_t* rgb, uint32_t rows) override {
    for (; rows > 0; --rows, rgb += stride_) {
      std::memcpy(&rows_[held_++ * stride_], rgb, stride_);
      ++taken_;
      if ((held_ == kTile || taken_ == height_) && !WriteTiles()) return false;
    }
    return true;
  }
  bool Finish() override {
    if (good_) good_ = TIFFFlush(tiff_) == 1;
    return good_;
  }

 private:
  // The rows held, as a row of tiles.
  bool WriteTiles() {
    for (uint32_t column = 0; good_ && column < columns_; ++column) {
      const size_t left = size_t{3} * kTile * column, bytes = std::min(size_t{3} * kTile, stride_ - left);
      std::fill(tile_.begin(), tile_.end(), uint8_t{0});
      for (size_t row = 0; row < held_; ++row)
        std::memcpy(&tile_[size_t{3} * kTile * row], &rows_[row * stride_ + left], bytes);
      good_ = TIFFWriteTile(tiff_, tile_.data(), kTile * column, taken_ - static_cast<uint32_t>(held_), 0,
                            0) >= 0;
    }
    held_ = 0;
    return good_;
  }

  size_t stride_;
  uint32_t columns_, height_, taken_ = 0;
  size_t held_ = 0;
  std::vector<uint8_t> rows_, tile_;
  TIFF* tiff_ = nullptr;
  bool good_ = false;
};

// The same with smaller pictures, all of it written at the end.
class CloudWriter : public PictureWriter {
 public:
  CloudWriter(std::FILE* file, uint32_t width, uint32_t height, const TiffOptions& options)
      : file_(file), stride_(size_t{3} * width) {
    Try([&] { cloud_ = std::make_unique<CloudTiff>(FormOf(width, height, options)); });
  }
  bool PutRows(const uint8_t* rgb, uint32_t rows) override {
    return Try([&] {
      for (uint32_t row = 0; row < rows; ++row) cloud_->PutRow(rgb + row * stride_);
    });
  }
  bool Finish() override {
    return Try([&] { good_ = cloud_->Write(file_); });
  }

 private:
  // What its scratch files do not take, the picture's file does not take.
  template <class Work>
  bool Try(Work work) {
    if (!good_) return false;
    try {
      work();
    } catch (const WriteError&) {
      good_ = false;
    }
    return good_;
  }
  static CloudForm FormOf(uint32_t width, uint32_t height, const TiffOptions& options) {
    CloudForm form;
    form.width = width;
    form.height = height;
    form.pixelBytes = 3;
    form.predictor = PREDICTOR_HORIZONTAL;
    form.halve = MeansOf(SampleKind::Unsigned, 1, 3, std::nullopt);
    form.setTags = [reference = options.reference](TIFF* tiff, bool isFull) {
      return SetColours(tiff) && (!isFull || !reference || SetGeoTags(tiff, *reference));
    };
    return form;
  }
  std::FILE* file_;
  size_t stride_;
  std::unique_ptr<CloudTiff> cloud_;
  bool good_ = true;
};

}  // namespace

std::unique_ptr<PictureWriter> StartTiff(std::FILE* file, uint32_t width, uint32_t height,
                                         const TiffOptions& options) {
  if (options.isCloud) return std::make_unique<CloudWriter>(file, width, height, options);
  return std::make_unique<TiffWriter>(file, width, height, options);
}

}  // namespace core
