// What of the earth an image covers.
#pragma once

#include "core/format/geography.h"
#include "core/format/part.h"
#include "core/place/model.h"

namespace core {

struct Extent {
  GeographicCorners corners;  ///< of the middles of the corner pixels
  GeographicPoint middle;
  double rowSpacing, columnSpacing;  ///< metres from a pixel to the next one in the middle of the image
  double area;                       ///< square metres of all its pixels
  double north;                      ///< degrees clockwise from up in the middle of the image
};

/// The extent of an image of so many rows and columns at the model's height, or on the ellipsoid; none
/// where a corner has no place.
std::optional<Extent> ExtentOf(const PlaceModel& model, uint64_t rows, uint64_t columns);
/// The same of an image whose subheader tells its rows and columns.
std::optional<Extent> ExtentOf(const PlaceModel& model, const SurveyedPart& image);
/// Metres between two places on the WGS 84 ellipsoid, their heights aside.
double Distance(const GroundPoint& a, const GroundPoint& b);
/// "51.50° N, 16.50° E".
std::string PlaceText(GeographicPoint point);
/// Spacing, area and north in words: "0.52 m a pixel, 12.3 km², north 4° clockwise from up".
std::string SizeText(const Extent& extent);

}  // namespace core
