// What complexity levels ask of a reader at most (MIL-STD-2500C, table A-10).
#pragma once

#include <span>

#include "core/format/places.h"

namespace core {

/// What a file asks of a reader.
struct FileNeeds {
  int64_t side = 0;  ///< the longer one of its canvas, in pixels
  int64_t bytes = 0, bands = 0, images = 0, extensions = 0, graphicBytes = 0, graphics = 0, texts = 0;
};

struct ComplexityLevel {
  int64_t number;  ///< CLEVEL
  FileNeeds most;
};

FileNeeds NeedsOf(const Survey& survey, const Places& places);
/// Adds what a segment asks for, but its place on the canvas.
void AddNeeds(const SurveyedPart& part, uint64_t dataBytes, FileNeeds& needs);
/// A level by its number; null for one without limits of its own.
const ComplexityLevel* LevelOf(int64_t number);
bool Holds(const ComplexityLevel& level, const FileNeeds& needs);
/// The number of the lowest level that a file fits: 9 where it is beyond all.
int64_t LowestLevel(const FileNeeds& needs);

}  // namespace core
