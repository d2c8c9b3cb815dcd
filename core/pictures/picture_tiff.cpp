// Pictures as tiled BigTIFF, through libtiff.
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "core/pictures/geo_tags.h"
#include "core/pictures/picture.h"
#include "core/pictures/tiff_file.h"

namespace core {
namespace {

constexpr uint32_t kTile = 256;

class TiffWriter : public PictureWriter {
 public:
  TiffWriter(std::FILE* file, uint32_t width, uint32_t height, const Georeference* reference)
      : stride_(3 * size_t{width}),
        columns_((width + kTile - 1) / kTile),
        height_(height),
        rows_(stride_ * std::min(height, kTile)),
        tile_(size_t{3} * kTile * kTile) {
    tiff_ = OpenTiffFile(dup(fileno(file)), "w8");
    if (tiff_ == nullptr) return;
    good_ = TIFFSetField(tiff_, TIFFTAG_IMAGEWIDTH, width) &&
            TIFFSetField(tiff_, TIFFTAG_IMAGELENGTH, height) &&
            TIFFSetField(tiff_, TIFFTAG_BITSPERSAMPLE, 8) &&
            TIFFSetField(tiff_, TIFFTAG_SAMPLESPERPIXEL, 3) &&
            TIFFSetField(tiff_, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB) &&
            TIFFSetField(tiff_, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
            TIFFSetField(tiff_, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE) &&
            TIFFSetField(tiff_, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL) &&
            TIFFSetField(tiff_, TIFFTAG_TILEWIDTH, kTile) &&
            TIFFSetField(tiff_, TIFFTAG_TILELENGTH, kTile) &&
            (reference == nullptr || SetGeoTags(tiff_, *reference));
  }
  ~TiffWriter() override {
    if (tiff_ != nullptr) TIFFClose(tiff_);
  }

  bool PutRow(const uint8_t* rgb) override {
    std::memcpy(&rows_[held_++ * stride_], rgb, stride_);
    ++taken_;
    return (held_ < kTile && taken_ < height_) || WriteTiles();
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

}  // namespace

std::unique_ptr<PictureWriter> StartTiff(std::FILE* file, uint32_t width, uint32_t height,
                                         const Georeference* reference) {
  return std::make_unique<TiffWriter>(file, width, height, reference);
}

}  // namespace core
