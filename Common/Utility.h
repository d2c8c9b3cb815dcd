// Display geometry (MIL-STD-2500C, 5.3.3: the common coordinate system, attachment and display levels).
#pragma once

#include "Common/NitfFile.h"

/// One image or graphic segment of the composite display.
struct DisplayItem {
  SegmentKind kind;
  uint32_t level;  ///< IDLVL or SDLVL
  uint32_t index;  ///< within its kind
};

/// The items of a document in drawing order, and the way from each to its place.
class DisplayList {
 public:
  std::span<const DisplayItem> Items() const { return items_.Span(); }
  uint32_t Count() const { return static_cast<uint32_t>(items_.size()); }

  /// Adds the locations of an item's ancestors to the two offsets; its own is not included. A chain that
  /// comes back to a segment ends there, so that no location counts twice.
  void AttachmentOffset(const DisplayItem& item, int32_t& rowOffset, int32_t& columnOffset);

 private:
  // What the attachment chains need of a segment. Images come first, each kind in index order.
  struct Segment {
    uint32_t level, attachment;
    int32_t row, column;
    uint32_t visit;  // the last chain that passed here
  };
  struct LevelEntry {
    uint32_t level, segment;
  };

  friend Status BuildDisplayList(const NitfFile& document, DisplayList& list);
  Status Fill(const NitfFile& document);
  void SortItems();
  Status IndexLevels();
  Segment* FirstOfLevel(std::span<const LevelEntry> levels, uint32_t level);

  KernelBuffer<DisplayItem> items_;
  KernelBuffer<Segment> segments_;
  KernelBuffer<LevelEntry> levels_;  // images, then graphics, each sorted by level and index
  uint32_t imageCount_ = 0;
  uint32_t visits_ = 0;
};

/// Lists every image, then every graphic, and sorts by display level. -1.
Status BuildDisplayList(const NitfFile& document, DisplayList& list);

/// The highest display level plus 1; 1 for a document without images and graphics.
uint32_t NextDisplayLevel(const NitfFile& document);
