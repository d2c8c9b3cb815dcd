// Where the segments of a file stand in its common coordinate system (MIL-STD-2500C, 5.3.3), by the
// standard's word.
#pragma once

#include <optional>

#include "core/format/survey.h"

namespace core {

/// An image's pixels or a graphic's bounds, in rows and columns of the canvas.
struct PlacedSegment {
  const SurveyedPart* part;
  int64_t level = -1, attachment = -1;
  int64_t row = 0, column = 0;    ///< its own location
  int64_t top = 0, left = 0;      ///< on the canvas, with the locations of what it is attached to
  int64_t bottom = 0, right = 0;  ///< behind the last row and column
  bool readable = false;          ///< its level, location and size are numbers
  bool ends = true;               ///< its attachments come to an end
  const PlacedSegment* parent = nullptr;
};

class Places {
 public:
  explicit Places(const Survey& survey);
  /// Of parts that stay where they are.
  explicit Places(const std::vector<const SurveyedPart*>& parts);
  Places(const Places&) = delete;
  Places& operator=(const Places&) = delete;
  const std::vector<PlacedSegment>& All() const { return segments_; }
  const PlacedSegment* Of(const SurveyedPart& part) const;
  /// The first image or graphic of a display level; null when there is none.
  const PlacedSegment* OfLevel(int64_t level) const;
  /// The size of the canvas that all of them need.
  int64_t Height() const { return height_; }
  int64_t Width() const { return width_; }

 private:
  void Attach();
  std::vector<PlacedSegment> segments_;
  std::unordered_map<int64_t, size_t> levels_;
  int64_t height_ = 0, width_ = 0;
};

}  // namespace core
