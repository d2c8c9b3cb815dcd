#include "core/place/projection.h"

#include <algorithm>
#include <cmath>

#include "core/place/proj_library.h"

namespace core {
namespace {

constexpr int kWgs84 = 4326;

// Where it is known to be loaded.
const ProjLibrary& Proj() { return *ProjLibrary::Get(); }

struct Close {
  void operator()(PJ_CONTEXT* context) const { Proj().context_destroy(context); }
  void operator()(PJ* operation) const { Proj().destroy(operation); }
};
using Context = std::unique_ptr<PJ_CONTEXT, Close>;
using Operation = std::unique_ptr<PJ, Close>;

// Degrees of a datum, east first, to those of WGS 84, by what this machine has.
Operation ShiftFrom(PJ_CONTEXT* context, int datum) {
  constexpr const char* kOptions[] = {"ALLOW_BALLPARK=NO", nullptr};
  const Operation from(Proj().create(context, ("EPSG:" + std::to_string(datum)).c_str())),
      to(Proj().create(context, ("EPSG:" + std::to_string(kWgs84)).c_str()));
  if (from == nullptr || to == nullptr) return nullptr;
  const Operation shift(
      Proj().create_crs_to_crs_from_pj(context, from.get(), to.get(), nullptr, kOptions));
  return Operation(shift == nullptr ? nullptr : Proj().normalize_for_visualization(context, shift.get()));
}

Context NewContext() {
  if (ProjLibrary::Get() == nullptr) return nullptr;
  Context context(Proj().context_create());
  if (context == nullptr) return context;
  Proj().log_level(context.get(), PJ_LOG_NONE);
  Proj().context_set_enable_network(context.get(), 0);
  return context;
}

std::string TextOfSystem(PJ_CONTEXT* context, const PJ* system) {
  constexpr const char* kOptions[] = {"MULTILINE=NO", nullptr};
  const char* text = system == nullptr ? nullptr : Proj().as_wkt(context, system, PJ_WKT1_ESRI, kOptions);
  return text == nullptr ? "" : text;
}

bool Transform(PJ* operation, PJ_DIRECTION direction, double& east, double& north) {
  PJ_COORD at{};
  at.xyzt = {east, north, 0, 0};
  at = Proj().trans(operation, direction, at);
  east = at.xy.x;
  north = at.xy.y;
  return std::isfinite(east) && std::isfinite(north);
}

// The way back of a shift. What it does to heights is not carried along, so one step is not enough.
bool Unshift(PJ* shift, double& east, double& north) {
  constexpr int kSteps = 3;
  const double wantedEast = east, wantedNorth = north;
  if (!Transform(shift, PJ_INV, east, north)) return false;
  for (int i = 0; i < kSteps; ++i) {
    double x = east, y = north;
    if (!Transform(shift, PJ_FWD, x, y)) return false;
    east += std::remainder(wantedEast - x, 360);
    north += wantedNorth - y;
  }
  return true;
}

}  // namespace

struct Projection::Library {
  Context context;
  Operation plane, shift;  // no shift for WGS 84
};

std::unique_ptr<Projection> Projection::Of(const std::string& words, int datum) {
  auto library = std::make_unique<Library>();
  library->context = NewContext();
  PJ_CONTEXT* context = library->context.get();
  if (context == nullptr) return nullptr;
  const std::string pipeline =
      "+proj=pipeline +step +proj=unitconvert +xy_in=deg +xy_out=rad +step " + words;
  library->plane.reset(Proj().create(context, pipeline.c_str()));
  if (datum != kWgs84) library->shift = ShiftFrom(context, datum);
  if (library->plane == nullptr || (datum != kWgs84 && library->shift == nullptr)) return nullptr;
  return std::unique_ptr<Projection>(new Projection(words, datum, std::move(library)));
}

std::string Projection::TextOf(int epsg) {
  const Context context = NewContext();
  if (context == nullptr) return "";
  const Operation system(Proj().create(context.get(), ("EPSG:" + std::to_string(epsg)).c_str()));
  return TextOfSystem(context.get(), system.get());
}

std::string Projection::TextOf(const std::string& words, int datum) {
  const Context context = NewContext();
  PJ_CONTEXT* with = context.get();
  if (with == nullptr) return "";
  const Operation plain(Proj().create(with, (words + " +units=m +no_defs +type=crs").c_str())),
      base(Proj().create(with, ("EPSG:" + std::to_string(datum)).c_str()));
  if (plain == nullptr || base == nullptr) return "";
  const Operation conversion(Proj().crs_get_coordoperation(with, plain.get())),
      axes(Proj().create_cartesian_2D_cs(with, PJ_CART2D_EASTING_NORTHING, nullptr, 0));
  if (conversion == nullptr || axes == nullptr) return "";
  const Operation system(
      Proj().create_projected_crs(with, "unnamed", base.get(), conversion.get(), axes.get()));
  return TextOfSystem(with, system.get());
}

Projection::Projection(std::string words, int datum, std::unique_ptr<Library> library)
    : words_(std::move(words)), datum_(datum), library_(std::move(library)) {}
Projection::~Projection() = default;

double Projection::ErrorAt(EastNorth plane) const {
  GeographicPoint ground{};
  if (library_->shift == nullptr || !ToGround(plane, ground)) return 0;
  const Operation used(Proj().trans_get_last_used_operation(library_->shift.get()));
  const double metres =
      used == nullptr ? -1 : Proj().coordoperation_get_accuracy(library_->context.get(), used.get());
  return std::max(0.0, metres);
}

bool Projection::ToGround(EastNorth plane, GeographicPoint& ground) const {
  double east = plane.east, north = plane.north;
  if (!Transform(library_->plane.get(), PJ_INV, east, north)) return false;
  if (library_->shift != nullptr && !Transform(library_->shift.get(), PJ_FWD, east, north)) return false;
  ground = {north, east};
  return std::abs(north) <= 90;
}

bool Projection::ToPlane(GeographicPoint ground, EastNorth& plane) const {
  double east = ground.longitude, north = ground.latitude;
  if (library_->shift != nullptr && !Unshift(library_->shift.get(), east, north)) return false;
  if (!Transform(library_->plane.get(), PJ_FWD, east, north)) return false;
  plane = {east, north};
  return true;
}

}  // namespace core
