#include "core/edit/corners.h"

#include <cmath>

#include "core/format/geography.h"
#include "core/place/grid.h"

namespace core {
namespace {

constexpr double kPi = 3.14159265358979323846;

// The systems whose places are known: degrees on WGS 84, and the zones of UTM on it.
std::optional<UtmZone> ZoneOf(int epsg) {
  if (epsg > 32600 && epsg <= 32660) return UtmZone{epsg - 32600, true};
  if (epsg > 32700 && epsg <= 32760) return UtmZone{epsg - 32700, false};
  return std::nullopt;
}

class Affine {
 public:
  Affine(const Georeference& reference, uint32_t top)
      : map_(*reference.affine), zone_(ZoneOf(reference.epsg)), top_(top) {}
  /// The place of the middle of a pixel.
  GeographicPoint At(double row, double column) const {
    const double x = column + 0.5, y = row + 0.5 + top_, east = map_[0] + map_[1] * x + map_[2] * y,
                 north = map_[3] + map_[4] * x + map_[5] * y;
    if (!zone_) return {north, Turned(east)};
    GeographicPoint point = FromUtm(zone_->number, zone_->north, east, north);
    point.longitude = Turned(point.longitude);
    return point;
  }

 private:
  std::array<double, 6> map_;
  std::optional<UtmZone> zone_;
  double top_;
};

double Metres(GeographicPoint a, GeographicPoint b) {
  const double across = std::cos(a.latitude * kPi / 180);
  return kMetresPerDegree *
         std::hypot(a.latitude - b.latitude, std::remainder(a.longitude - b.longitude, 360) * across);
}

// How far places between corners are off at most, and how far they may be.
struct Deviation {
  double off = 0, allowed = 0;
};
Deviation DeviationOf(const PlaceModel& model, const Affine& affine, double bottom, double right) {
  constexpr int kSteps = 8;
  Deviation deviation;
  const double pixel =
      std::min(Metres(affine.At(0, 0), affine.At(1, 0)), Metres(affine.At(0, 0), affine.At(0, 1)));
  deviation.allowed = pixel / 2 + model.Error();
  for (int i = 0; i <= kSteps; ++i) {
    for (int j = 0; j <= kSteps; ++j) {
      const double row = bottom * i / kSteps, column = right * j / kSteps;
      GroundPoint ground{};
      if (!model.ToGround({row, column}, 0, ground).empty()) return {1e9, 0};
      deviation.off =
          std::max(deviation.off, Metres(affine.At(row, column), {ground.latitude, ground.longitude}));
    }
  }
  return deviation;
}

char FormOf(int epsg, char wanted) {
  if (wanted != 0) return wanted;
  const auto zone = ZoneOf(epsg);
  return !zone ? 'D' : zone->north ? 'N' : 'S';
}

}  // namespace

CornerFields CornersFor(const RasterForm& raster, uint32_t top, uint32_t rows, char icords,
                        std::vector<std::string>& notes) {
  if (!raster.reference) return {};
  const Georeference& reference = *raster.reference;
  if (!reference.affine) {
    notes.emplace_back("where it lies is told by control points, which are not kept");
    return {};
  }
  if (reference.epsg != 4326 && !ZoneOf(reference.epsg)) {
    notes.emplace_back(
        "where it lies is told in a system other than degrees and UTM on WGS 84, and is not kept");
    return {};
  }
  const Affine affine(reference, top);
  const double bottom = rows - 1.0, right = raster.width - 1.0;
  const GeographicCorners corners = {affine.At(0, 0), affine.At(0, right), affine.At(bottom, right),
                                     affine.At(bottom, 0)};
  const char form = FormOf(reference.epsg, icords);
  const auto text = IgeoloText(form, corners);
  const std::string name(1, form);
  if (!text)
    throw PictureError("its corners cannot be told in the form " + name +
                       " of ICORDS; --icords takes another");
  const auto model =
      MakeBetweenCorners(CornerFormOf(form, *text, static_cast<double>(rows), raster.width));
  if (model == nullptr) {
    notes.emplace_back("it is so small that its corners are one in the form " + name +
                       " of ICORDS: its place is not kept");
    return {};
  }
  const Deviation deviation = DeviationOf(*model, affine, bottom, right);
  if (!(deviation.off <= deviation.allowed))
    throw PictureError("corners in the form " + name +
                       " of ICORDS do not tell its place: they are up to " +
                       std::to_string(std::llround(deviation.off)) + " m off; --icords takes another");
  return {name, *text};
}

}  // namespace core
