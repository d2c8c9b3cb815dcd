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
/// RPC00B, RPC00A, GEOLOB, MAPLOB, BLOCKA, IGEOLO: the first one that is there and whole, the rational
/// ones through ICHIPB where the image is a chip, grids with the GEOPSB and PRJPSB of the image or of the
/// file.
Placed PlaceOf(const SurveyedPart& image, const SurveyedPart& header,
               const RecordDefinitions& definitions);

/// The model of one record of an image, RPC00B, RPC00A or BLOCKA; null where it is not there or not
/// whole.
std::unique_ptr<PlaceModel> ModelOfRecord(const SurveyedPart& image,
                                          const std::vector<TaggedRecord>& records, std::string_view tag);
/// The first record of a tag that its definition decodes; null when there is none.
const TaggedRecord* FirstOf(const std::vector<TaggedRecord>& records, std::string_view tag);

}  // namespace core
