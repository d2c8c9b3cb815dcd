#include "core/report/ground.h"

#include <algorithm>
#include <cmath>

#include "core/place/extent.h"
#include "core/place/footprint.h"
#include "core/place/placed.h"
#include "core/report/html.h"

namespace core {
namespace {

GeographicPoint MiddleOf(const Ground& ground) {
  GeographicPoint middle{0, 0};
  for (const GeographicPoint& corner : ground.corners) {
    middle.latitude += corner.latitude / 4;
    middle.longitude += corner.longitude / 4;
  }
  middle.longitude = Turned(middle.longitude);
  return middle;
}

}  // namespace

std::vector<Ground> GroundsOf(const ReportedFile& file) {
  std::vector<Ground> grounds;
  for (const SurveyedPart& part : file.survey.parts) {
    if (part.kind != PartKind::Image) continue;
    const std::string_view form = part.Text("ICORDS");
    if (const auto corners = CornersOf(form.empty() ? ' ' : form[0], part.Text("IGEOLO")))
      grounds.push_back({part.Title(), "IGEOLO", Unwrapped(*corners)});
    const Placed placed = PlaceOf(part, file.survey.Header(), file.definitions);
    const std::string name = placed.model == nullptr ? "IGEOLO" : placed.model->Name();
    const auto extent = name == "IGEOLO" ? std::nullopt : ExtentOf(*placed.model, part);
    if (extent) grounds.push_back({part.Title(), name, Unwrapped(extent->corners)});
    for (const Footprint& footprint : FootprintsOf(RecordsOf(part, file.definitions))) {
      if (!extent || name.rfind(footprint.source, 0) != 0)
        grounds.push_back({part.Title(), footprint.source, Unwrapped(footprint.corners)});
    }
  }
  return grounds;
}

std::string WorldMap(const std::vector<Ground>& grounds) {
  constexpr size_t kMostMarks = 100;
  // Two units of the outline are a degree.
  std::string marks = "<use href=\"#world\" width=\"720\" height=\"360\"/>";
  for (size_t i = 0; i < std::min(grounds.size(), kMostMarks); ++i) {
    const GeographicPoint middle = MiddleOf(grounds[i]);
    marks += "<circle r=\"9\" cx=\"" + Fixed((middle.longitude + 180) * 2, 1) + "\" cy=\"" +
             Fixed((90 - middle.latitude) * 2, 1) + "\"/>";
  }
  return Tag("svg", marks,
             "class=\"world\" role=\"img\" viewBox=\"0 0 720 360\" aria-label=\"The world, with a ring "
             "around each place\"");
}

}  // namespace core
