// Where the data of a document's segments comes from.
#pragma once

#include "Common/ImCodes.h"
#include "Common/NitfFile.h"

namespace tool {

/// The kinds of segments that a save writes, in file order.
inline constexpr SegmentKind kSavedKinds[] = {SegmentKind::Image, SegmentKind::Graphic, SegmentKind::Text,
                                              SegmentKind::DataExtension};

/// What a caller gave as a segment's data, null for data of the source file.
inline const AppendedData* DataGiven(const NitfFile& document, SegmentKind kind, uint32_t index) {
  const AppendedData* given = nullptr;
  if (kind == SegmentKind::Image) given = &document.images.At(index)->appended;
  if (kind == SegmentKind::Graphic) given = &document.graphics.At(index)->appended;
  if (kind == SegmentKind::Text) given = &document.texts.At(index)->appended;
  return given != nullptr && given->present ? given : nullptr;
}

/// Whether a segment is an image of codes, of which a save keeps what its blocks need.
inline bool IsVectorQuantised(const NitfFile& document, SegmentKind kind, uint32_t index) {
  if (kind != SegmentKind::Image) return false;
  return document.images.At(index)->Family() == ReaderFamily::VectorQuantised;
}

}  // namespace tool
