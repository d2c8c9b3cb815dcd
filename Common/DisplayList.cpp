#include "Common/DisplayList.h"

#include <algorithm>

namespace {

constexpr char16_t kSourceFile[] = u"Utility";

// What the attachment chains need of a segment.
struct Place {
  uint32_t level, attachment;
  int32_t row, column;
  uint32_t visit;  // the last chain that passed here
};

// The places of all segments: images first, each kind in index order.
class Places {
 public:
  Status Fill(const NitfFile& document);
  const Place& At(SegmentKind kind, uint32_t index) const {
    return places_[kind == SegmentKind::Image ? index : imageCount_ + index];
  }
  /// Adds the locations of an item's ancestors to its offsets. A chain that comes back to a segment ends
  /// there, so that no location counts twice.
  void AddAncestors(DisplayItem& item);

 private:
  struct LevelEntry {
    uint32_t level, place;
  };
  Status IndexLevels();
  Place* FirstOfLevel(std::span<const LevelEntry> levels, uint32_t level);

  KernelBuffer<Place> places_;
  KernelBuffer<LevelEntry> levels_;  // images, then graphics, each sorted by level and index
  uint32_t imageCount_ = 0;
  uint32_t visits_ = 0;
};

Status Places::Fill(const NitfFile& document) {
  imageCount_ = document.ImageCount();
  if (Status s = places_.Allocate(uint64_t{imageCount_} + document.GraphicCount(), ORB_HERE); !Ok(s)) {
    return s;
  }
  Place* next = places_.data();
  for (const ImageSubheader& image : document.images)
    *next++ = {image.IDLVL.value, image.IALVL.value, image.ILOC.Row(), image.ILOC.Column(), 0};
  for (const GraphicSubheader& graphic : document.graphics)
    *next++ = {graphic.SDLVL.value, graphic.SALVL.value, graphic.SLOC.Row(), graphic.SLOC.Column(), 0};
  return IndexLevels();
}

Status Places::IndexLevels() {
  if (Status s = levels_.Allocate(places_.size(), ORB_HERE); !Ok(s)) return s;
  for (uint32_t i = 0; i < levels_.size(); ++i) levels_[i] = {places_[i].level, i};
  const auto byLevel = [](const LevelEntry& a, const LevelEntry& b) {
    return a.level != b.level ? a.level < b.level : a.place < b.place;
  };
  std::sort(levels_.begin(), levels_.begin() + imageCount_, byLevel);
  std::sort(levels_.begin() + imageCount_, levels_.end(), byLevel);
  return Status::Success;
}

Place* Places::FirstOfLevel(std::span<const LevelEntry> levels, uint32_t level) {
  const auto found =
      std::lower_bound(levels.begin(), levels.end(), level,
                       [](const LevelEntry& entry, uint32_t l) { return entry.level < l; });
  return found != levels.end() && found->level == level ? &places_[found->place] : nullptr;
}

void Places::AddAncestors(DisplayItem& item) {
  const std::span<const LevelEntry> levels = levels_.Span();
  const std::span<const LevelEntry> kinds[] = {levels.first(imageCount_), levels.subspan(imageCount_)};
  auto& start = const_cast<Place&>(At(item.kind, item.index));
  const uint32_t visit = start.visit = ++visits_;
  uint32_t level = start.attachment;
  // Images are followed as far as they lead, then graphics, and again while either led on.
  for (bool found = true; found;) {
    found = false;
    for (const auto& kind : kinds) {
      while (Place* ancestor = FirstOfLevel(kind, level)) {
        if (ancestor->visit == visit) return;
        ancestor->visit = visit;
        item.rowOffset += ancestor->row;
        item.columnOffset += ancestor->column;
        level = ancestor->attachment;
        found = true;
      }
    }
  }
}

// Exchange sort: which of several segments of one level is drawn first follows from its swaps.
void SortByLevel(std::span<DisplayItem> items) {
  for (size_t i = 0; i + 1 < items.size(); ++i) {
    for (size_t j = i + 1; j < items.size(); ++j) {
      if (items[i].level > items[j].level) std::swap(items[i], items[j]);
    }
  }
}

}  // namespace

Status BuildDisplayList(const NitfFile& document, DisplayList& list) {
  const uint32_t images = document.ImageCount(), count = images + document.GraphicCount();
  if (count == 0) return Status::Success;
  if (Status s = list.items_.Allocate(count, ORB_HERE); !Ok(s)) return s;
  Places places;
  if (Status s = places.Fill(document); !Ok(s)) return s;
  for (uint32_t i = 0; i < count; ++i) {
    DisplayItem& item = list.items_[i];
    item.kind = i < images ? SegmentKind::Image : SegmentKind::Graphic;
    item.index = i < images ? i : i - images;
    item.level = places.At(item.kind, item.index).level;
    places.AddAncestors(item);
  }
  SortByLevel(list.items_.Span());
  return Status::Success;
}

bool LowestDisplayLevel(const NitfFile& document, uint32_t& level) {
  level = UINT32_MAX;
  for (const ImageSubheader& image : document.images) level = std::min(level, image.IDLVL.value);
  for (const GraphicSubheader& graphic : document.graphics) level = std::min(level, graphic.SDLVL.value);
  return document.ImageCount() + document.GraphicCount() != 0;
}

uint32_t NextDisplayLevel(const NitfFile& document) {
  uint32_t highest = 0;
  for (const ImageSubheader& image : document.images) highest = std::max(highest, image.IDLVL.value);
  for (const GraphicSubheader& graphic : document.graphics) {
    highest = std::max(highest, graphic.SDLVL.value);
  }
  return highest + 1;
}
