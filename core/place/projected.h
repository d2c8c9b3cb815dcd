// Images on a grid of degrees or of a map projection (DIGEST, Part 2, Annex D).
#pragma once

#include "core/format/records.h"
#include "core/place/model.h"

namespace core {

/// The grid of MAPLOB in the projection of PRJPSB and the datum of GEOPSB, the middle of the first pixel
/// at the grid's origin. Null where one of them is not whole, or has a unit, a projection or a datum that
/// is not known.
std::unique_ptr<PlaceModel> MakeMaplob(const TaggedRecord& grid, const TaggedRecord& projection,
                                       const TaggedRecord& datum);
/// The grid of degrees of GEOLOB, in the datum of GEOPSB; WGS 84 where that is null. Null where it is not
/// whole, or has a datum that is not known.
std::unique_ptr<PlaceModel> MakeGeolob(const TaggedRecord& grid, const TaggedRecord* datum);

}  // namespace core
