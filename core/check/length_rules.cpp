// Lengths against the file, and what holds of one that was streamed.
#include <algorithm>

#include "core/check/rule.h"

namespace core {
namespace {

void AskFileLength(Checking& checking, const SurveyedPart& part) {
  const std::string size = std::to_string(checking.survey.file.Size());
  const int64_t length = part.Number("FL");
  if (!part.Has("FL") || IsPlaceholder(part.Text("FL"))) return;
  if (length < 0) return checking.FailAt(part, "FL");
  if (static_cast<uint64_t>(length) != checking.survey.file.Size())
    checking.Fail(part, "FL", "FL is " + std::to_string(length) + ", the file has " + size + " bytes");
}

void AskHeaderLength(Checking& checking, const SurveyedPart& part) {
  if (!part.Has("HL") || IsPlaceholder(part.Text("HL"))) return;
  if (!part.complete)
    return checking.Fail(part, "HL", "the fields of the header do not end inside the file");
  if (part.headerLength != part.fieldsEnd)
    checking.Fail(part, "HL",
                  "HL is " + std::to_string(part.headerLength) + ", the fields take " +
                      std::to_string(part.fieldsEnd) + " bytes");
}

// Only where FL itself is right: a file of another size is told by that.
void AskSum(Checking& checking, const SurveyedPart& part) {
  const uint64_t size = checking.survey.file.Size(), end = checking.survey.segmentsEnd;
  if (!part.complete || end >= size || part.Number("FL") != static_cast<int64_t>(size)) return;
  checking.FailAtByte(
      part, end,
      "the segments end at byte " + std::to_string(end) + ", the file at " + std::to_string(size));
}

void AskPlaceholders(Checking& checking, const SurveyedPart& part) {
  if (!checking.survey.waits) return;
  std::string waits;
  part.ForEachField([&](const SurveyedField& field) {
    const bool isLength = field.name == "FL" || field.name == "HL" || field.name[0] == 'L';
    if (waits.empty() && isLength && IsPlaceholder(field.text)) waits = field.name;
  });
  if (!waits.empty()) checking.Fail(part, waits, waits + " is all nines, and no replacement was found");
}

bool HasStreamHeader(const Survey& survey) {
  for (const SurveyedPart& part : survey.parts) {
    if (part.Trimmed("DESID") == "STREAMING_FILE_HEADER") return true;
  }
  return false;
}

void AskStreamed(Checking& checking, const SurveyedPart& part) {
  if (checking.survey.streamed && HasStreamHeader(checking.survey))
    checking.Fail(part, "FHDR", "the header is read from the replacement data at the end of the file");
}

void AskSubheader(Checking& checking, const SurveyedPart& part) {
  if (part.kind == PartKind::File) return;
  const uint64_t end = part.offset + part.headerLength;
  if (!part.complete) {
    std::string last = "nothing";
    part.ForEachField([&](const SurveyedField& field) { last = field.name; });
    return checking.FailAtLength(part, false, "the subheader ends behind " + last);
  }
  if (part.fieldsEnd != end)
    checking.FailAtLength(part, false,
                          Count(end - part.fieldsEnd, "byte") + " of the subheader " +
                              (end - part.fieldsEnd == 1 ? "is" : "are") + " no field");
}

void AskData(Checking& checking, const SurveyedPart& part) {
  const uint64_t size = checking.survey.file.Size(), end = part.dataOffset + part.dataLength;
  if (part.kind == PartKind::File || end <= size) return;
  checking.FailAtLength(
      part, true,
      part.Title() + " ends at byte " + std::to_string(end) + ", the file at " + std::to_string(size));
}

void AskStreamHeader(Checking& checking, const SurveyedPart& part) {
  if (!checking.survey.streamed || HasStreamHeader(checking.survey)) return;
  checking.Fail(part, "FL",
                "the true header stands at the end of the file in no STREAMING_FILE_HEADER extension");
}

constexpr const char kTableA1[] = "MIL-STD-2500C, table A-1";
constexpr Rule kRules[] = {
    {"file.length", Severity::Error, On::File, "FL", kTableA1, "FL is the size of the file.",
     AskFileLength},
    {"file.header", Severity::Error, On::File, "HL", kTableA1,
     "HL is what the fields of the header take.", AskHeaderLength},
    {"file.sum", Severity::Error, On::File, "FL", kTableA1,
     "Header, subheaders and data together are the file.", AskSum},
    {"file.placeholder", Severity::Error, On::File, "FL", "MIL-STD-2500C, 5.1.6 and table A-8(B)",
     "Lengths of nines are replaced by a streaming file header.", AskPlaceholders},
    {"file.streamed", Severity::Note, On::File, "FHDR", "MIL-STD-2500C, table A-8(B)",
     "A streamed file has its true header at its end.", AskStreamed},
    {"file.streamed.extension", Severity::Error, On::File, "FL",
     "MIL-STD-2500C, 5.8.3.3 and table A-8(B)",
     "The header of a streamed file is replaced by a data extension, STREAMING_FILE_HEADER.",
     AskStreamHeader},
    {"segment.subheader", Severity::Error, On::Header, "LISH", kTableA1,
     "A subheader's length is what its fields take.", AskSubheader},
    {"segment.data", Severity::Error, On::Header, "LI", kTableA1, "A segment ends inside the file.",
     AskData},
};

}  // namespace

const Rules kLengthRules = kRules;

}  // namespace core
