// The order in which segments are drawn, and where (MIL-STD-2500C, 5.3.3: the common coordinate system,
// attachment and display levels).
#pragma once

#include "Common/NitfFile.h"

/// One image or graphic segment of the composite display.
struct DisplayItem {
  SegmentKind kind;
  uint32_t level;  ///< IDLVL or SDLVL
  uint32_t index;  ///< within its kind
  /// Summed locations of what the segment is attached to; its own is not included.
  int32_t rowOffset, columnOffset;
};

/// The items of a document in drawing order.
class DisplayList {
 public:
  std::span<const DisplayItem> Items() const { return items_.Span(); }
  uint32_t Count() const { return static_cast<uint32_t>(items_.size()); }

 private:
  friend Status BuildDisplayList(const NitfFile& document, DisplayList& list);
  KernelBuffer<DisplayItem> items_;
};

/// Lists every image, then every graphic, sorts by display level and finds each item's offsets. -1.
Status BuildDisplayList(const NitfFile& document, DisplayList& list);

/// Tells the lowest display level; false for a document without images and graphics.
bool LowestDisplayLevel(const NitfFile& document, uint32_t& level);
/// The highest display level plus 1; 1 for a document without images and graphics.
uint32_t NextDisplayLevel(const NitfFile& document);
