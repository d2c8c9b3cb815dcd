#include "core/pictures/geo_keys.h"

#include <charconv>
#include <string_view>

#include "core/pictures/geotiff_library.h"

namespace core {
namespace {

// Projections by PROJ's names, their codes, and the keys that their parameters have (OGC GeoTIFF 1.1,
// clause 7.5).
struct Parameter {
  std::string_view name;
  geokey_t key;
};
struct ProjectionRow {
  std::string_view name;
  uint16_t code;
  Parameter parameters[6];
};
constexpr Parameter kEasting = {"x_0", ProjFalseEastingGeoKey},
                    kNorthing = {"y_0", ProjFalseNorthingGeoKey},
                    kParallel1 = {"lat_1", ProjStdParallel1GeoKey},
                    kParallel2 = {"lat_2", ProjStdParallel2GeoKey},
                    kOriginLatitude = {"lat_0", ProjNatOriginLatGeoKey},
                    kOriginLongitude = {"lon_0", ProjNatOriginLongGeoKey},
                    kCentreLatitude = {"lat_0", ProjCenterLatGeoKey},
                    kCentreLongitude = {"lon_0", ProjCenterLongGeoKey};
constexpr ProjectionRow kProjections[] = {
    {"aea",
     CT_AlbersEqualArea,
     {kParallel1, kParallel2, kOriginLatitude, kOriginLongitude, kEasting, kNorthing}},
    {"aeqd", CT_AzimuthalEquidistant, {kCentreLatitude, kCentreLongitude, kEasting, kNorthing}},
    {"gnom", CT_Gnomonic, {kCentreLatitude, kCentreLongitude, kEasting, kNorthing}},
    {"laea", CT_LambertAzimEqualArea, {kCentreLatitude, kCentreLongitude, kEasting, kNorthing}},
    {"lcc",
     CT_LambertConfConic_2SP,
     {kParallel1,
      kParallel2,
      {"lat_0", ProjFalseOriginLatGeoKey},
      {"lon_0", ProjFalseOriginLongGeoKey},
      {"x_0", ProjFalseOriginEastingGeoKey},
      {"y_0", ProjFalseOriginNorthingGeoKey}}},
    {"merc", CT_Mercator, {{"lat_ts", ProjStdParallel1GeoKey}, kOriginLongitude, kEasting, kNorthing}},
    {"ortho", CT_Orthographic, {kCentreLatitude, kCentreLongitude, kEasting, kNorthing}},
    {"stere",
     CT_PolarStereographic,
     {{"lat_ts", ProjNatOriginLatGeoKey},
      {"lon_0", ProjStraightVertPoleLongGeoKey},
      kEasting,
      kNorthing}},
    {"tmerc",
     CT_TransverseMercator,
     {{"k", ProjScaleAtNatOriginGeoKey}, kOriginLatitude, kOriginLongitude, kEasting, kNorthing}}};

// What stands behind "+name=" in the words of PROJ; empty where it is not there.
std::string_view WordOf(std::string_view words, std::string_view name) {
  const std::string mark = "+" + std::string(name) + "=";
  size_t at = words.find(mark);
  while (at != std::string_view::npos && at != 0 && words[at - 1] != ' ') at = words.find(mark, at + 1);
  if (at == std::string_view::npos) return "";
  const std::string_view from = words.substr(at + mark.size());
  return from.substr(0, from.find(' '));
}

bool SetCode(GTIF* keys, geokey_t key, int code) {
  return GeotiffLibrary::Get()->set(keys, key, TYPE_SHORT, 1, code) != 0;
}

bool SetProjection(GTIF* keys, const Georeference& reference) {
  const ProjectionRow* known = nullptr;
  for (const ProjectionRow& row : kProjections) {
    if (row.name == WordOf(reference.projection, "proj")) known = &row;
  }
  bool good = known != nullptr && SetCode(keys, GTModelTypeGeoKey, ModelTypeProjected) &&
              SetCode(keys, GeographicTypeGeoKey, reference.datum) &&
              SetCode(keys, ProjectedCSTypeGeoKey, KvUserDefined) &&
              SetCode(keys, ProjectionGeoKey, KvUserDefined) &&
              SetCode(keys, ProjCoordTransGeoKey, known->code) &&
              SetCode(keys, ProjLinearUnitsGeoKey, Linear_Meter);
  for (size_t i = 0; good && i < std::size(known->parameters); ++i) {
    const Parameter& parameter = known->parameters[i];
    if (parameter.name.empty()) continue;
    const std::string_view word = WordOf(reference.projection, parameter.name);
    double number = 0;
    good = std::from_chars(word.data(), word.data() + word.size(), number).ec == std::errc() &&
           GeotiffLibrary::Get()->set(keys, parameter.key, TYPE_DOUBLE, 1, number) != 0;
  }
  return good;
}

}  // namespace

bool SetGeoKeys(TIFF* tiff, const Georeference& reference) {
  constexpr int kDegrees = 4326;
  const GeoKeys keys = KeysOf(tiff);
  if (keys == nullptr || !SetCode(keys.get(), GTRasterTypeGeoKey, RasterPixelIsArea)) return false;
  const int epsg = reference.epsg;
  const bool isDegrees = epsg == kDegrees, isProjected = !reference.projection.empty();
  const bool good =
      isProjected
          ? SetProjection(keys.get(), reference)
          : SetCode(keys.get(), GTModelTypeGeoKey,
                    isDegrees ? ModelTypeGeographic : ModelTypeProjected) &&
                SetCode(keys.get(), isDegrees ? GeographicTypeGeoKey : ProjectedCSTypeGeoKey, epsg);
  return good && GeotiffLibrary::Get()->write(keys.get()) != 0;
}

}  // namespace core
