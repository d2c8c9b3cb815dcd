// Display levels, attachments and places of images and graphics.
#include "core/check/rule.h"

namespace core {
namespace {

struct Names {
  const char *level, *attachment, *location;
};
Names NamesOf(const SurveyedPart& part) {
  return part.kind == PartKind::Image ? Names{"IDLVL", "IALVL", "ILOC"} : Names{"SDLVL", "SALVL", "SLOC"};
}

bool Takes(const SurveyedPart& part) {
  return (part.kind == PartKind::Image || part.kind == PartKind::Graphic) && part.complete;
}

void AskLevel(Checking& checking, const SurveyedPart& part) {
  if (!Takes(part)) return;
  const int64_t level = part.Number(NamesOf(part).level);
  if (level < 1 || level > 999) checking.FailAt(part, NamesOf(part).level);
}

void AskUnique(Checking& checking, const SurveyedPart& part) {
  if (!Takes(part)) return;
  const PlacedSegment* first = checking.places.OfLevel(part.Number(NamesOf(part).level));
  if (first == nullptr || first->part == &part) return;
  checking.Fail(
      part, NamesOf(part).level,
      "level " + std::string(part.Text(NamesOf(part).level)) + " is that of " + first->part->Title());
}

void AskAttachment(Checking& checking, const SurveyedPart& part) {
  const char* name = part.kind == PartKind::Text ? "TXTALVL" : NamesOf(part).attachment;
  if (!part.Has(name)) return;
  const int64_t level = part.Number(name);
  if (level < 0 || (level != 0 && checking.places.OfLevel(level) == nullptr))
    checking.Fail(part, name,
                  name + (" is " + Quoted(part.Text(name))) + ", which is no segment's level");
}

// Attached to what lies below it: such a chain comes to an end.
void AskLower(Checking& checking, const SurveyedPart& part) {
  if (!Takes(part)) return;
  const int64_t own = part.Number(NamesOf(part).level), parent = part.Number(NamesOf(part).attachment);
  if (own < 1 || parent < own || checking.places.OfLevel(parent) == nullptr) return;
  checking.Fail(part, NamesOf(part).attachment,
                "level " + std::to_string(own) + " is attached to level " + std::to_string(parent));
}

void AskPlace(Checking& checking, const SurveyedPart& part) {
  if (!Takes(part)) return;
  for (const char* name : {"ILOC", "SLOC", "SBND1", "SBND2"}) {
    int64_t row = 0, column = 0;
    if (part.Has(name) && !PlaceOfText(part.Text(name), row, column)) checking.FailAt(part, name);
  }
}

void AskOrigin(Checking& checking, const SurveyedPart& part) {
  if (!Takes(part)) return;
  const PlacedSegment* place = checking.places.Of(part);
  if (!place->readable || !place->ends || (place->top >= 0 && place->left >= 0)) return;
  checking.Fail(
      part, NamesOf(part).location,
      "it begins at row " + std::to_string(place->top) + ", column " + std::to_string(place->left));
}

// Parts of an image that was too large for one segment.
void AskChain(Checking& checking, const SurveyedPart& part) {
  const PlacedSegment* place = Takes(part) ? checking.places.Of(part) : nullptr;
  if (place == nullptr || place->parent == nullptr || part.kind != PartKind::Image) return;
  const SurveyedPart& parent = *place->parent->part;
  if (parent.kind != PartKind::Image || parent.Number("NCOLS") != part.Number("NCOLS")) return;
  if (place->column == 0 && place->row == parent.Number("NROWS"))
    checking.Fail(part, "ILOC", part.Title() + " goes on where " + parent.Title() + " ends");
}

constexpr const char kText[] = "MIL-STD-2500C, 5.3.3";
constexpr Rule kRules[] = {
    {"place.level", Severity::Error, On::Header, "IDLVL", kText, "A display level is 1 to 999.",
     AskLevel},
    {"place.unique", Severity::Error, On::Header, "IDLVL", kText,
     "No two images or graphics have one display level.", AskUnique},
    {"place.attachment", Severity::Error, On::Header, "IALVL", kText,
     "A segment is attached to level 0 or to that of another one.", AskAttachment},
    {"place.lower", Severity::Error, On::Header, "IALVL", kText,
     "A segment is attached to one that lies below it.", AskLower},
    {"place.form", Severity::Error, On::Header, "ILOC", "MIL-STD-2500C, tables A-3 and A-5",
     "Places are a row and a column of five characters.", AskPlace},
    {"place.origin", Severity::Error, On::Header, "ILOC", kText,
     "No segment begins above or left of the canvas.", AskOrigin},
    {"place.chain", Severity::Note, On::Image, "ILOC", "MIL-STD-2500C, 5.4.3",
     "An image too large for a segment goes on in the next one.", AskChain},
};

}  // namespace

const Rules kPlaceRules = kRules;

}  // namespace core
