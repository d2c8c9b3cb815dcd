#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>

#include "core/format/records.h"
#include "core/format/words.h"

namespace core {
namespace {

// Takes the fields of one record. Repeats, widths and conditions look at the fields in front of them.
class RecordTaker {
 public:
  explicit RecordTaker(std::string_view bytes) : bytes_(bytes) {}

  bool Take(const std::vector<RecordField>& fields, std::vector<DecodedField>& decoded) {
    for (const RecordField& field : fields) {
      if (!IsThere(field)) continue;
      if (!(field.repeats || !field.fields.empty() ? TakeTurns(field, decoded) : TakeOne(field, decoded)))
        return false;
    }
    return true;
  }
  bool AtEnd() const { return bytes_.empty(); }

 private:
  // A field that came before, as it was the last time; null for none.
  const DecodedField* Seen(const std::string& name) const {
    const auto found = seen_.find(name);
    return found != seen_.end() ? &found->second.back() : nullptr;
  }
  static int64_t NumberIn(const DecodedField& field) {
    return field.field->kind == ValueKind::Unsigned
               ? static_cast<int64_t>(BigNumber(field.text) & INT64_MAX)
               : DigitsOf(TrimmedText(field.text));
  }

  bool Holds(const RecordCondition& condition) const {
    const DecodedField* field = Seen(condition.field);
    if (field == nullptr) return false;
    const auto isAmong = [&](const std::vector<std::string>& texts) {
      return std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
        return field->text == text || TrimmedText(field->text) == TrimmedText(text);
      });
    };
    if (!condition.in.empty() && !isAmong(condition.in)) return false;
    if (isAmong(condition.notIn)) return false;
    if (condition.bit && (NumberIn(*field) >> std::min(*condition.bit, 62u) & 1) == 0) return false;
    return !condition.above || NumberIn(*field) > *condition.above;
  }
  bool IsThere(const RecordField& field) const {
    return std::all_of(field.when.begin(), field.when.end(),
                       [&](const RecordCondition& condition) { return Holds(condition); });
  }

  // -1 where it is not told.
  int64_t WidthOf(const RecordField& field) const {
    if (field.widthField.empty()) return field.width;
    const DecodedField* told = Seen(field.widthField);
    if (told == nullptr) return -1;
    if (field.widths.empty()) return NumberIn(*told);
    const auto found = field.widths.find(TrimmedText(told->text));
    return found != field.widths.end() ? found->second : -1;
  }
  int64_t CountOf(const RecordCount& count) const {
    const auto found = seen_.find(count.field);
    if (found == seen_.end()) return -1;
    const std::vector<DecodedField>& all = found->second;
    if (count.isEach && (turns_.empty() || turns_.front() >= all.size())) return -1;
    const int64_t number = NumberIn(count.isEach ? all[turns_.front()] : all.back());
    if (number < 0) return -1;
    const int64_t rest = std::max<int64_t>(0, number - count.less);
    return count.isTriangle ? rest * (rest + 1) / 2 : rest;
  }
  // No more than the bytes could hold; -1 where it is not told.
  int64_t TurnsOf(const RecordField& field) const {
    int64_t turns = field.counts.empty() ? field.count : 1;
    for (const RecordCount& count : field.counts) {
      const int64_t number = CountOf(count);
      if (number < 0) return -1;
      turns *= std::min<int64_t>(number, kMostTurns);
      turns = std::min<int64_t>(turns, kMostTurns);
    }
    return turns;
  }

  bool TakeOne(const RecordField& field, std::vector<DecodedField>& decoded) {
    const int64_t width = WidthOf(field);
    if (width < 0 || static_cast<uint64_t>(width) > bytes_.size()) return false;
    decoded.push_back({&field, std::string(bytes_.substr(0, static_cast<size_t>(width))), {}});
    bytes_.remove_prefix(static_cast<size_t>(width));
    seen_[field.name].push_back(decoded.back());
    return true;
  }
  // Every turn takes bytes, so there are no more of them than the record has.
  bool TakeTurns(const RecordField& field, std::vector<DecodedField>& decoded) {
    const int64_t count = TurnsOf(field);
    if (count < 0) return false;
    DecodedField whole = {&field, "", {}};
    if (field.repeats) turns_.push_back(0);
    for (int64_t turn = 0; turn < count; ++turn) {
      const size_t before = bytes_.size();
      std::vector<DecodedField> fields;
      if (field.repeats) turns_.back() = static_cast<size_t>(turn);
      if (!(field.fields.empty() ? TakeOne(field, fields) : Take(field.fields, fields))) return false;
      if (bytes_.size() == before && field.repeats) return false;
      whole.turns.push_back(std::move(fields));
    }
    if (field.repeats) turns_.pop_back();
    decoded.push_back(std::move(whole));
    return true;
  }

  static constexpr int64_t kMostTurns = 100000;
  std::string_view bytes_;
  std::map<std::string, std::vector<DecodedField>, std::less<>> seen_;
  std::vector<size_t> turns_;  // of the loops around, the outermost first
};

