#include "core/edit/record_edits.h"

#include <algorithm>

#include "core/edit/fields.h"
#include "core/edit/new_headers.h"
#include "core/edit/overflow.h"
#include "core/format/words.h"

namespace core {
namespace {

constexpr size_t kHeadWidth = kTagWidth + kLengthWidth;

std::string HeadOf(const std::string& tag, size_t length) {
  constexpr size_t kMostData = 99985;
  if (tag.empty() || tag.size() > kTagWidth)
    RefuseArgument(Quoted(tag) + ": a tag has one to six characters");
  if (length == 0 || length > kMostData)
    RefuseArgument(tag + ": a record has 1 to 99985 bytes of data, here are " + std::to_string(length));
  std::string head = tag;
  head.resize(kTagWidth, ' ');
  const std::string digits = std::to_string(length);
  return head + std::string(kHeadWidth - kTagWidth - digits.size(), '0') + digits;
}

// The records of an area as they follow one another.
struct AreaRecords {
  DraftPart* part;         // the header, or the extension that they overflowed to
  const AreaLayout* area;  // null where they overflowed
  std::string bytes;
};

std::string RecordsIn(const DraftPart& part, const AreaLayout& area) {
  for (const RecordArea& found : part.Fields().areas) {
    if (found.name == area.records.name) return found.bytes;
  }
  return "";
}

std::vector<AreaRecords> AllRecords(Draft& draft, DraftPart& part) {
  std::vector<AreaRecords> all;
  for (const AreaLayout* area : AreasOf(part.kind)) {
    all.push_back({&part, area, RecordsIn(part, *area)});
    if (DraftPart* overflow = OverflowOf(draft, part, *area))
      all.push_back({overflow, nullptr, BytesOf(overflow->data)});
  }
  return all;
}

// Where a record begins in the bytes of an area, and how long it is; counts down to the one that is
// meant.
bool FindIn(const std::string& bytes, const std::string& tag, int64_t& number, size_t& at,
            size_t& length) {
  RecordArea area = {"", 0, bytes, bytes.size(), 0};
  static const RecordDefinitions none;
  for (const TaggedRecord& record : RecordsOf(area, none)) {
    if (TrimmedText(record.tag) != tag || record.tag.empty() || --number > 0) continue;
    at = static_cast<size_t>(record.offset);
    length = kHeadWidth + record.bytes.size();
    return true;
  }
  return false;
}

// Whether the bytes are records up to their end, so that another one is found behind them.
bool IsWhole(const std::string& bytes) {
  static const RecordDefinitions none;
  const std::vector<TaggedRecord> records = RecordsOf(RecordArea{"", 0, bytes, bytes.size(), 0}, none);
  return records.empty() || !records.back().tag.empty();
}

// Gives an area of a header other records; the field in front of them comes and goes with them.
void PutArea(DraftPart& part, const AreaLayout& area, const std::string& records, int64_t overflow) {
  const SurveyedPart& fields = part.Fields();
  const std::optional<SurveyedField> length = fields.Find(area.length.name);
  if (!length || !fields.complete)
    RefuseFile(part.Title() + ": its header does not reach to its records");
  const size_t at = part.At(*length);
  const size_t front = area.overflow.width;
  const int64_t now = fields.Number(area.length.name);
  if (now < 0) RefuseFile(part.Title() + ": " + area.length.name + " is no number");
  if (now != 0 && now < area.overflow.width)
    RefuseFile(part.Title() + ": " + area.length.name + " is less than its overflow field takes");
  std::string text;
  if (!records.empty() || overflow != 0) {
    const std::string number = std::to_string(overflow), bytes = std::to_string(front + records.size());
    text = std::string(area.length.width - bytes.size(), '0') + bytes +
           std::string(front - number.size(), '0') + number + records;
  } else {
    text = std::string(area.length.width, '0');
  }
  part.named.insert({area.length.name, area.overflow.name, area.records.name});
  part.Replace(at, area.length.width + static_cast<size_t>(now), text);
}

constexpr size_t kMostArea = 99999 - 3;

// How many bytes of records an area may have: its own length and that of its header have so many digits.
size_t MostOf(const DraftPart& part, const AreaLayout& area) {
  const bool isLong = part.kind == PartKind::File || part.kind == PartKind::Image;
  const size_t most = isLong ? 999999 : 9999, records = RecordsIn(part, area).size();
  const size_t others = static_cast<size_t>(part.HeaderLength()) - records + area.overflow.width;
  return std::min(kMostArea, most - std::min(most, others));
}

// The area's records are to be others: what does not fit is refused.
void PutRecords(Draft& draft, DraftPart& owner, const AreaRecords& where, const std::string& bytes) {
  if (where.area == nullptr) {
    if (bytes.empty()) {
      for (const AreaLayout* area : AreasOf(owner.kind)) {
        if (OverflowOf(draft, owner, *area) == where.part)
          PutArea(owner, *area, RecordsIn(owner, *area), 0);
      }
      EraseExtension(draft, draft.IndexOf(*where.part));
      return;
    }
    where.part->data = {PieceOf(bytes)};
    where.part->otherData = true;
    return;
  }
  if (bytes.size() > MostOf(owner, *where.area))
    RefuseArgument("the records of " + std::string(where.area->records.name) +
                   " would take more bytes than there is room for");
  PutArea(owner, *where.area, bytes, OverflowNumber(owner, *where.area));
}

DraftPart& OwnerOf(Draft& draft, const RecordName& name) {
  DraftPart* part = draft.Find(name.kind, name.index);
  if (part == nullptr)
    RefuseArgument(std::string("there is no ") + NameOf(name.kind) + " " + std::to_string(name.index));
  if (AreasOf(name.kind).empty()) RefuseArgument(part->Title() + " has no tagged records");
  return *part;
}

struct Place {
  AreaRecords where;
  size_t at, length;
};
std::optional<Place> FindRecord(Draft& draft, DraftPart& owner, const RecordName& name) {
  int64_t number = name.number;
  for (AreaRecords& records : AllRecords(draft, owner)) {
    size_t at = 0, length = 0;
    if (FindIn(records.bytes, name.tag, number, at, length)) return Place{std::move(records), at, length};
  }
  return std::nullopt;
}

// Into the extended area, or into what overflowed from it.
void AddRecord(Draft& draft, const RecordName& name, const std::string& record) {
  DraftPart& owner = OwnerOf(draft, name);
  const AreaLayout& area = *AreasOf(name.kind).back();
  if (!owner.Fields().complete) RefuseFile(owner.Title() + ": its header does not hold all its fields");
  if (DraftPart* overflow = OverflowOf(draft, owner, area)) {
    overflow->data.push_back(PieceOf(record));
    overflow->otherData = true;
    return;
  }
  const std::string records = RecordsIn(owner, area);
  if (!IsWhole(records))
    RefuseFile(owner.Title() + ": the records of " + area.records.name + " do not follow one another");
  if (records.size() + record.size() <= MostOf(owner, area))
    return PutArea(owner, area, records + record, 0);
  const size_t item = name.kind == PartKind::File ? 0 : name.index + 1;
  const std::string header = OverflowHeader(owner, area.records.name, item);
  draft.Insert(DraftPart(PartKind::DataExtension, header, {PieceOf(record)}));
  DraftPart& again = OwnerOf(draft, name);
  PutArea(again, area, RecordsIn(again, area),
          static_cast<int64_t>(draft.Count(PartKind::DataExtension)));
}

// ---------------------------------------------------------------- fields of a record

// Where the n-th field of a name begins in a record's data.
const DecodedField* Locate(const std::vector<DecodedField>& fields, std::string_view name,
                           int64_t& number, size_t& at) {
  for (const DecodedField& field : fields) {
    if (field.turns.empty() && field.field->fields.empty() && field.field->name == name && --number == 0)
      return &field;
    at += field.text.size();
    for (const auto& turn : field.turns) {
      if (const DecodedField* found = Locate(turn, name, number, at)) return found;
    }
  }
  return nullptr;
}

std::string RecordText(const DecodedField& field, const std::string& value) {
  const size_t width = field.field->width;
  const bool isNumber = field.field->kind == ValueKind::Number;
  if (isNumber && DigitsOf(value) >= 0)
    return StoredText(field.field->name, FieldForm::Number, width, value, true);
  return StoredText(field.field->name, FieldForm::Extended, width, value, true);
}

}  // namespace

void SetRecordField(Draft& draft, const RecordName& name, const RecordDefinitions& definitions,
                    const std::string& field, const std::string& value) {
  DraftPart& owner = OwnerOf(draft, name);
  std::optional<Place> place = FindRecord(draft, owner, name);
  if (!place) RefuseArgument(owner.Title() + " has no record " + name.tag);
  const RecordDefinition* definition = definitions.Find(name.tag);
  if (definition == nullptr)
    RefuseArgument("record " + name.tag + " has no definition; record:TAG=@FILE replaces all of it");
  std::string& bytes = place->where.bytes;
  const std::string data = bytes.substr(place->at + kHeadWidth, place->length - kHeadWidth);
  std::vector<DecodedField> fields, again;
  if (!Decode(*definition, data, fields))
    RefuseFile("record " + name.tag + " does not fit its definition");
  const size_t colon = field.find(':');
  int64_t number = colon == std::string::npos ? 1 : DigitsOf(field.substr(colon + 1));
  size_t at = 0;
  const DecodedField* found = Locate(fields, field.substr(0, colon), number, at);
  if (found == nullptr) RefuseArgument("record " + name.tag + " has no field " + field);
  std::string changed = data;
  changed.replace(at, found->text.size(), RecordText(*found, value));
  if (!Decode(*definition, changed, again))
    RefuseArgument(field + ": the rest of record " + name.tag +
                   " would not fit it; record:TAG=@FILE replaces all of it");
  bytes.replace(place->at + kHeadWidth, data.size(), changed);
  PutRecords(draft, owner, place->where, bytes);
}

void PutRecord(Draft& draft, const RecordName& name, const std::string& data) {
  DraftPart& owner = OwnerOf(draft, name);
  const std::string record = HeadOf(name.tag, data.size()) + data;
  std::optional<Place> place = FindRecord(draft, owner, name);
  if (!place) return AddRecord(draft, name, record);
  std::string& bytes = place->where.bytes;
  const bool fits = place->where.area == nullptr ||
                    bytes.size() - place->length + record.size() <= MostOf(owner, *place->where.area);
  bytes.replace(place->at, place->length, fits ? record : "");
  PutRecords(draft, owner, place->where, bytes);
  if (!fits) AddRecord(draft, name, record);
}

void RemoveRecord(Draft& draft, const RecordName& name) {
  DraftPart& owner = OwnerOf(draft, name);
  std::optional<Place> place = FindRecord(draft, owner, name);
  if (!place) RefuseArgument(owner.Title() + " has no record " + name.tag);
  place->where.bytes.erase(place->at, place->length);
  PutRecords(draft, owner, place->where, place->where.bytes);
}

}  // namespace core
