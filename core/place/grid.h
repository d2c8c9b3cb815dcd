// Images between their corners.
#pragma once

#include "core/format/geography.h"
#include "core/format/records.h"
#include "core/place/model.h"

namespace core {

/// What corners say: the places of the middles of the four corner pixels, in degrees or, where all of
/// them are in one zone, in metres of UTM.
struct CornerForm {
  std::string name;
  double rows, columns;  ///< of the image
  double error;          ///< metres
  GeographicCorners corners;
  std::optional<UtmCorners> utm;
};
/// Places between corners, bilinear. Null where the corners enclose nothing.
std::unique_ptr<PlaceModel> MakeBetweenCorners(const CornerForm& form);

/// What a text of IGEOLO says of an image, whose error is the width of the form's last digit. The text is
/// one.
CornerForm CornerFormOf(char icords, std::string_view igeolo, double rows, double columns);
/// The corners of an image.
std::optional<CornerForm> IgeoloOf(const SurveyedPart& image);
/// Those of a BLOCKA record that is about the whole image.
std::optional<CornerForm> BlockOf(const SurveyedPart& image, const TaggedRecord& record);

}  // namespace core
