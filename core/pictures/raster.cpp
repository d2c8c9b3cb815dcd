#include "core/pictures/raster.h"

#include "media/work.h"

namespace core {
namespace {

// A raster with the file that it is read from.
class OwnedRaster : public Raster {
 public:
  OwnedRaster(std::unique_ptr<FileBytes> file, std::unique_ptr<Raster> raster)
      : file_(std::move(file)), raster_(std::move(raster)) {
    form_ = raster_->Form();
  }
  void Read(const TakePiece& take) override { raster_->Read(take); }

 private:
  std::unique_ptr<FileBytes> file_;
  std::unique_ptr<Raster> raster_;
};

}  // namespace

void RequireSize(const RasterForm& form) {
  constexpr uint32_t kMostSide = 100000000, kMostBands = 100000;
  if (form.width == 0 || form.height == 0 || form.width >= kMostSide || form.bands == 0 ||
      form.bands > kMostBands)
    throw PictureError("a picture has 1 to 99999999 columns, rows, and 1 to 99999 bands");
  if (!media::AllowsPixels(uint64_t{form.width} * form.height))
    throw PictureError("it has " + std::to_string(uint64_t{form.width} * form.height) +
                       " pixels, --max-pixels allows " + std::to_string(media::MaxPixels()));
}

std::unique_ptr<Raster> OpenRaster(const std::string& path, std::optional<uint32_t> page) {
  auto file = std::make_unique<FileBytes>(path);
  if (!file->IsOpen()) throw ReadError(path, errno != 0 ? WordsOfErrno(errno) : "is no regular file");
  std::unique_ptr<Raster> raster = OpenTiff(*file, page);
  for (const auto open : {&OpenPng, &OpenNetpbm, &OpenNpy, &OpenJpegPicture}) {
    if (raster == nullptr) raster = open(*file);
  }
  if (raster == nullptr)
    throw PictureError(
        "is no picture that is known: PNG, JPEG, JPEG 2000, TIFF, PBM, PGM, PPM, PAM or .npy");
  return std::make_unique<OwnedRaster>(std::move(file), std::move(raster));
}

}  // namespace core