void Explain(TaggedRecord& record, const RecordDefinitions& definitions) {
  record.definition = definitions.Find(TrimmedText(record.tag));
  if (record.definition == nullptr) {
    record.problem = "no definition";
  } else if (!Decode(*record.definition, record.bytes, record.fields)) {
    record.fields.clear();
    record.problem = "does not fit its definition";
  }
}

}  // namespace

bool Decode(const RecordDefinition& definition, std::string_view bytes,
            std::vector<DecodedField>& fields) {
  if (definition.length && *definition.length != bytes.size()) return false;
  RecordTaker decoder(bytes);
  return decoder.Take(definition.fields, fields) && decoder.AtEnd();
}

int64_t RecordLengthAt(std::string_view bytes) {
  return bytes.size() < kTagWidth + kLengthWidth ? -1 : DigitsOf(bytes.substr(kTagWidth, kLengthWidth));
}

std::vector<TaggedRecord> RecordsOf(const RecordArea& area, const RecordDefinitions& definitions) {
  std::vector<TaggedRecord> records;
  constexpr size_t kMostRecords = 100000;
  std::string_view left = area.bytes;
  while (!left.empty()) {
    const uint64_t offset = area.offset + (area.bytes.size() - left.size());
    const int64_t length = RecordLengthAt(left);
    TaggedRecord record = {area.name, "", offset, "", "", nullptr, {}};
    if (records.size() == kMostRecords) {
      record.bytes = left;
      record.problem = "more records than are told apart";
      records.push_back(std::move(record));
      break;
    }
    if (length < 0 || static_cast<uint64_t>(length) > left.size() - kTagWidth - kLengthWidth) {
      record.bytes = left;
      const bool isCut =
          length >= 0 && offset - area.offset + kTagWidth + kLengthWidth + length <= area.length;
      record.problem = length < 0 ? "no tag and length"
                       : isCut    ? "not all of it was read"
                                  : "longer than its area";
      records.push_back(std::move(record));
      break;
    }
    record.tag = left.substr(0, kTagWidth);
    record.bytes = left.substr(kTagWidth + kLengthWidth, static_cast<size_t>(length));
    left.remove_prefix(kTagWidth + kLengthWidth + static_cast<size_t>(length));
    Explain(record, definitions);
    records.push_back(std::move(record));
  }
  if (left.empty() && area.bytes.size() < area.length)
    records.push_back(
        {area.name, "", area.offset + area.bytes.size(), "", "not all of it was read", nullptr, {}});
  return records;
}

std::vector<TaggedRecord> RecordsOf(const SurveyedPart& part, const RecordDefinitions& definitions) {
  std::vector<TaggedRecord> all;
  for (const RecordArea& area : part.areas) {
    std::vector<TaggedRecord> records = RecordsOf(area, definitions);
    all.insert(all.end(), std::make_move_iterator(records.begin()),
               std::make_move_iterator(records.end()));
  }
  return all;
}

bool IsAbsent(const DecodedField& field) {
  const ValueKind kind = field.field->kind;
  if (kind == ValueKind::Unsigned || kind == ValueKind::Float) return field.text.empty();
  return field.text.find_first_not_of(kind != ValueKind::Text ? " -" : " ") == std::string::npos;
}

namespace {

std::optional<double> FloatOf(std::string_view bytes) {
  if (bytes.size() == 4) return std::bit_cast<float>(static_cast<uint32_t>(BigNumber(bytes)));
  if (bytes.size() == 8) return std::bit_cast<double>(BigNumber(bytes));
  return std::nullopt;
}

}  // namespace

std::optional<double> ValueOf(const DecodedField& field) {
  const ValueKind kind = field.field->kind;
  if (kind == ValueKind::Unsigned && !field.text.empty())
    return static_cast<double>(BigNumber(field.text));
  if (kind == ValueKind::Float) {
    const std::optional<double> value = FloatOf(field.text);
    return value && std::isfinite(*value) ? value : std::nullopt;
  }
  if (kind != ValueKind::Number && kind != ValueKind::Real) return std::nullopt;
  const std::string text(TrimmedText(field.text));
  const size_t start = text.find_first_not_of(' ');
  if (start == std::string::npos || text.find_first_not_of("0123456789+-.Ee", start) != std::string::npos)
    return std::nullopt;
  char* end = nullptr;
  const double value = std::strtod(text.c_str() + start, &end);
  return *end == 0 && end != text.c_str() + start && std::isfinite(value) ? std::optional(value)
                                                                          : std::nullopt;
}

std::string ShownText(const DecodedField& field) {
  const ValueKind kind = field.field->kind;
  if (kind == ValueKind::Unsigned) return std::to_string(BigNumber(field.text));
  if (kind != ValueKind::Float) return Shown(field.text);
  char text[32];
  const std::optional<double> value = FloatOf(field.text);
  (void)std::snprintf(text, sizeof text, field.text.size() == 4 ? "%.9g" : "%.17g", value.value_or(0));
  return value ? text : HexOf(field.text);
}

const DecodedField* FindField(const std::vector<DecodedField>& fields, std::string_view name) {
  for (const DecodedField& field : fields) {
    if (field.field->name == name) return &field;
  }
  return nullptr;
}

}  // namespace core
