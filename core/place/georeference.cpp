#include "core/place/georeference.h"

#include <algorithm>

#include "core/format/geography.h"
#include "core/place/projection.h"
#include "core/place/rational.h"

namespace core {
namespace {

struct PlanePoint {
  double east, north, height;
};

// A piece of an image in degrees around a meridian, or in the metres of a zone.
class Plane {
 public:
  Plane(const PlaceModel& model, const PlacedPiece& piece)
      : model_(model), piece_(piece), zone_(model.Zone()) {
    GroundPoint middle{};
    isPlaced_ = Ground({piece.rows / 2, piece.columns / 2}, middle);
    meridian_ = middle.longitude;
  }
  int Epsg() const {
    if (model_.Plane() != nullptr) return 0;
    return !zone_ ? 4326 : (zone_->north ? 32600 : 32700) + zone_->number;
  }

  /// The place of a point, of which 0, 0 is the outer corner of the first pixel; false where it has none.
  bool At(double row, double column, PlanePoint& point) const {
    GroundPoint ground{};
    if (!isPlaced_ || !Ground({row, column}, ground)) return false;
    if (const Projection* projection = model_.Plane()) {
      EastNorth plane{};
      if (!projection->ToPlane({ground.latitude, ground.longitude}, plane)) return false;
      point = {plane.east, plane.north, ground.height};
    } else if (zone_) {
      const UtmPoint utm = ToUtm(zone_->number, zone_->north, {ground.latitude, ground.longitude});
      point = {utm.easting, utm.northing, ground.height};
    } else {
      point = {meridian_ + std::remainder(ground.longitude - meridian_, 360), ground.latitude,
               ground.height};
    }
    return std::isfinite(point.east) && std::isfinite(point.north);
  }

 private:
  bool Ground(ImagePoint point, GroundPoint& ground) const {
    return model_
        .ToGround({piece_.row + point.row * piece_.rowSize - 0.5,
                   piece_.column + point.column * piece_.columnSize - 0.5},
                  model_.Height().value_or(0), ground)
        .empty();
  }

  const PlaceModel& model_;
  const PlacedPiece& piece_;
  std::optional<UtmZone> zone_;
  double meridian_ = 0;
  bool isPlaced_ = false;
};

// The affine map through three corners.
bool Fit(const Plane& plane, const PlacedPiece& piece, std::array<double, 6>& affine) {
  PlanePoint first{}, right{}, below{};
  if (!plane.At(0, 0, first) || !plane.At(0, piece.columns, right) || !plane.At(piece.rows, 0, below))
    return false;
  affine = {
      first.east,  (right.east - first.east) / piece.columns,   (below.east - first.east) / piece.rows,
      first.north, (right.north - first.north) / piece.columns, (below.north - first.north) / piece.rows};
  // What rounding makes of terms that are none.
  constexpr double kNothing = 1e-9;
  if (std::abs(affine[2]) * piece.rows < kNothing * std::abs(affine[1])) affine[2] = 0;
  if (std::abs(affine[4]) * piece.columns < kNothing * std::abs(affine[5])) affine[4] = 0;
  return affine[1] * affine[5] - affine[2] * affine[4] != 0;
}

// How far the map is off at a point, in pixels.
double OffBy(const std::array<double, 6>& affine, const PlanePoint& point, double row, double column) {
  const double determinant = affine[1] * affine[5] - affine[2] * affine[4];
  const double east = point.east - affine[0] - affine[1] * column - affine[2] * row,
               north = point.north - affine[3] - affine[4] * column - affine[5] * row;
  return std::max(std::abs(east * affine[5] - north * affine[2]),
                  std::abs(affine[1] * north - affine[4] * east)) /
         std::abs(determinant);
}

// Points at the crossings of a grid; false where one of them has no place.
template <class Take>
bool ForGrid(const Plane& plane, const PlacedPiece& piece, int steps, Take take) {
  for (int i = 0; i <= steps; ++i) {
    for (int j = 0; j <= steps; ++j) {
      const double row = piece.rows * i / steps, column = piece.columns * j / steps;
      PlanePoint point{};
      if (!plane.At(row, column, point)) return false;
      take(row, column, point);
    }
  }
  return true;
}

// The polynomials with the piece's own rows and columns.
std::vector<double> RationalOf(const RationalForm& form, const PlacedPiece& piece) {
  std::vector<double> tag = {form.errorBias,
                             form.errorRandom,
                             (form.imageOffset.row - piece.row + 0.5) / piece.rowSize - 0.5,
                             (form.imageOffset.column - piece.column + 0.5) / piece.columnSize - 0.5,
                             form.offset.latitude,
                             form.offset.longitude,
                             form.offset.height,
                             form.imageScale.row / piece.rowSize,
                             form.imageScale.column / piece.columnSize,
                             form.scale.latitude,
                             form.scale.longitude,
                             form.scale.height};
  for (const Coefficients* terms :
       {&form.rowNumerator, &form.rowDenominator, &form.columnNumerator, &form.columnDenominator})
    tag.insert(tag.end(), terms->begin(), terms->end());
  return tag;
}

}  // namespace

std::optional<Georeference> GeoreferenceOf(const PlaceModel& model, const PlacedPiece& piece) {
  constexpr int kChecked = 8, kControls = 4;
  constexpr double kMostOff = 0.5;
  const Plane plane(model, piece);
  Georeference reference;
  reference.epsg = plane.Epsg();
  if (const Projection* projection = model.Plane()) {
    reference.projection = projection->Words();
    reference.datum = projection->Datum();
  }
  if (const RationalForm* form = model.Polynomials()) reference.rational = RationalOf(*form, piece);
  std::array<double, 6> affine{};
  double off = 0;
  const bool isWhole =
      Fit(plane, piece, affine) &&
      ForGrid(plane, piece, kChecked, [&](double row, double column, const PlanePoint& point) {
        off = std::max(off, OffBy(affine, point, row, column));
      });
  if (isWhole && off <= kMostOff) {
    reference.affine = affine;
    return reference;
  }
  const bool hasControls =
      ForGrid(plane, piece, kControls, [&](double row, double column, const PlanePoint& point) {
        reference.controls.push_back({column, row, point.east, point.north, point.height});
      });
  if (!hasControls) reference.controls.clear();
  return hasControls || !reference.rational.empty() ? std::optional(reference) : std::nullopt;
}

}  // namespace core
