// Map projections and datums, by PROJ.
#pragma once

#include <memory>
#include <string>

#include "core/format/geography.h"

namespace core {

/// Metres in the plane of a projection.
struct EastNorth {
  double east, north;
};

/// The plane of a projection of some datum. Of one thread at a time.
class Projection {
 public:
  /// Of the words of PROJ for a conversion from degrees, "+proj=tmerc +lon_0=9 +ellps=bessel", and the
  /// EPSG code of the datum's geographic system. Null where PROJ knows no such projection, or no way from
  /// the datum to WGS 84. Nothing is fetched from a network.
  static std::unique_ptr<Projection> Of(const std::string& words, int datum);
  /// The system of an EPSG code, or of a projection of a datum, as the text of a .prj file has it. Empty
  /// where PROJ does not know it.
  static std::string TextOf(int epsg);
  static std::string TextOf(const std::string& words, int datum);
  Projection(const Projection&) = delete;
  Projection& operator=(const Projection&) = delete;
  ~Projection();

  const std::string& Words() const { return words_; }
  /// The EPSG code of the geographic system that it projects.
  int Datum() const { return datum_; }
  /// How far the way to WGS 84 may be off at a point, in metres; 0 for WGS 84 itself.
  double ErrorAt(EastNorth plane) const;
  /// Metres of the plane as degrees on WGS 84; false for points that have none.
  bool ToGround(EastNorth plane, GeographicPoint& ground) const;
  bool ToPlane(GeographicPoint ground, EastNorth& plane) const;

 private:
  struct Library;

  Projection(std::string words, int datum, std::unique_ptr<Library> library);

  std::string words_;
  int datum_;
  std::unique_ptr<Library> library_;
};

}  // namespace core
