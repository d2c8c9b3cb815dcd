// Where the images of a file lie on earth, by all that says so.
#pragma once

#include "core/format/geography.h"
#include "core/place/model.h"
#include "core/report/report.h"

namespace core {

struct Ground {
  std::string name, source;
  GeographicCorners corners;  ///< without a jump at 180 degrees
};
std::vector<Ground> GroundsOf(const ReportedFile& file);

/// The world with a mark on each ground, as SVG; the page holds the outline once.
std::string WorldMap(const std::vector<Ground>& grounds);

}  // namespace core
