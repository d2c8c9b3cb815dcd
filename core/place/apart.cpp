#include "core/place/apart.h"

#include <algorithm>
#include <cmath>

#include "core/place/extent.h"
#include "core/place/grid.h"
#include "core/place/placed.h"
#include "core/place/rational.h"

namespace core {
namespace {

// The heights at which a record's places are looked for.
std::vector<double> HeightsOf(const PlaceModel& model, const std::vector<TaggedRecord>& records) {
  constexpr int kSteps = 64;
  const TaggedRecord* record = model.Height() ? FirstOf(records, "RPC00B") : nullptr;
  const auto form = record == nullptr ? std::nullopt : RationalOf(*record);
  if (!form) return {model.Height().value_or(0)};
  std::vector<double> heights;
  for (int i = -kSteps; i <= kSteps; ++i)
    heights.push_back(form->offset.height + form->scale.height * i / kSteps);
  return heights;
}

// How far a point's place at the height that fits best is from another place, and how far the places of
// two heights are apart; none where the point has no place.
struct Nearest {
  double metres, step;
};
std::optional<Nearest> NearestOf(const PlaceModel& model, const std::vector<double>& heights,
                                 ImagePoint point, const GroundPoint& wanted) {
  std::optional<Nearest> nearest;
  std::optional<GroundPoint> before;
  double step = 0;
  for (const double height : heights) {
    GroundPoint ground{};
    if (!model.ToGround(point, height, ground).empty()) continue;
    if (before) step = std::max(step, Distance(*before, ground));
    before = ground;
    const double metres = Distance(ground, wanted);
    if (!nearest || metres < nearest->metres) nearest = Nearest{metres, 0};
  }
  if (nearest) nearest->step = step;
  return nearest;
}

}  // namespace

std::vector<Apart> ApartFromCorners(const SurveyedPart& image, const std::vector<TaggedRecord>& records) {
  const auto form = IgeoloOf(image);
  const auto corners = form ? MakeBetweenCorners(*form) : nullptr;
  if (corners == nullptr) return {};
  const auto extent = ExtentOf(*corners, image);
  const double pixel = extent ? std::hypot(extent->rowSpacing, extent->columnSpacing) : 0;
  const double bottom = form->rows - 1, right = form->columns - 1;
  std::vector<Apart> apart;
  for (const char* tag : {"RPC00B", "BLOCKA"}) {
    const auto model = ModelOfRecord(image, records, tag);
    if (model == nullptr) continue;
    const std::vector<double> heights = HeightsOf(*model, records);
    Apart worst{tag, 0, 0};
    for (const ImagePoint point : {ImagePoint{0, 0}, {0, right}, {bottom, right}, {bottom, 0}}) {
      GroundPoint wanted{};
      if (!corners->ToGround(point, 0, wanted).empty()) continue;
      const auto nearest = NearestOf(*model, heights, point, wanted);
      // A digit's width counts along both axes.
      const double allowed = std::sqrt(2) * corners->Error() + model->Error() + pixel;
      if (nearest && nearest->metres > allowed + nearest->step && nearest->metres > worst.metres)
        worst = {tag, nearest->metres, allowed + nearest->step};
    }
    if (worst.metres > 0) apart.push_back(worst);
  }
  return apart;
}

}  // namespace core
