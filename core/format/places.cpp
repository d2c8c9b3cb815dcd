#include "core/format/places.h"

#include <algorithm>

namespace core {
namespace {

PlacedSegment PlaceImage(const SurveyedPart& part) {
  PlacedSegment place = {&part};
  place.level = part.Number("IDLVL");
  place.attachment = part.Number("IALVL");
  const int64_t rows = part.Number("NROWS"), columns = part.Number("NCOLS");
  place.readable = PlaceOfText(part.Text("ILOC"), place.row, place.column) && place.level >= 0 &&
                   place.attachment >= 0 && rows >= 0 && columns >= 0;
  place.top = place.row;
  place.left = place.column;
  place.bottom = place.row + rows;
  place.right = place.column + columns;
  return place;
}

PlacedSegment PlaceGraphic(const SurveyedPart& part) {
  PlacedSegment place = {&part};
  place.level = part.Number("SDLVL");
  place.attachment = part.Number("SALVL");
  place.readable = PlaceOfText(part.Text("SLOC"), place.row, place.column) &&
                   PlaceOfText(part.Text("SBND1"), place.top, place.left) &&
                   PlaceOfText(part.Text("SBND2"), place.bottom, place.right) && place.level >= 0 &&
                   place.attachment >= 0;
  return place;
}

std::vector<const SurveyedPart*> PartsOf(const Survey& survey) {
  std::vector<const SurveyedPart*> parts;
  for (const SurveyedPart& part : survey.parts) parts.push_back(&part);
  return parts;
}

}  // namespace

Places::Places(const Survey& survey) : Places(PartsOf(survey)) {}

Places::Places(const std::vector<const SurveyedPart*>& parts) {
  for (const SurveyedPart* part : parts) {
    if (part->kind == PartKind::Image) segments_.push_back(PlaceImage(*part));
    if (part->kind == PartKind::Graphic) segments_.push_back(PlaceGraphic(*part));
  }
  for (size_t i = 0; i < segments_.size(); ++i) {
    if (segments_[i].level >= 0) levels_.emplace(segments_[i].level, i);
  }
  Attach();
  for (const PlacedSegment& place : segments_) {
    if (!place.readable) continue;
    height_ = std::max(height_, place.bottom);
    width_ = std::max(width_, place.right);
  }
}

const PlacedSegment* Places::Of(const SurveyedPart& part) const {
  for (const PlacedSegment& place : segments_) {
    if (place.part == &part) return &place;
  }
  return nullptr;
}

const PlacedSegment* Places::OfLevel(int64_t level) const {
  const auto found = levels_.find(level);
  return found != levels_.end() ? &segments_[found->second] : nullptr;
}

// Adds the locations of ancestors; a chain that has more links than there are segments goes in a circle.
void Places::Attach() {
  std::vector<std::pair<int64_t, int64_t>> offsets(segments_.size());
  for (size_t i = 0; i < segments_.size(); ++i) {
    PlacedSegment& place = segments_[i];
    size_t links = 0;
    for (const PlacedSegment* ancestor = OfLevel(place.attachment);
         place.attachment > 0 && ancestor != nullptr; ancestor = OfLevel(ancestor->attachment)) {
      if (place.parent == nullptr) place.parent = ancestor;
      if (++links > segments_.size()) {
        place.ends = false;
        offsets[i] = {0, 0};
        break;
      }
      offsets[i].first += ancestor->row;
      offsets[i].second += ancestor->column;
      if (ancestor->attachment == 0) break;
    }
  }
  for (size_t i = 0; i < segments_.size(); ++i) {
    PlacedSegment& place = segments_[i];
    place.top += offsets[i].first;
    place.bottom += offsets[i].first;
    place.left += offsets[i].second;
    place.right += offsets[i].second;
  }
}

}  // namespace core
