// What of a file tells where an image lies.
#pragma once

#include <vector>

#include "core/format/records.h"
#include "core/place/model.h"

namespace core {

/// The best model of an image, and the tags of better ones that are there and not used.
struct Placed {
  std::unique_ptr<PlaceModel> model;  ///< null where nothing tells the place
  std::vector<std::string> unused;
};
/// RPC00B, RPC00A, GEOLOB, BLOCKA, IGEOLO: the first one that is there and whole, the rational ones
/// through ICHIPB where the image is a chip.
Placed PlaceOf(const SurveyedPart& image, const RecordDefinitions& definitions);

}  // namespace core
