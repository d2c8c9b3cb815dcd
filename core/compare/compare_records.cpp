#include "core/compare/compare_records.h"

#include "core/format/words.h"

namespace core {
namespace {

struct NamedRecord {
  std::string name;
  TaggedRecord record;
};
using Texts = std::vector<std::pair<std::string, std::string>>;

std::vector<NamedRecord> NamedRecords(const SurveyedPart& part, const RecordDefinitions& definitions) {
  std::vector<NamedRecord> records;
  std::map<std::string, int> seen;
  for (TaggedRecord& record : RecordsOf(part, definitions)) {
    const std::string tag(record.tag.empty() ? "(broken)" : TrimmedText(record.tag));
    const int number = ++seen[tag];
    records.push_back({number == 1 ? tag : tag + " " + std::to_string(number), std::move(record)});
  }
  return records;
}

// The values of fields, those that repeat with the number of each turn.
void TakeTexts(const std::vector<DecodedField>& fields, const std::string& turn, Texts& texts) {
  for (const DecodedField& field : fields) {
    const RecordField& known = *field.field;
    for (size_t i = 0; i < field.turns.size(); ++i)
      TakeTexts(field.turns[i], turn + "[" + std::to_string(i + 1) + "]", texts);
    if (!known.repeats && known.fields.empty()) texts.emplace_back(known.name + turn, ShownText(field));
  }
}

Texts TextsOf(const TaggedRecord& record) {
  Texts texts;
  TakeTexts(record.fields, "", texts);
  return texts;
}

// The fields of a record in both files; false where no field shows how its bytes differ.
bool CompareDecoded(const TextDifference& of, const TaggedRecord& a, const TaggedRecord& b,
                    std::vector<TextDifference>& differences) {
  if (!a.problem.empty() || !b.problem.empty()) return false;
  const Texts one = TextsOf(a), two = TextsOf(b);
  const std::map<std::string, std::string> first(one.begin(), one.end()), second(two.begin(), two.end());
  const size_t before = differences.size();
  const auto note = [&](const std::string& field, std::optional<std::string> x,
                        std::optional<std::string> y) {
    differences.push_back({of.part, of.name, field, std::move(x), std::move(y)});
  };
  for (const auto& [name, text] : one) {
    const auto other = second.find(name);
    if (other == second.end()) {
      note(name, text, std::nullopt);
    } else if (other->second != text) {
      note(name, text, other->second);
    }
  }
  for (const auto& [name, text] : two) {
    if (first.count(name) == 0) note(name, std::nullopt, text);
  }
  return differences.size() != before;
}

}  // namespace

void CompareRecords(const std::string& title, const SurveyedPart& a, const SurveyedPart& b,
                    const RecordDefinitions& definitions, std::vector<TextDifference>& differences) {
  const std::vector<NamedRecord> first = NamedRecords(a, definitions),
                                 second = NamedRecords(b, definitions);
  std::map<std::string, const TaggedRecord*> ofFirst, ofSecond;
  for (const NamedRecord& named : first) ofFirst[named.name] = &named.record;
  for (const NamedRecord& named : second) ofSecond[named.name] = &named.record;
  for (const auto& [name, record] : first) {
    const auto found = ofSecond.find(name);
    TextDifference difference{title, name, "", record.bytes, std::nullopt};
    if (found == ofSecond.end()) {
      differences.push_back(std::move(difference));
    } else if (found->second->bytes != record.bytes &&
               !CompareDecoded(difference, record, *found->second, differences)) {
      difference.b = found->second->bytes;
      differences.push_back(std::move(difference));
    }
  }
  for (const auto& [name, record] : second) {
    if (ofFirst.count(name) == 0) differences.push_back({title, name, "", std::nullopt, record.bytes});
  }
}

}  // namespace core
