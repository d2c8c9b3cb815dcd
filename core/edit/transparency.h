// What becomes of a picture's transparent pixels, and of those that its file calls no data.
#pragma once

#include "core/edit/store_form.h"

namespace core {

/// A picture without alpha: its pixels that are none have a value that no other pixel has.
class OpaqueRaster : public Raster {
 public:
  /// Looks at the picture first where it has transparent pixels. PictureError where they cannot be told.
  OpaqueRaster(Raster& raster, const StoreOptions& options);
  void Read(const TakePiece& take) override;
  /// The value of pixels that are none, as its bits.
  const std::optional<uint64_t>& Pad() const { return pad_; }

 private:
  void TakeNoData();
  void TakePaletteAlpha();
  void TakeAlpha();
  void Blend(const uint8_t* in, uint8_t* out, uint64_t alpha) const;

  Raster& raster_;
  const StoreOptions& options_;
  std::optional<uint64_t> pad_;
  bool dropsAlpha_ = false, blends_ = false;
};

/// A number of whole samples or of reals, in words, as the bits of a sample; none where it cannot be one.
std::optional<uint64_t> BitsOfNumber(const std::string& words, SampleKind kind, uint32_t bits);

}  // namespace core
