// Images that are chips of larger ones (STDI-0002, ICHIPB).
#pragma once

#include <array>

#include "core/format/records.h"
#include "core/place/model.h"

namespace core {

/// A map between an image and the one that it was cut out of, given by four points in both.
class Chip {
 public:
  /// None where a record is not whole, says that it has no data, or its points do not make a quadrangle.
  static std::optional<Chip> Of(const TaggedRecord& record);
  ImagePoint ToFull(ImagePoint point) const { return Apply(forward_, point); }
  /// Where the chip's rows and columns are the full image's, moved and scaled: the first pixel and the
  /// scale there; false elsewhere.
  bool IsUpright(ImagePoint& first, ImagePoint& scale) const;
  ImagePoint FromFull(ImagePoint point) const { return Apply(backward_, point); }

 private:
  using Matrix = std::array<std::array<double, 3>, 3>;
  static Matrix FromSquare(const std::array<ImagePoint, 4>& corners);
  static Matrix Inverse(const Matrix& matrix);
  static Matrix Product(const Matrix& a, const Matrix& b);
  static ImagePoint Apply(const Matrix& matrix, ImagePoint point);
  Matrix forward_{}, backward_{};
};

/// A model of the full image as one of the chip.
std::unique_ptr<PlaceModel> ThroughChip(std::unique_ptr<PlaceModel> full, const Chip& chip);

}  // namespace core
