#include "core/place/grid.h"

#include <algorithm>
#include <cmath>

#include "core/place/footprint.h"

namespace core {
namespace {

// A plane in which an image's sides are straight: degrees, or metres of a zone of UTM.
struct PlanePoint {
  double x, y;
};

class BetweenCorners : public PlaceModel {
 public:
  explicit BetweenCorners(const CornerForm& form) : form_(form) {
    const GeographicCorners unwrapped = Unwrapped(form.corners);
    for (size_t i = 0; i < corners_.size(); ++i)
      corners_[i] = form.utm ? PlanePoint{form.utm->points[i].easting, form.utm->points[i].northing}
                             : PlanePoint{unwrapped[i].longitude, unwrapped[i].latitude};
  }
  std::string Name() const override { return form_.name; }
  double Error() const override { return form_.error; }
  std::optional<UtmZone> Zone() const override {
    return form_.utm ? std::optional(UtmZone{form_.utm->zone, form_.utm->north}) : std::nullopt;
  }

  std::string ToGround(ImagePoint point, double height, GroundPoint& ground) const override {
    const PlanePoint at = At(point.row / Last(form_.rows), point.column / Last(form_.columns));
    const GeographicPoint place =
        form_.utm ? FromUtm(form_.utm->zone, form_.utm->north, at.x, at.y) : GeographicPoint{at.y, at.x};
    ground = {place.latitude, Turned(place.longitude), height};
    const bool isOnEarth = std::abs(place.latitude) <= 90 && std::isfinite(place.longitude) &&
                           std::abs(place.longitude) <= 540;
    return isOnEarth ? "" : "the corners put it beyond a pole or around the earth";
  }

  // Newton's iteration from the middle; between parallel sides the first step ends it.
  std::string ToImage(GroundPoint ground, ImagePoint& point) const override {
    constexpr int kMostSteps = 50;
    PlanePoint wanted{};
    if (!PlaneOf(ground, wanted)) return "it is not in the corners' zone";
    double down = 0.5, across = 0.5;
    for (int step = 0; step < kMostSteps; ++step) {
      const PlanePoint at = At(down, across), byDown = Along(across, 3, 0, 2, 1),
                       byAcross = Along(down, 1, 0, 2, 3);
      const double determinant = byDown.x * byAcross.y - byDown.y * byAcross.x;
      const double x = wanted.x - at.x, y = wanted.y - at.y;
      if (!(std::abs(determinant) > 0)) break;
      const double more = (x * byAcross.y - y * byAcross.x) / determinant,
                   right = (byDown.x * y - byDown.y * x) / determinant;
      down += more;
      across += right;
      if (!(std::abs(down) < 1e6) || !(std::abs(across) < 1e6)) break;
      if (std::hypot(more, right) < 1e-13) {
        point = {down * Last(form_.rows), across * Last(form_.columns)};
        return "";
      }
    }
    return "no point of the image was found for it";
  }

 private:
  static double Last(double count) { return std::max(1.0, count - 1); }
  PlanePoint At(double down, double across) const {
    const auto mix = [&](auto member) {
      const double upper = corners_[0].*member * (1 - across) + corners_[1].*member * across,
                   lower = corners_[3].*member * (1 - across) + corners_[2].*member * across;
      return upper * (1 - down) + lower * down;
    };
    return {mix(&PlanePoint::x), mix(&PlanePoint::y)};
  }
  // What a step along one side of the image changes, between the sides a - b and c - d.
  PlanePoint Along(double other, size_t a, size_t b, size_t c, size_t d) const {
    const auto mix = [&](auto member) {
      return (corners_[a].*member - corners_[b].*member) * (1 - other) +
             (corners_[c].*member - corners_[d].*member) * other;
    };
    return {mix(&PlanePoint::x), mix(&PlanePoint::y)};
  }
  bool PlaneOf(GroundPoint ground, PlanePoint& plane) const {
    if (!form_.utm) {
      const double middle = (corners_[0].x + corners_[2].x) / 2;
      plane = {middle + std::remainder(ground.longitude - middle, 360), ground.latitude};
      return true;
    }
    constexpr double kZone = 60;
    const double meridian = form_.utm->zone * 6 - 183;
    if (std::abs(std::remainder(ground.longitude - meridian, 360)) > kZone) return false;
    const UtmPoint utm = ToUtm(form_.utm->zone, form_.utm->north, {ground.latitude, ground.longitude});
    plane = {utm.easting, utm.northing};
    return true;
  }

  CornerForm form_;
  std::array<PlanePoint, 4> corners_{};
};

}  // namespace

std::unique_ptr<PlaceModel> MakeBetweenCorners(const CornerForm& form) {
  const GeographicCorners corners = Unwrapped(form.corners);
  const auto cross = [&](size_t a, size_t b, size_t c) {
    return (corners[b].longitude - corners[a].longitude) * (corners[c].latitude - corners[a].latitude) -
           (corners[c].longitude - corners[a].longitude) * (corners[b].latitude - corners[a].latitude);
  };
  if (AreCrossed(corners) || std::abs(cross(0, 1, 2)) + std::abs(cross(0, 2, 3)) == 0) return nullptr;
  return std::make_unique<BetweenCorners>(form);
}

CornerForm CornerFormOf(char icords, std::string_view igeolo, double rows, double columns) {
  const double error = icords == 'G' || icords == 'C' ? kMetresPerDegree / 3600
                       : icords == 'D'                ? kMetresPerDegree / 1000
                                                      : 1;
  return {"IGEOLO",
          rows,
          columns,
          error,
          CornersOf(icords, igeolo).value_or(GeographicCorners{}),
          UtmCornersOf(icords, igeolo)};
}

std::optional<CornerForm> IgeoloOf(const SurveyedPart& image) {
  const std::string_view code = image.Text("ICORDS"), text = image.Text("IGEOLO");
  const char form = code.empty() ? ' ' : code[0];
  if (!CornersOf(form, text)) return std::nullopt;
  return CornerFormOf(form, text, static_cast<double>(image.Number("NROWS")),
                      static_cast<double>(image.Number("NCOLS")));
}

std::optional<CornerForm> BlockOf(const SurveyedPart& image, const TaggedRecord& record) {
  const DecodedField* lines = FindField(record.fields, "L_LINES");
  const std::vector<Footprint> footprints = FootprintsOf({record});
  if (footprints.empty() || lines == nullptr || DigitsOf(lines->text) != image.Number("NROWS"))
    return std::nullopt;
  const DecodedField* corner = FindField(record.fields, "FRFC_LOC");
  const bool isDecimal =
      corner != nullptr && !corner->text.empty() && (corner->text[0] == '+' || corner->text[0] == '-');
  const double error = kMetresPerDegree * (isDecimal ? 1e-6 : 0.01 / 3600);
  return CornerForm{"BLOCKA",
                    static_cast<double>(image.Number("NROWS")),
                    static_cast<double>(image.Number("NCOLS")),
                    error,
                    footprints[0].corners,
                    std::nullopt};
}

}  // namespace core
