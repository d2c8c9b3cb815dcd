#include "core/place/projection.h"

#include <proj.h>

#include <algorithm>
#include <cmath>

namespace core {
namespace {

constexpr int kWgs84 = 4326;

struct Close {
  void operator()(PJ_CONTEXT* context) const { proj_context_destroy(context); }
  void operator()(PJ* operation) const { proj_destroy(operation); }
};
using Context = std::unique_ptr<PJ_CONTEXT, Close>;
using Operation = std::unique_ptr<PJ, Close>;

// Degrees of a datum, east first, to those of WGS 84, by what this machine has.
Operation ShiftFrom(PJ_CONTEXT* context, int datum) {
  constexpr const char* kOptions[] = {"ALLOW_BALLPARK=NO", nullptr};
  const Operation from(proj_create(context, ("EPSG:" + std::to_string(datum)).c_str())),
      to(proj_create(context, ("EPSG:" + std::to_string(kWgs84)).c_str()));
  if (from == nullptr || to == nullptr) return nullptr;
  const Operation shift(proj_create_crs_to_crs_from_pj(context, from.get(), to.get(), nullptr, kOptions));
  return Operation(shift == nullptr ? nullptr : proj_normalize_for_visualization(context, shift.get()));
}

bool Transform(PJ* operation, PJ_DIRECTION direction, double& east, double& north) {
  const PJ_COORD at = proj_trans(operation, direction, proj_coord(east, north, 0, 0));
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
  library->context.reset(proj_context_create());
  PJ_CONTEXT* context = library->context.get();
  if (context == nullptr) return nullptr;
  proj_log_level(context, PJ_LOG_NONE);
  proj_context_set_enable_network(context, 0);
  const std::string pipeline =
      "+proj=pipeline +step +proj=unitconvert +xy_in=deg +xy_out=rad +step " + words;
  library->plane.reset(proj_create(context, pipeline.c_str()));
  if (datum != kWgs84) library->shift = ShiftFrom(context, datum);
  if (library->plane == nullptr || (datum != kWgs84 && library->shift == nullptr)) return nullptr;
  return std::unique_ptr<Projection>(new Projection(words, datum, std::move(library)));
}

Projection::Projection(std::string words, int datum, std::unique_ptr<Library> library)
    : words_(std::move(words)), datum_(datum), library_(std::move(library)) {}
Projection::~Projection() = default;

double Projection::ErrorAt(EastNorth plane) const {
  GeographicPoint ground{};
  if (library_->shift == nullptr || !ToGround(plane, ground)) return 0;
  const Operation used(proj_trans_get_last_used_operation(library_->shift.get()));
  const double metres =
      used == nullptr ? -1 : proj_coordoperation_get_accuracy(library_->context.get(), used.get());
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
