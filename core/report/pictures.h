// Small pictures in a page.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/format/places.h"
#include "core/samples/samples.h"

namespace core {

/// Red, green, blue of each pixel, rows from the top.
struct Pixels {
  uint32_t width = 0, height = 0;
  std::vector<uint8_t> rgb;
};

/// A picture as the value of an image's src, as PNG of up to so many bytes or else as JPEG; empty for one
/// that could not be made.
std::string DataUri(const Pixels& pixels, size_t mostPng);

/// A segment's outline on a composite.
struct Outline {
  std::string title;  ///< "image 0"
  std::string label;  ///< its name and level
  double left = 0, top = 0, width = 0, height = 0;
  std::optional<size_t> parent;  ///< in the list, what it is attached to
};

/// A composite as small as a page takes it, and the outlines of its segments.
struct Composite {
  std::string problem;             ///< why there is no picture; empty for one
  uint32_t width = 0, height = 0;  ///< of the canvas
  Pixels pixels;
  std::vector<Outline> outlines;
  std::vector<std::string> missing;  ///< what is not in it, and why
};
/// Draws a file by the published standard, as small as a page takes it.
Composite DrawComposite(const Survey& survey);
/// One of its images by itself, as small as that.
Composite DrawImage(const Survey& survey, uint32_t index, uint32_t side);
/// A graphic's drawing as a data URI; empty where there is none.
std::string DrawingUri(const Survey& survey, const SurveyedPart& part);
/// How far an image may be reduced and still have a side of so many samples.
uint32_t ReduceFor(const SurveyedPart& part, uint32_t side);

}  // namespace core
