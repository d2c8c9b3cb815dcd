#include "Common/Utility.h"

#include <algorithm>

#include "Common/HandlGfx.h"

namespace {

constexpr char16_t kSourceFile[] = u"Utility";

constexpr uint32_t kFixedCanvasSide = 2048;
constexpr uint32_t kTextOnlySide = 2;

// Grows towards the right and bottom edges of the segments.
struct Extent {
  int64_t width = 0;
  int64_t height = 0;
  void Add(int64_t right, int64_t bottom) {
    width = std::max(width, right);
    height = std::max(height, bottom);
  }
};

Status AddImage(const ImageSubheader& image, int32_t rowOffset, int32_t columnOffset, Extent& extent) {
  const CheckedSize width = image.FullWidth(), height = image.FullHeight();
  if (!width.Within(kMaxSide) || !height.Within(kMaxSide)) return Status::OutOfMemory;
  extent.Add(int64_t{image.ILOC.column} + static_cast<int64_t>(width.Value()) + columnOffset,
             int64_t{image.ILOC.row} + static_cast<int64_t>(height.Value()) + rowOffset);
  return Status::Success;
}

Status AddGraphic(NitfFile& document, uint32_t index, int32_t rowOffset, int32_t columnOffset,
                  Extent& extent) {
  const GraphicSubheader& graphic = *document.graphics.At(index);
  OwnedDrawing drawing;
  if (Status s = LoadSegmentDrawing(document, index, drawing.handle); !Ok(s)) return s;
  if (!graphic.HasForm('C')) {
    extent.Add(int64_t{graphic.SBND2.column} + columnOffset, int64_t{graphic.SBND2.row} + rowOffset);
    return Status::Success;
  }
  const RECT bounds = GraphicRectangle(graphic, rowOffset, columnOffset);
  extent.Add(std::abs(int64_t{bounds.right}), std::abs(int64_t{bounds.bottom}));
  return Status::Success;
}

Status AddItem(NitfFile& document, DisplayList& list, const DisplayItem& item, Extent& extent) {
  int32_t rowOffset = 0, columnOffset = 0;
  list.AttachmentOffset(item, rowOffset, columnOffset);
  if (item.kind == SegmentKind::Image) {
    return AddImage(*document.images.At(item.index), rowOffset, columnOffset, extent);
  }
  return AddGraphic(document, item.index, rowOffset, columnOffset, extent);
}

Status MeasureComposite(NitfFile& document, uint32_t& width, uint32_t& height) {
  if (document.fixedCanvas) {
    width = height = kFixedCanvasSide;
    return Status::Success;
  }
  DisplayList list;
  if (Status s = BuildDisplayList(document, list); !Ok(s)) return s;
  if (list.Count() == 0 && document.TextCount() != 0) {
    width = height = kTextOnlySide;
    return Status::Success;
  }
  Extent extent;
  for (const DisplayItem& item : list.Items()) {
    if (Status s = AddItem(document, list, item, extent); !Ok(s)) return s;
  }
  if (extent.width > INT32_MAX || extent.height > INT32_MAX) return Status::OutOfMemory;
  width = static_cast<uint32_t>(extent.width);
  height = static_cast<uint32_t>(extent.height);
  if (width == 0 && height == 0) width = height = kFixedCanvasSide;
  return Status::Success;
}

}  // namespace

Status BuildDisplayList(const NitfFile& document, DisplayList& list) { return list.Fill(document); }

Status DisplayList::Fill(const NitfFile& document) {
  imageCount_ = document.ImageCount();
  const uint32_t count = imageCount_ + document.GraphicCount();
  if (count == 0) return Status::Success;
  if (Status s = items_.Allocate(count, ORB_HERE); !Ok(s)) return s;
  if (Status s = segments_.Allocate(count, ORB_HERE); !Ok(s)) return s;
  uint32_t next = 0;
  for (const ImageSubheader& image : document.images) {
    segments_[next] = {image.IDLVL.value, image.IALVL.value, image.ILOC.row, image.ILOC.column, 0};
    items_[next] = {SegmentKind::Image, image.IDLVL.value, next};
    ++next;
  }
  for (const GraphicSubheader& graphic : document.graphics) {
    segments_[next] = {graphic.SDLVL.value, graphic.SALVL.value, graphic.SLOC.row, graphic.SLOC.column,
                       0};
    items_[next] = {SegmentKind::Graphic, graphic.SDLVL.value, next - imageCount_};
    ++next;
  }
  SortItems();
  return IndexLevels();
}

// Exchange sort: which of several segments of one level is drawn first follows from its swaps.
void DisplayList::SortItems() {
  for (size_t i = 0; i + 1 < items_.size(); ++i) {
    for (size_t j = i + 1; j < items_.size(); ++j) {
      if (items_[i].level > items_[j].level) std::swap(items_[i], items_[j]);
    }
  }
}

Status DisplayList::IndexLevels() {
  if (Status s = levels_.Allocate(segments_.size(), ORB_HERE); !Ok(s)) return s;
  for (uint32_t i = 0; i < levels_.size(); ++i) levels_[i] = {segments_[i].level, i};
  const auto byLevel = [](const LevelEntry& a, const LevelEntry& b) {
    return a.level != b.level ? a.level < b.level : a.segment < b.segment;
  };
  std::sort(levels_.begin(), levels_.begin() + imageCount_, byLevel);
  std::sort(levels_.begin() + imageCount_, levels_.end(), byLevel);
  return Status::Success;
}

DisplayList::Segment* DisplayList::FirstOfLevel(std::span<const LevelEntry> levels, uint32_t level) {
  const auto found =
      std::lower_bound(levels.begin(), levels.end(), level,
                       [](const LevelEntry& entry, uint32_t l) { return entry.level < l; });
  return found != levels.end() && found->level == level ? &segments_[found->segment] : nullptr;
}

void DisplayList::AttachmentOffset(const DisplayItem& item, int32_t& rowOffset, int32_t& columnOffset) {
  const std::span<const LevelEntry> levels = levels_.Span();
  const std::span<const LevelEntry> kinds[] = {levels.first(imageCount_), levels.subspan(imageCount_)};
  Segment& start = segments_[item.kind == SegmentKind::Image ? item.index : imageCount_ + item.index];
  const uint32_t visit = start.visit = ++visits_;
  uint32_t level = start.attachment;
  // Images are followed as far as they lead, then graphics, and again while either led on.
  for (bool found = true; found;) {
    found = false;
    for (const auto& kind : kinds) {
      while (Segment* ancestor = FirstOfLevel(kind, level)) {
        if (ancestor->visit == visit) return;
        ancestor->visit = visit;
        rowOffset += ancestor->row;
        columnOffset += ancestor->column;
        level = ancestor->attachment;
        found = true;
      }
    }
  }
}

uint32_t NextDisplayLevel(const NitfFile& document) {
  uint32_t highest = 0;
  for (const ImageSubheader& image : document.images) highest = std::max(highest, image.IDLVL.value);
  for (const GraphicSubheader& graphic : document.graphics) {
    highest = std::max(highest, graphic.SDLVL.value);
  }
  return highest + 1;
}

int32_t ORB_CALL GetActual_Width_Height(NitfHandle document, uint32_t* width, uint32_t* height) {
  if (document == nullptr) return ToCaller(Status::NullHandle);
  if (width == nullptr || height == nullptr) return ToCaller(Status::InvalidParameter);
  return ToCaller(MeasureComposite(*document, *width, *height));
}
