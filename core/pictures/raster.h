// Picture files that are read piece by piece, at their own depth.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>

#include "core/format/bytes.h"
#include "core/pictures/georeference.h"
#include "core/samples/image.h"

namespace core {

/// Why a picture file is not taken.
class PictureError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What a picture file holds.
struct RasterForm {
  uint32_t width = 0, height = 0;
  uint32_t bands = 1;        ///< with the alpha
  uint32_t bits = 8;         ///< of a sample: 1 to 64
  uint32_t sampleBytes = 1;  ///< that a sample takes in pieces: 1, 2, 4 or 8
  SampleKind kind = SampleKind::Unsigned;
  bool isColour = false;              ///< its first three bands are red, green and blue
  bool isYcc = false;                 ///< they are luminance and colour differences (YCbCr601)
  bool hasAlpha = false;              ///< its last band says how opaque a pixel is
  std::vector<uint8_t> palette;       ///< red, green, blue of each value
  std::vector<uint8_t> paletteAlpha;  ///< of the first values; the others are opaque
  std::optional<std::string> noData;  ///< a number in words: pixels of it are none
  /// Where it lies; of another system than is known here the code is 0.
  std::optional<Georeference> reference;
};

/// Some of its samples in host order, those of its bands side by side in pixels, rows without gaps. A
/// complex number is its real part and then the other one.
struct RasterPiece {
  uint32_t left, top, width, height;
  uint32_t firstBand, bands;
  const uint8_t* samples;
};
using TakePiece = std::function<void(const RasterPiece& piece)>;

/// An open picture file. What reads it holds a row or a tile of it.
class Raster {
 public:
  Raster() = default;
  Raster(const Raster&) = delete;
  Raster& operator=(const Raster&) = delete;
  virtual ~Raster() = default;
  const RasterForm& Form() const { return form_; }
  /// Gives every piece once, in the file's order; more than once where it is called again. PictureError;
  /// ReadError.
  virtual void Read(const TakePiece& take) = 0;

 protected:
  RasterForm form_;
};

/// Opens a PNG, JPEG, JPEG 2000, TIFF, PBM, PGM, PPM, PAM or .npy file; of a TIFF file the page of a
/// number from 0, or, with none, the only one. PictureError; ReadError.
std::unique_ptr<Raster> OpenRaster(const std::string& path, std::optional<uint32_t> page = {});

// Files of one kind each; null for another one.
std::unique_ptr<Raster> OpenPng(const FileBytes& file);
std::unique_ptr<Raster> OpenTiff(const FileBytes& file, std::optional<uint32_t> page);
std::unique_ptr<Raster> OpenNetpbm(const FileBytes& file);
std::unique_ptr<Raster> OpenNpy(const FileBytes& file);
std::unique_ptr<Raster> OpenJpegPicture(const FileBytes& file);

/// Bytes that a sample of so many bits takes in pieces.
constexpr uint32_t PieceBytes(uint32_t bits) {
  return bits <= 8 ? 1 : bits <= 16 ? 2 : bits <= 32 ? 4 : 8;
}
/// PictureError for a size that is not taken.
void RequireSize(const RasterForm& form);

}  // namespace core
