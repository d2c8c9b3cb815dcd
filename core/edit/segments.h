// Segments that come and go, with what hangs on them: levels, attachments, overflow, complexity.
#pragma once

#include "core/edit/draft.h"

namespace core {

/// Where a new image or graphic stands.
struct Placing {
  const DraftPart* on = nullptr;  ///< what it is attached to; null for nothing
  int64_t row = 0, column = 0;    ///< from there
};

/// The names of an image's or a graphic's fields of level, attachment and place; of a text its
/// attachment's. Null for what there is none of.
struct LevelFields {
  const char *level, *attachment, *place;
};
LevelFields LevelFieldsOf(PartKind kind);
/// The greatest display level there is; 0 for none.
int64_t GreatestLevel(const Draft& draft);
/// A row and a column as a field of ten characters. EditError where they do not fit.
std::string PlaceDigits(int64_t row, int64_t column, const std::string& field);
/// Moves an image, or a graphic with its bounds, by rows and columns.
void MoveBy(DraftPart& part, int64_t rows, int64_t columns);

/// Adds an image or a graphic above all others, and gives it its place.
DraftPart& AddPlaced(Draft& draft, DraftPart part, const Placing& placing);
/// Takes a segment out. What is attached to it is attached to what it was attached to and stays at its
/// place; its records that overflowed go with it.
void RemoveSegment(Draft& draft, PartKind kind, size_t index);
/// Adds the segments of another file, above all others. What of it is not taken, in words.
std::vector<std::string> Merge(Draft& draft, const Survey& other);

/// Sets the complexity level to a number; with 0 to the lowest that the file fits. Without `lower` it is
/// only raised. Whether it changed.
bool SetLevel(Draft& draft, int64_t level, bool lower);

}  // namespace core
