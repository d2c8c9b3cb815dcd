// Where a piece of an image lies, as picture files tell it.
#pragma once

#include "core/pictures/georeference.h"
#include "core/place/model.h"

namespace core {

/// A piece of an image, of which some rows and columns are one.
struct PlacedPiece {
  double row = 0, column = 0;
  double rows = 0, columns = 0;        ///< of the piece's own pixels
  double rowSize = 1, columnSize = 1;  ///< rows and columns of the image in one of the piece
};

/// An affine map where the model is one within half a pixel over the piece, else control points; none
/// where not all of the piece has a place.
std::optional<Georeference> GeoreferenceOf(const PlaceModel& model, const PlacedPiece& piece);

}  // namespace core
