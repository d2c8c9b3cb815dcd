// The complexity level against what the file asks of a reader (MIL-STD-2500C, table A-10).
#include <algorithm>
#include <optional>

#include "core/check/rule.h"
#include "core/format/levels.h"

namespace core {
namespace {

const ComplexityLevel* LevelOf(const SurveyedPart& header) {
  return core::LevelOf(header.Number("CLEVEL"));
}

void AskNumber(Checking& checking, const SurveyedPart& part) {
  const int64_t level = part.Number("CLEVEL");
  const bool known = LevelOf(part) != nullptr || level == 9 || (level >= 50 && level <= 59);
  if (part.Has("CLEVEL") && !known) checking.FailAt(part, "CLEVEL");
}

// One limit of the level against what the file needs.
void AskLimit(Checking& checking, const SurveyedPart& part, int64_t FileNeeds::*limit, const char* what,
              const char* behind = "") {
  const ComplexityLevel* level = LevelOf(part);
  const FileNeeds needs = NeedsOf(checking.survey, checking.places);
  if (level == nullptr || needs.*limit <= level->most.*limit) return;
  checking.Fail(part, "CLEVEL",
                "the file has " + Count(static_cast<uint64_t>(needs.*limit), what) + behind + ", level " +
                    std::string(part.Text("CLEVEL")) + " allows " + std::to_string(level->most.*limit));
}

void AskSide(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &FileNeeds::side, "pixel", " on a side of its canvas");
}
void AskBytes(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &FileNeeds::bytes, "byte");
}
void AskBands(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &FileNeeds::bands, "band", " in an image");
}
void AskImages(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &FileNeeds::images, "image");
}
void AskExtensions(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &FileNeeds::extensions, "data extension");
}
void AskGraphics(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &FileNeeds::graphicBytes, "byte", " of graphics");
}

void AskGraphicCount(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &FileNeeds::graphics, "graphic");
}
void AskTexts(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &FileNeeds::texts, "text");
}

void AskLowest(Checking& checking, const SurveyedPart& part) {
  const ComplexityLevel* own = LevelOf(part);
  if (own == nullptr) return;
  const int64_t lowest = LowestLevel(NeedsOf(checking.survey, checking.places));
  if (lowest < own->number)
    checking.Fail(
        part, "CLEVEL",
        "CLEVEL is " + std::string(part.Text("CLEVEL")) + ", 0" + std::to_string(lowest) + " would do");
}

constexpr const char kTableA10[] = "MIL-STD-2500C, table A-10";
constexpr Rule kRules[] = {
    {"level.number", Severity::Error, On::File, "CLEVEL", kTableA10,
     "The complexity level is 03, 05, 06, 07, 09, or 50 to 59.", AskNumber},
    {"level.canvas", Severity::Error, On::File, "CLEVEL", kTableA10,
     "No side of the canvas is longer than the level allows.", AskSide},
    {"level.size", Severity::Error, On::File, "CLEVEL", kTableA10,
     "The file is no larger than the level allows.", AskBytes},
    {"level.bands", Severity::Error, On::File, "CLEVEL", kTableA10,
     "No image has more bands than the level allows.", AskBands},
    {"level.images", Severity::Error, On::File, "CLEVEL", kTableA10,
     "The file has no more images than the level allows.", AskImages},
    {"level.extensions", Severity::Error, On::File, "CLEVEL", kTableA10,
     "The file has no more data extensions than the level allows.", AskExtensions},
    {"level.graphics", Severity::Error, On::File, "CLEVEL", kTableA10,
     "The graphics together take no more bytes than the level allows.", AskGraphics},
    {"level.graphics.count", Severity::Error, On::File, "CLEVEL", kTableA10,
     "The file has no more graphics than the level allows.", AskGraphicCount},
    {"level.texts", Severity::Error, On::File, "CLEVEL", kTableA10,
     "The file has no more texts than the level allows.", AskTexts},
    {"level.lowest", Severity::Note, On::File, "CLEVEL", kTableA10,
     "The level is the lowest that the file fits.", AskLowest},
};

}  // namespace

const Rules kLevelRules = kRules;

}  // namespace core
