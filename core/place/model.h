// From image points to the ground and back.
#pragma once

#include <cmath>
#include <memory>
#include <optional>
#include <string>

namespace core {

/// A place in an image: (0, 0) is the middle of the first pixel.
struct ImagePoint {
  double row, column;
};
/// Degrees on the WGS 84 ellipsoid, north and east positive, and metres above it.
struct GroundPoint {
  double latitude, longitude, height;
};

class Projection;
struct RationalForm;
/// A zone of UTM.
struct UtmZone {
  int number;
  bool north;
};

/// What tells where on earth an image lies.
class PlaceModel {
 public:
  virtual ~PlaceModel() = default;
  /// "RPC00B", "RPC00B through ICHIPB", "IGEOLO".
  virtual std::string Name() const = 0;
  /// How far off a place may be as the model itself tells, in metres.
  virtual double Error() const = 0;
  /// The height that places have where none is given; none for models that know nothing of heights.
  virtual std::optional<double> Height() const { return std::nullopt; }
  /// The zone of UTM in which the model is a plane one; none for degrees.
  virtual std::optional<UtmZone> Zone() const { return std::nullopt; }
  /// The projection in which the model is a plane one; null for other models.
  virtual const Projection* Plane() const { return nullptr; }
  /// The rational polynomials of the image's own rows and columns; null for other models.
  virtual const RationalForm* Polynomials() const { return nullptr; }
  /// The place at a height; words where there is none, empty where there is.
  virtual std::string ToGround(ImagePoint point, double height, GroundPoint& ground) const = 0;
  /// The image's point; words where there is none.
  virtual std::string ToImage(GroundPoint ground, ImagePoint& point) const = 0;
};

/// A longitude from -180 to 180.
inline double Turned(double longitude) {
  return longitude >= -180 && longitude <= 180 ? longitude : std::remainder(longitude, 360);
}

}  // namespace core
