#include <cmath>
#include <cstdlib>

#include "core/format/records.h"

namespace core {
namespace {

constexpr size_t kTagWidth = 6, kLengthWidth = 5;

// Takes the fields of one record. Repeats and conditions look at the fields in front of them.
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
  bool IsThere(const RecordField& field) const {
    if (field.whenField.empty()) return true;
    const auto found = seen_.find(field.whenField);
    if (found == seen_.end()) return false;
    for (const std::string& text : field.whenIn) {
      if (found->second == text) return true;
    }
    return false;
  }
  bool TakeOne(const RecordField& field, std::vector<DecodedField>& decoded) {
    if (bytes_.size() < field.width) return false;
    decoded.push_back({&field, std::string(bytes_.substr(0, field.width)), {}});
    bytes_.remove_prefix(field.width);
    seen_[field.name] = decoded.back().text;
    return true;
  }
  // Every turn takes bytes, so there are no more of them than the record has.
  bool TakeTurns(const RecordField& field, std::vector<DecodedField>& decoded) {
    int64_t count = field.count;
    if (!field.countField.empty()) {
      const auto found = seen_.find(field.countField);
      count = found != seen_.end() ? DigitsOf(found->second) : -1;
    }
    if (count < 0) return false;
    DecodedField whole = {&field, "", {}};
    for (int64_t turn = 0; turn < count; ++turn) {
      const size_t before = bytes_.size();
      std::vector<DecodedField> fields;
      if (!(field.fields.empty() ? TakeOne(field, fields) : Take(field.fields, fields))) return false;
      if (bytes_.size() == before) return false;
      whole.turns.push_back(std::move(fields));
    }
    decoded.push_back(std::move(whole));
    return true;
  }

  std::string_view bytes_;
  std::map<std::string, std::string, std::less<>> seen_;
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

std::vector<TaggedRecord> RecordsOf(const RecordArea& area, const RecordDefinitions& definitions) {
  std::vector<TaggedRecord> records;
  constexpr size_t kMostRecords = 100000;
  std::string_view left = area.bytes;
  while (!left.empty()) {
    const uint64_t offset = area.offset + (area.bytes.size() - left.size());
    const int64_t length =
        left.size() >= kTagWidth + kLengthWidth ? DigitsOf(left.substr(kTagWidth, kLengthWidth)) : -1;
    TaggedRecord record = {area.name, "", offset, "", "", nullptr, {}};
    if (records.size() == kMostRecords) {
      record.bytes = left;
      record.problem = "more records than are told apart";
      records.push_back(std::move(record));
      break;
    }
    if (length < 0 || static_cast<uint64_t>(length) > left.size() - kTagWidth - kLengthWidth) {
      record.bytes = left;
      record.problem = length < 0 ? "no tag and length" : "longer than its area";
      records.push_back(std::move(record));
      break;
    }
    record.tag = left.substr(0, kTagWidth);
    record.bytes = left.substr(kTagWidth + kLengthWidth, static_cast<size_t>(length));
    left.remove_prefix(kTagWidth + kLengthWidth + static_cast<size_t>(length));
    Explain(record, definitions);
    records.push_back(std::move(record));
  }
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
  const bool isNumber = field.field->kind != ValueKind::Text;
  return field.text.find_first_not_of(isNumber ? " -" : " ") == std::string::npos;
}

std::optional<double> ValueOf(const DecodedField& field) {
  if (field.field->kind != ValueKind::Number && field.field->kind != ValueKind::Real) return std::nullopt;
  const std::string text(TrimmedText(field.text));
  const size_t start = text.find_first_not_of(' ');
  if (start == std::string::npos || text.find_first_not_of("0123456789+-.Ee", start) != std::string::npos)
    return std::nullopt;
  char* end = nullptr;
  const double value = std::strtod(text.c_str() + start, &end);
  return *end == 0 && end != text.c_str() + start && std::isfinite(value) ? std::optional(value)
                                                                          : std::nullopt;
}

const DecodedField* FindField(const std::vector<DecodedField>& fields, std::string_view name) {
  for (const DecodedField& field : fields) {
    if (field.field->name == name) return &field;
  }
  return nullptr;
}

}  // namespace core
