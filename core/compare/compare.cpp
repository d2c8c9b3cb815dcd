#include "core/compare/compare.h"

#include <algorithm>
#include <functional>

#include "core/compare/compare_records.h"
#include "core/compare/match.h"
#include "core/format/layout.h"

namespace core {
namespace {

// Of a table as many entries are named as people read; a last line tells how many more differ.
constexpr uint64_t kMostEntries = 100;

class Comparer {
 public:
  Comparer(const Survey& a, const Survey& b, const RecordDefinitions& definitions)
      : a_(a), b_(b), definitions_(definitions) {}
  Comparison Run();

 private:
  void ComparePair(const SegmentPair& pair);
  void CompareFields(const SurveyedPart& a, const SurveyedPart& b);
  void CompareEntries(const std::string& part, const std::string& table, size_t count,
                      const std::function<std::string(size_t, bool)>& entry);
  void CompareTables(const SurveyedField& a, const SurveyedField& b);
  void CompareMasks(const SurveyedMask& a, const SurveyedMask& b);
  void CompareBytes(const std::string& part, uint64_t at, uint64_t count, uint64_t otherAt,
                    uint64_t otherCount);
  void NoteAlone(const SegmentPair& pair);
  bool IsListed(const std::string& field) const;

  const Survey &a_, &b_;
  const RecordDefinitions& definitions_;
  std::string title_;                       // of the parts that are compared
  std::vector<const ListLayout*> shifted_;  // lists whose segments have other numbers
  Comparison found_;
};

std::string TitleOf(const SegmentPair& pair) {
  const std::string a = pair.a->Title(), b = pair.b->Title();
  return a == b ? a : a + " | " + b;
}

std::optional<std::string> TextOf(const std::optional<SurveyedField>& field) {
  return field ? std::optional(std::string(field->text)) : std::nullopt;
}

// Lengths of segments that have other numbers in the two files say nothing side by side.
bool Comparer::IsListed(const std::string& field) const {
  const std::string mnemonic = field.substr(0, field.find_first_of("0123456789"));
  return std::any_of(shifted_.begin(), shifted_.end(), [&](const ListLayout* list) {
    return mnemonic != field && (mnemonic == list->subheader.name || mnemonic == list->data.name);
  });
}

// The entries that differ of a table of so many.
void Comparer::CompareEntries(const std::string& part, const std::string& table, size_t count,
                              const std::function<std::string(size_t, bool)>& entry) {
  uint64_t differing = 0;
  for (size_t i = 0; i < count; ++i) {
    const std::string one = entry(i, false), two = entry(i, true);
    if (one == two || ++differing > kMostEntries) continue;
    found_.fields.push_back({part, table + " " + std::to_string(i), "", one, two});
  }
  if (differing > kMostEntries) {
    const std::string more = std::to_string(differing - kMostEntries) + " more";
    found_.fields.push_back({part, table, "", more, more});
  }
}

void Comparer::CompareTables(const SurveyedField& a, const SurveyedField& b) {
  const auto entry = [&](size_t i, bool isOther) {
    return std::to_string(static_cast<uint8_t>((isOther ? b : a).text[i]));
  };
  CompareEntries(title_, a.name, a.text.size(), entry);
}

// Areas of records are compared record by record.
void Comparer::CompareFields(const SurveyedPart& a, const SurveyedPart& b) {
  a.ForEachField([&](const SurveyedField& field) {
    if (HoldsRecords(field.name) || IsListed(field.name)) return;
    const std::optional<SurveyedField> other = b.Find(field.name);
    if (other && other->text == field.text) return;
    if (other && field.name.starts_with(kTableLayout.name) && other->text.size() == field.text.size())
      return CompareTables(field, *other);
    found_.fields.push_back({title_, field.name, "", std::string(field.text), TextOf(other)});
  });
  b.ForEachField([&](const SurveyedField& field) {
    if (!HoldsRecords(field.name) && !IsListed(field.name) && !a.Has(field.name))
      found_.fields.push_back({title_, field.name, "", std::nullopt, std::string(field.text)});
  });
}

void Comparer::CompareMasks(const SurveyedMask& a, const SurveyedMask& b) {
  if (!a.complete || !b.complete) return;
  const auto record = [](uint32_t offset) {
    return offset == kNoRecord ? std::string("none") : std::to_string(offset);
  };
  const auto table = [&](const char* name, const auto& one, const auto& two) {
    if (one.size() == two.size())
      CompareEntries(title_, name, one.size(),
                     [&](size_t i, bool isOther) { return record((isOther ? two : one)[i]); });
  };
  for (const auto& [name, one, two] : {std::tuple{"IMDATOFF", a.dataOffset, b.dataOffset},
                                       {"BMRLNTH", a.blockLength, b.blockLength},
                                       {"TMRLNTH", a.padLength, b.padLength},
                                       {"TPXCDLNTH", a.padBits, b.padBits}}) {
    if (one != two) found_.fields.push_back({title_, name, "", std::to_string(one), std::to_string(two)});
  }
  if (a.padCode != b.padCode) found_.fields.push_back({title_, "TPXCD", "", a.padCode, b.padCode});
  table("BMR", a.blocks, b.blocks);
  table("TMR", a.pads, b.pads);
}

// Notes bytes that differ, and the first of them as far as both have some.
void Comparer::CompareBytes(const std::string& part, uint64_t at, uint64_t count, uint64_t otherAt,
                            uint64_t otherCount) {
  constexpr uint64_t kPiece = 1 << 20;
  const uint64_t common = std::min(count, otherCount);
  for (uint64_t done = 0; done < common; done += kPiece) {
    const uint64_t piece = std::min(kPiece, common - done);
    const std::string one = a_.file.At(at + done, piece), two = b_.file.At(otherAt + done, piece);
    if (one.empty() && two.empty()) break;
    const auto [left, right] = std::mismatch(one.begin(), one.end(), two.begin(), two.end());
    if (left == one.end() && right == two.end()) continue;
    const auto first = done + static_cast<uint64_t>(left - one.begin());
    found_.segments.push_back({part, count, otherCount, first});
    return;
  }
  if (count != otherCount) found_.segments.push_back({part, count, otherCount, common});
}

void Comparer::NoteAlone(const SegmentPair& pair) {
  const SurveyedPart& part = pair.a != nullptr ? *pair.a : *pair.b;
  const auto length = [](const SurveyedPart* of) {
    return of == nullptr ? std::nullopt : std::optional(of->dataLength);
  };
  found_.segments.push_back({part.Title(), length(pair.a), length(pair.b), std::nullopt});
}

void Comparer::ComparePair(const SegmentPair& pair) {
  if (pair.a == nullptr || pair.b == nullptr) return NoteAlone(pair);
  const SurveyedPart &a = *pair.a, &b = *pair.b;
  title_ = TitleOf(pair);
  const auto noted = [&] {
    return found_.fields.size() + found_.records.size() + found_.segments.size();
  };
  const size_t before = noted();
  CompareFields(a, b);
  CompareRecords(title_, a, b, definitions_, found_.records);
  if (noted() == before)
    CompareBytes(title_ + ", header", a.offset, a.headerLength, b.offset, b.headerLength);
  if (a.kind == PartKind::File) return;
  CompareMasks(a.mask, b.mask);
  const size_t segments = found_.segments.size();
  CompareBytes(title_, a.dataOffset, a.dataLength, b.dataOffset, b.dataLength);
  if (a.kind != PartKind::Image || found_.segments.size() == segments) return;
  found_.samples.push_back(CompareSamples(a_, a, b_, b));
  found_.samples.back().part = title_;
}

Comparison Comparer::Run() {
  struct Pairs {
    PartKind kind;
    const ListLayout& list;
  };
  const Pairs kinds[] = {{PartKind::Image, kListLayouts[0]},
                         {PartKind::Graphic, kListLayouts[1]},
                         {PartKind::Text, kListLayouts[2]},
                         {PartKind::DataExtension, kListLayouts[3]},
                         {PartKind::Reserved, kListLayouts[4]}};
  std::vector<SegmentPair> pairs;
  for (const auto& [kind, list] : kinds) {
    const std::vector<SegmentPair> matched = MatchSegments(a_, b_, kind);
    const auto isAlone = [](const SegmentPair& pair) { return pair.a == nullptr || pair.b == nullptr; };
    if (std::any_of(matched.begin(), matched.end(), isAlone)) shifted_.push_back(&list);
    pairs.insert(pairs.end(), matched.begin(), matched.end());
  }
  ComparePair({&a_.Header(), &b_.Header()});
  for (const SegmentPair& pair : pairs) ComparePair(pair);
  const auto behind = [](const Survey& survey) {
    const uint64_t end = std::min(survey.segmentsEnd, survey.file.Size());
    return std::pair(end, survey.file.Size() - end);
  };
  const auto [at, count] = behind(a_);
  const auto [otherAt, otherCount] = behind(b_);
  CompareBytes("bytes behind the last segment", at, count, otherAt, otherCount);
  return std::move(found_);
}

}  // namespace

Comparison Compare(const Survey& a, const Survey& b, const RecordDefinitions& definitions) {
  return Comparer(a, b, definitions).Run();
}

}  // namespace core
