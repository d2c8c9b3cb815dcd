// Where on earth a picture lies, as TIFF files tell it (OGC GeoTIFF 1.1).
#pragma once

#include <array>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace core {

struct Georeference {
  /// A point of the picture and its place: column and row, of which 0, 0 is the outer corner of the first
  /// pixel, then east and north, and the height.
  using Control = std::array<double, 5>;

  int epsg = 4326;  ///< of places: degrees on WGS 84, or a zone of UTM; 0 for another projection
  /// The other projection in the words of PROJ, and the EPSG code of its datum's geographic system.
  std::string projection;
  int datum = 4326;
  /// East is [0] + [1] column + [2] row, north [3] + [4] column + [5] row.
  std::optional<std::array<double, 6>> affine;
  std::vector<Control> controls;  ///< where there is no affine map
  /// The tag 50844: errors, offsets, scales, and the terms in the order of RPC00B; empty for none.
  std::vector<double> rational;
};

}  // namespace core
