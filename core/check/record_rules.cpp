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
    checking.FailAtByte(part, record.offset,
                        std::to_string(record.bytes.size()) + " bytes of " + record.area +
                            " are no record: " + record.problem);
  }
}

void AskFit(Checking& checking, const SurveyedPart& part) {
  for (const TaggedRecord& record : checking.Records(part)) {
    if (record.definition == nullptr || record.problem.empty()) continue;
    const std::string wanted =
        record.definition->length ? ", not " + std::to_string(*record.definition->length) : "";
    checking.FailAtByte(part, record.offset,
                        std::string(TrimmedText(record.tag)) + " has " +
                            std::to_string(record.bytes.size()) + " bytes" + wanted +
                            ": its fields do not fit");
  }
}

constexpr Rule kRules[] = {
    {"records.length", Severity::Error, On::Header, "UDHDL", "MIL-STD-2500C, tables A-1 to A-6",
     "The length of extended data is 0, or at least 3 for its overflow field.", AskLength},
    {"records.end", Severity::Error, On::Header, "UDHD", "MIL-STD-2500C, 5.8 and table A-7",
     "Tagged records, of six letters and five digits, end where their area ends.", AskEnd},
    {"records.fit", Severity::Warning, On::Header, "UDHD", "The document that registers the record",
     "A record has the length that its fields take.", AskFit},
};

}  // namespace

const Rules kRecordRules = kRules;

}  // namespace core
