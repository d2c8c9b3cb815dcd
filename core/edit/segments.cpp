#include "core/edit/segments.h"

#include <algorithm>
#include <map>

#include "core/edit/overflow.h"
#include "core/format/levels.h"

namespace core {
namespace {

constexpr int64_t kMostLevel = 999;

bool IsOverflow(const DraftPart& part) {
  return part.kind == PartKind::DataExtension && part.Fields().Trimmed("DESID") == "TRE_OVERFLOW";
}

// What overflowed from segments of a kind behind one that is gone belongs to a number less.
void MoveItems(Draft& draft, PartKind kind, int64_t behind) {
  for (DraftPart& part : draft.segments) {
    if (!IsOverflow(part) || KindOfArea(part.Fields().Trimmed("DESOFLW")) != kind) continue;
    const int64_t item = part.Fields().Number("DESITEM");
    if (item <= behind) continue;
    part.named.insert("DESITEM");
    part.PutNumber("DESITEM", static_cast<uint64_t>(item - 1));
  }
}

// What is attached to a segment that goes hangs on from where that hung.
void Reattach(Draft& draft, const DraftPart& gone) {
  const LevelFields own = LevelFieldsOf(gone.kind);
  const int64_t level = gone.Fields().Number(own.level), above = gone.Fields().Number(own.attachment);
  int64_t row = 0, column = 0;
  if (level <= 0 || above < 0 || !PlaceOfText(gone.Fields().Text(own.place), row, column)) return;
  for (DraftPart& part : draft.segments) {
    const LevelFields fields = LevelFieldsOf(part.kind);
    if (&part == &gone || fields.attachment == nullptr) continue;
    if (part.Fields().Number(fields.attachment) != level) continue;
    part.named.insert(fields.attachment);
    part.PutNumber(fields.attachment, static_cast<uint64_t>(above));
    if (fields.place != nullptr) MoveBy(part, row, column);
  }
}

bool IsFirstOfLevel(const Draft& draft, const DraftPart& part) {
  const char* own = LevelFieldsOf(part.kind).level;
  if (own == nullptr) return false;
  const int64_t level = part.Fields().Number(own);
  for (const DraftPart& other : draft.segments) {
    const LevelFields fields = LevelFieldsOf(other.kind);
    if (fields.level != nullptr && other.Fields().Number(fields.level) == level) return &other == &part;
  }
  return true;
}

void AddToNumber(DraftPart& part, const char* field, int64_t more) {
  const int64_t number = part.Fields().Number(field);
  if (number < 0) return;
  if (number + more > kMostLevel)
    RefuseArgument(part.Title() + ": " + field + " would be " + std::to_string(number + more) +
                   ", there are 999 levels");
  part.named.insert(field);
  part.PutNumber(field, static_cast<uint64_t>(number + more));
}

}  // namespace

LevelFields LevelFieldsOf(PartKind kind) {
  switch (kind) {
    case PartKind::Image:
      return {"IDLVL", "IALVL", "ILOC"};
    case PartKind::Graphic:
      return {"SDLVL", "SALVL", "SLOC"};
    case PartKind::Text:
      return {nullptr, "TXTALVL", nullptr};
    default:
      return {nullptr, nullptr, nullptr};
  }
}

int64_t GreatestLevel(const Draft& draft) {
  int64_t greatest = 0;
  for (const DraftPart& part : draft.segments) {
    const char* level = LevelFieldsOf(part.kind).level;
    if (level != nullptr) greatest = std::max(greatest, part.Fields().Number(level));
  }
  return greatest;
}

std::string PlaceDigits(int64_t row, int64_t column, const std::string& field) {
  std::string text;
  for (const int64_t value : {row, column}) {
    if (value < -9999 || value > 99999)
      RefuseArgument(field + " would be " + std::to_string(row) + "," + std::to_string(column) +
                     ": places reach from -9999 to 99999");
    const std::string digits = std::to_string(value < 0 ? -value : value);
    text += (value < 0 ? "-" : "") + std::string((value < 0 ? 4 : 5) - digits.size(), '0') + digits;
  }
  return text;
}

void MoveBy(DraftPart& part, int64_t rows, int64_t columns) {
  for (const char* field : {"ILOC", "SLOC", "SBND1", "SBND2"}) {
    int64_t row = 0, column = 0;
    if (!PlaceOfText(part.Fields().Text(field), row, column) || (rows == 0 && columns == 0)) continue;
    part.named.insert(field);
    part.Put(field, PlaceDigits(row + rows, column + columns, field));
  }
}

DraftPart& AddPlaced(Draft& draft, DraftPart part, const Placing& placing) {
  const LevelFields fields = LevelFieldsOf(part.kind);
  const int64_t level = GreatestLevel(draft) + 1;
  if (fields.level == nullptr) RefuseArgument(part.Title() + " takes no display level");
  if (level > kMostLevel) RefuseArgument("all 999 display levels are taken");
  part.PutNumber(fields.level, static_cast<uint64_t>(level));
  int64_t attached = 0;
  if (placing.on != nullptr) {
    const char* own = LevelFieldsOf(placing.on->kind).level;
    attached = own != nullptr ? placing.on->Fields().Number(own) : -1;
    if (attached <= 0) RefuseArgument(placing.on->Title() + " has no display level to attach to");
  }
  part.PutNumber(fields.attachment, static_cast<uint64_t>(attached));
  MoveBy(part, placing.row, placing.column);
  return draft.Insert(std::move(part));
}

void RemoveSegment(Draft& draft, PartKind kind, size_t index) {
  DraftPart* part = draft.Find(kind, index);
  if (part == nullptr || kind == PartKind::File)
    RefuseArgument(std::string("there is no ") + NameOf(kind) + " " + std::to_string(index));
  if (kind == PartKind::DataExtension) return EraseExtension(draft, index);
  std::set<size_t> overflows;
  for (const AreaLayout* area : AreasOf(kind)) {
    if (const DraftPart* overflow = OverflowOf(draft, *part, *area))
      overflows.insert(draft.IndexOf(*overflow));
  }
  if (LevelFieldsOf(kind).level != nullptr && IsFirstOfLevel(draft, *part)) Reattach(draft, *part);
  draft.Erase(kind, index);
  for (auto overflow = overflows.rbegin(); overflow != overflows.rend(); ++overflow)
    EraseExtension(draft, *overflow);
  MoveItems(draft, kind, static_cast<int64_t>(index) + 1);
}

// ---------------------------------------------------------------- merging

namespace {

// Whether a part of another file comes along; why not in words.
bool ComesAlong(const Survey& other, const SurveyedPart& part, std::vector<std::string>& left) {
  if (part.kind != PartKind::DataExtension) return true;
  const bool isFiles =
      part.Trimmed("DESID") == "TRE_OVERFLOW" && KindOfArea(part.Trimmed("DESOFLW")) == PartKind::File;
  const bool isStream = other.streamed && part.Trimmed("DESID") == "STREAMING_FILE_HEADER";
  if (isFiles) left.push_back(part.Title() + ", which holds records of its file header");
  if (isStream) left.push_back(part.Title() + ", which holds its streamed file header");
  return !isFiles && !isStream;
}

}  // namespace

std::vector<std::string> Merge(Draft& draft, const Survey& other) {
  std::vector<std::string> left;
  for (const RecordArea& area : other.Header().areas) {
    if (!area.bytes.empty()) left.push_back("the records of its file header (" + area.name + ")");
  }
  const int64_t levels = GreatestLevel(draft);
  std::map<PartKind, int64_t> counts;
  for (const PartKind kind :
       {PartKind::Image, PartKind::Graphic, PartKind::Text, PartKind::DataExtension})
    counts[kind] = static_cast<int64_t>(draft.Count(kind));
  std::map<int64_t, int64_t> extensions;  // the numbers there and here
  int64_t next = counts[PartKind::DataExtension];
  for (const SurveyedPart& part : other.parts) {
    std::vector<std::string> unsaid;
    if (part.kind == PartKind::DataExtension && ComesAlong(other, part, unsaid))
      extensions[part.index + 1] = ++next;
  }
  for (size_t i = 1; i < other.parts.size(); ++i) {
    const SurveyedPart& part = other.parts[i];
    if (!ComesAlong(other, part, left)) continue;
    if (!other.HoldsData(part) || !part.complete)
      RefuseFile(part.Title() + " of " + other.path + " is not whole");
    DraftPart own(other, part);
    const LevelFields fields = LevelFieldsOf(part.kind);
    if (fields.level != nullptr && levels > 0) AddToNumber(own, fields.level, levels);
    if (fields.attachment != nullptr && levels > 0 && own.Fields().Number(fields.attachment) > 0)
      AddToNumber(own, fields.attachment, levels);
    Renumber(own, [&](int64_t number) { return extensions.count(number) != 0 ? extensions[number] : 0; });
    if (IsOverflow(own)) AddToNumber(own, "DESITEM", counts[KindOfArea(part.Trimmed("DESOFLW"))]);
    draft.Insert(std::move(own));
  }
  return left;
}

bool SetLevel(Draft& draft, int64_t level, bool lower) {
  const int64_t now = draft.file.Fields().Number("CLEVEL");
  if (level == 0) {
    std::vector<const SurveyedPart*> parts;
    FileNeeds needs;
    for (const DraftPart& part : draft.segments) {
      parts.push_back(&part.Fields());
      AddNeeds(part.Fields(), part.DataLength(), needs);
    }
    const Places places(parts);
    needs.side = std::max(places.Height(), places.Width());
    needs.bytes = static_cast<int64_t>(draft.Size());
    level = LowestLevel(needs);
  }
  if (now == level || (!lower && (LevelOf(now) == nullptr || now > level))) return false;
  draft.file.named.insert("CLEVEL");
  draft.file.PutNumber("CLEVEL", static_cast<uint64_t>(level));
  return true;
}

}  // namespace core
