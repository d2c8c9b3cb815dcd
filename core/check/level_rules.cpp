// The complexity level against what the file asks of a reader (MIL-STD-2500C, table A-10).
#include <algorithm>
#include <optional>

#include "core/check/rule.h"

namespace core {
namespace {

struct Level {
  int64_t number, side, bytes, bands, images, extensions, graphicBytes, graphics, texts;
};
constexpr Level kLevels[] = {{3, 2048, (50 << 20) - 1, 9, 20, 10, 1 << 20, 100, 32},
                             {5, 8192, (1 << 30) - 1, 255, 20, 50, 2 << 20, 100, 32},
                             {6, 65536, (int64_t{1} << 31) - 1, 999, 100, 100, 2 << 20, 100, 32},
                             {7, 99999999, (int64_t{10} << 30) - 1, 999, 100, 100, 2 << 20, 100, 32}};

// What the file asks for, in the members of a level.
Level NeedsOf(const Checking& checking) {
  const Survey& survey = checking.survey;
  Level needs = {};
  needs.side = std::max(checking.places.Height(), checking.places.Width());
  needs.bytes = static_cast<int64_t>(survey.file.Size());
  needs.images = survey.Count(PartKind::Image);
  needs.extensions = survey.Count(PartKind::DataExtension);
  needs.graphics = survey.Count(PartKind::Graphic);
  needs.texts = survey.Count(PartKind::Text);
  for (const SurveyedPart& part : survey.parts) {
    if (part.kind == PartKind::Image) needs.bands = std::max(needs.bands, part.Bands());
    if (part.kind == PartKind::Graphic) needs.graphicBytes += static_cast<int64_t>(part.dataLength);
  }
  return needs;
}

const Level* LevelOf(const SurveyedPart& header) {
  const auto* found = std::find_if(std::begin(kLevels), std::end(kLevels), [&](const Level& level) {
    return level.number == header.Number("CLEVEL");
  });
  return found != std::end(kLevels) ? found : nullptr;
}

void AskNumber(Checking& checking, const SurveyedPart& part) {
  const int64_t level = part.Number("CLEVEL");
  const bool known = LevelOf(part) != nullptr || level == 9 || (level >= 50 && level <= 59);
  if (part.Has("CLEVEL") && !known) checking.FailAt(part, "CLEVEL");
}

// One limit of the level against what the file needs.
void AskLimit(Checking& checking, const SurveyedPart& part, int64_t Level::*limit, const char* what) {
  const Level* level = LevelOf(part);
  const Level needs = NeedsOf(checking);
  if (level == nullptr || needs.*limit <= level->*limit) return;
  checking.Fail(part, "CLEVEL",
                "the file has " + std::to_string(needs.*limit) + what + ", level " +
                    std::string(part.Text("CLEVEL")) + " allows " + std::to_string(level->*limit));
}

void AskSide(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &Level::side, " pixels on a side of its canvas");
}
void AskBytes(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &Level::bytes, " bytes");
}
void AskBands(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &Level::bands, " bands in an image");
}
void AskImages(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &Level::images, " images");
}
void AskExtensions(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &Level::extensions, " data extensions");
}
void AskGraphics(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &Level::graphicBytes, " bytes of graphics");
}

void AskGraphicCount(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &Level::graphics, " graphics");
}
void AskTexts(Checking& checking, const SurveyedPart& part) {
  AskLimit(checking, part, &Level::texts, " texts");
}

bool Holds(const Level& level, const Level& needs) {
  return needs.side <= level.side && needs.bytes <= level.bytes && needs.bands <= level.bands &&
         needs.images <= level.images && needs.extensions <= level.extensions &&
         needs.graphicBytes <= level.graphicBytes && needs.graphics <= level.graphics &&
         needs.texts <= level.texts;
}

void AskLowest(Checking& checking, const SurveyedPart& part) {
  const Level* own = LevelOf(part);
  const Level needs = NeedsOf(checking);
  if (own == nullptr || own == &kLevels[0]) return;
  const auto* lowest = std::find_if(std::begin(kLevels), std::end(kLevels),
                                    [&](const Level& level) { return Holds(level, needs); });
  if (lowest < own)
    checking.Fail(part, "CLEVEL",
                  "CLEVEL is " + std::string(part.Text("CLEVEL")) + ", 0" +
                      std::to_string(lowest->number) + " would do");
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
