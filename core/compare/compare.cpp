#include "core/compare/compare.h"

#include <algorithm>
#include <cstdlib>

namespace core {
namespace {

using Texts = std::vector<std::pair<std::string, std::string>>;

// Notes the names whose texts differ: in the order of the first list, then those that only the second
// has.
void CompareTexts(const std::string& part, const Texts& a, const Texts& b,
                  std::vector<TextDifference>& differences) {
  const std::map<std::string, std::string> first(a.begin(), a.end()), second(b.begin(), b.end());
  for (const auto& [name, text] : a) {
    const auto found = second.find(name);
    if (found == second.end()) {
      differences.push_back({part, name, text, std::nullopt});
    } else if (found->second != text) {
      differences.push_back({part, name, text, found->second});
    }
  }
  for (const auto& [name, text] : b) {
    if (first.count(name) == 0) differences.push_back({part, name, std::nullopt, text});
  }
}

// Areas of records are compared record by record.
void CompareFields(const SurveyedPart& a, const SurveyedPart& b,
                   std::vector<TextDifference>& differences) {
  const auto note = [&](const std::string& name, const auto& first, const auto& second) {
    const auto text = [](const std::optional<SurveyedField>& field) {
      return field ? std::optional(std::string(field->text)) : std::nullopt;
    };
    differences.push_back({a.Title(), name, text(first), text(second)});
  };
  a.ForEachField([&](const SurveyedField& field) {
    if (HoldsRecords(field.name)) return;
    const std::optional<SurveyedField> other = b.Find(field.name);
    if (!other || other->text != field.text) note(field.name, std::optional(field), other);
  });
  b.ForEachField([&](const SurveyedField& field) {
    if (!HoldsRecords(field.name) && !a.Has(field.name))
      note(field.name, std::optional<SurveyedField>(), std::optional(field));
  });
}

Texts RecordTexts(const SurveyedPart* part, const RecordDefinitions& definitions) {
  Texts texts;
  std::map<std::string, int> seen;
  if (part == nullptr) return texts;
  for (const TaggedRecord& record : RecordsOf(*part, definitions)) {
    const std::string tag(record.tag.empty() ? "(broken)" : TrimmedText(record.tag));
    const int number = ++seen[tag];
    texts.emplace_back(number == 1 ? tag : tag + " " + std::to_string(number), record.bytes);
  }
  return texts;
}

// The first byte of the data that differs, as far as both have some.
std::optional<uint64_t> FirstDifference(const Survey& a, const SurveyedPart& first, const Survey& b,
                                        const SurveyedPart& second) {
  constexpr uint64_t kPiece = 1 << 20;
  const uint64_t common = std::min(first.dataLength, second.dataLength);
  for (uint64_t at = 0; at < common; at += kPiece) {
    const uint64_t count = std::min(kPiece, common - at);
    const std::string one = a.file.At(first.dataOffset + at, count),
                      two = b.file.At(second.dataOffset + at, count);
    if (one.empty() && two.empty()) break;
    const auto [left, right] = std::mismatch(one.begin(), one.end(), two.begin(), two.end());
    if (left != one.end() || right != two.end()) return at + static_cast<uint64_t>(left - one.begin());
  }
  return first.dataLength == second.dataLength ? std::nullopt : std::optional(common);
}

void ComparePart(const Survey& a, const SurveyedPart* first, const Survey& b, const SurveyedPart* second,
                 const RecordDefinitions& definitions, Comparison& comparison) {
  const std::string title = first != nullptr ? first->Title() : second->Title();
  if (first == nullptr || second == nullptr) {
    comparison.segments.push_back(
        {title, first != nullptr ? std::optional(first->dataLength) : std::nullopt,
         second != nullptr ? std::optional(second->dataLength) : std::nullopt, std::nullopt});
    return;
  }
  CompareFields(*first, *second, comparison.fields);
  CompareTexts(title, RecordTexts(first, definitions), RecordTexts(second, definitions),
               comparison.records);
  if (first->kind == PartKind::File) return;
  if (const auto offset = FirstDifference(a, *first, b, *second))
    comparison.segments.push_back({title, first->dataLength, second->dataLength, offset});
}

}  // namespace

Comparison Compare(const Survey& a, const Survey& b, const RecordDefinitions& definitions) {
  Comparison comparison;
  for (const SurveyedPart& part : a.parts)
    ComparePart(a, &part, b, b.Find(part.kind, part.index), definitions, comparison);
  for (const SurveyedPart& part : b.parts) {
    if (a.Find(part.kind, part.index) == nullptr)
      ComparePart(a, nullptr, b, &part, definitions, comparison);
  }
  return comparison;
}

}  // namespace core
