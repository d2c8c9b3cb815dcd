#include "core/pictures/geo_tags.h"

#include <cmath>
#include <iterator>
#include <memory>
#include <mutex>

#include "core/pictures/geo_keys.h"
#include "core/pictures/geotiff_library.h"

namespace core {
namespace {

constexpr uint32_t kRationalTag = 50844;
const TIFFFieldInfo kFields[] = {{kNoDataTag, TIFF_VARIABLE2, TIFF_VARIABLE2, TIFF_ASCII, FIELD_CUSTOM, 1,
                                  1, const_cast<char*>("NoData")},
                                 {kRationalTag, TIFF_VARIABLE2, TIFF_VARIABLE2, TIFF_DOUBLE, FIELD_CUSTOM,
                                  1, 1, const_cast<char*>("RPCCoefficient")}};

// Who added tags before, the library of geographic ones among them.
TIFFExtendProc addOthers = nullptr;
void AddTags(TIFF* tiff) {
  (void)TIFFMergeFieldInfo(tiff, kFields, std::size(kFields));
  if (addOthers != nullptr) addOthers(tiff);
}

bool SetNumbers(TIFF* tiff, uint32_t tag, const std::vector<double>& numbers) {
  return TIFFSetField(tiff, tag, static_cast<int>(numbers.size()), numbers.data()) == 1;
}

// A scale and a corner where rows go south and columns east, else a matrix.
bool SetAffine(TIFF* tiff, const std::array<double, 6>& affine) {
  const auto [east, eastByColumn, eastByRow, north, northByColumn, northByRow] = affine;
  if (eastByRow == 0 && northByColumn == 0 && eastByColumn > 0 && northByRow < 0)
    return SetNumbers(tiff, TIFFTAG_GEOPIXELSCALE, {eastByColumn, -northByRow, 0}) &&
           SetNumbers(tiff, TIFFTAG_GEOTIEPOINTS, {0, 0, 0, east, north, 0});
  return SetNumbers(
      tiff, TIFFTAG_GEOTRANSMATRIX,
      {eastByColumn, eastByRow, 0, east, northByColumn, northByRow, 0, north, 0, 0, 0, 0, 0, 0, 0, 1});
}

bool SetControls(TIFF* tiff, const std::vector<Georeference::Control>& controls) {
  std::vector<double> numbers;
  for (const auto& [column, row, east, north, height] : controls)
    numbers.insert(numbers.end(), {column, row, 0, east, north, height});
  return SetNumbers(tiff, TIFFTAG_GEOTIEPOINTS, numbers);
}

std::vector<double> NumbersOf(TIFF* tiff, uint32_t tag) {
  uint16_t count = 0;
  double* numbers = nullptr;
  if (TIFFGetField(tiff, tag, &count, &numbers) != 1 || numbers == nullptr) return {};
  return {numbers, numbers + count};
}

// The map of a matrix, or of a scale and the place of one point.
std::optional<std::array<double, 6>> AffineOf(TIFF* tiff) {
  const std::vector<double> matrix = NumbersOf(tiff, TIFFTAG_GEOTRANSMATRIX),
                            scale = NumbersOf(tiff, TIFFTAG_GEOPIXELSCALE),
                            tie = NumbersOf(tiff, TIFFTAG_GEOTIEPOINTS);
  std::array<double, 6> affine{};
  if (matrix.size() == 16) {
    affine = {matrix[3], matrix[0], matrix[1], matrix[7], matrix[4], matrix[5]};
  } else if (scale.size() >= 2 && tie.size() == 6) {
    affine = {tie[3] - tie[0] * scale[0], scale[0], 0, tie[4] + tie[1] * scale[1], 0, -scale[1]};
  } else {
    return std::nullopt;
  }
  for (const double number : affine) {
    if (!std::isfinite(number)) return std::nullopt;
  }
  return affine;
}

// A key's code; 0 for none, and for what is no single code.
int KeyOf(GTIF* keys, geokey_t key) {
  uint16_t value = 0;
  return GeotiffLibrary::Get()->get(keys, key, &value, 0, 1) == 1 ? value : 0;
}

}  // namespace

std::optional<Georeference> GetGeoTags(TIFF* tiff) {
  Georeference reference;
  reference.affine = AffineOf(tiff);
  if (!reference.affine && NumbersOf(tiff, TIFFTAG_GEOTIEPOINTS).empty()) return std::nullopt;
  const GeoKeys keys = KeysOf(tiff);
  if (keys == nullptr) return std::nullopt;
  const int model = KeyOf(keys.get(), GTModelTypeGeoKey);
  reference.epsg = model == ModelTypeGeographic  ? KeyOf(keys.get(), GeographicTypeGeoKey)
                   : model == ModelTypeProjected ? KeyOf(keys.get(), ProjectedCSTypeGeoKey)
                                                 : 0;
  // Tags may be about the middles of pixels.
  if (reference.affine && KeyOf(keys.get(), GTRasterTypeGeoKey) == RasterPixelIsPoint) {
    std::array<double, 6>& map = *reference.affine;
    map[0] -= (map[1] + map[2]) / 2;
    map[3] -= (map[4] + map[5]) / 2;
  }
  return reference;
}

void DeclareGeoTags() {
  static std::once_flag once;
  std::call_once(once, [] {
    if (const GeotiffLibrary* library = GeotiffLibrary::Get()) library->initialize();
    addOthers = TIFFSetTagExtender(&AddTags);
  });
}

bool SetGeoTags(TIFF* tiff, const Georeference& reference) {
  if (!reference.rational.empty() &&
      TIFFSetField(tiff, kRationalTag, static_cast<uint32_t>(reference.rational.size()),
                   reference.rational.data()) != 1)
    return false;
  if (reference.affine) return SetAffine(tiff, *reference.affine) && SetGeoKeys(tiff, reference);
  return reference.controls.empty() ||
         (SetControls(tiff, reference.controls) && SetGeoKeys(tiff, reference));
}

}  // namespace core
