// Extended data: lengths, and records that fill them.
#include "core/check/rule.h"

namespace core {
namespace {

void AskLength(Checking& checking, const SurveyedPart& part) {
  for (const char* name : {"UDHDL", "XHDL", "UDIDL", "IXSHDL", "SXSHDL", "TXSHDL"}) {
    if (!part.Has(name)) continue;
    const int64_t length = part.Number(name);
    if (length < 0 || length == 1 || length == 2) checking.FailAt(part, name);
  }
}

void AskEnd(Checking& checking, const SurveyedPart& part) {
  for (const TaggedRecord& record : checking.Records(part)) {
    if (!record.tag.empty()) continue;
    checking.FailAt(part, record.area, record.offset,
                    Count(record.bytes.size(), "byte") + " of " + record.area +
                        (record.bytes.size() == 1 ? " is" : " are") + " no record: " + record.problem);
  }
}

void AskFit(Checking& checking, const SurveyedPart& part) {
  for (const TaggedRecord& record : checking.Records(part)) {
    if (record.definition == nullptr || record.problem.empty()) continue;
    const std::string wanted =
        record.definition->length ? ", not " + std::to_string(*record.definition->length) : "";
    checking.FailAt(part, record.area, record.offset,
                    std::string(TrimmedText(record.tag)) + " has " + Count(record.bytes.size(), "byte") +
                        wanted + ": its fields do not fit");
  }
}

// The first field of a number that holds something else, and where it begins behind the record's head.
const DecodedField* FindNoNumber(const std::vector<DecodedField>& fields, uint64_t& at) {
  for (const DecodedField& field : fields) {
    const ValueKind kind = field.field->kind;
    const bool isNumber = field.turns.empty() && field.field->fields.empty() &&
                          (kind == ValueKind::Number || kind == ValueKind::Real);
    if (isNumber && !IsAbsent(field) && !ValueOf(field)) return &field;
    at += field.text.size();
    for (const auto& turn : field.turns) {
      if (const DecodedField* found = FindNoNumber(turn, at)) return found;
    }
  }
  return nullptr;
}

void AskValues(Checking& checking, const SurveyedPart& part) {
  constexpr uint64_t kHead = 11;
  for (const TaggedRecord& record : checking.Records(part)) {
    uint64_t at = record.offset + kHead;
    if (const DecodedField* field = FindNoNumber(record.fields, at))
      checking.FailAt(part, record.area, at,
                      field->field->name + " of " + std::string(TrimmedText(record.tag)) + " is " +
                          Quoted(field->text) + ", no number");
  }
}

constexpr Rule kRules[] = {
    {"records.length", Severity::Error, On::Header, "UDHDL", "MIL-STD-2500C, tables A-1 to A-6",
     "The length of extended data is 0, or at least 3 for its overflow field.", AskLength},
    {"records.end", Severity::Error, On::Header, "UDHD", "MIL-STD-2500C, 5.8 and table A-7",
     "Tagged records, of six letters and five digits, end where their area ends.", AskEnd},
    {"records.fit", Severity::Warning, On::Header, "UDHD", "The document that registers the record",
     "A record has the length that its fields take.", AskFit},
    {"records.values", Severity::Warning, On::Header, "UDHD", "The document that registers the record",
     "Fields of numbers hold numbers.", AskValues},
};

}  // namespace

const Rules kRecordRules = kRules;

}  // namespace core
