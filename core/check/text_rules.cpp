// Text segments.
#include "core/check/rule.h"
#include "core/format/words.h"

namespace core {
namespace {

constexpr uint64_t kLongest = 99999;

void AskFormat(Checking& checking, const SurveyedPart& part) {
  checking.FailUnlessAllowed(part, "TXTFMT");
}

void AskLength(Checking& checking, const SurveyedPart& part) {
  if (part.dataLength < 1 || part.dataLength > kLongest)
    checking.FailAtByte(part, part.dataOffset,
                        "the text has " + std::to_string(part.dataLength) + " bytes");
}

// The bytes of the first character that is not of the text's set; 0 when all are.
bool IsOfSet(std::string_view text, std::string_view format) {
  const auto byte = static_cast<uint8_t>(text[0]);
  if (format == "U8S" && byte >= 0x80) return Utf8Bytes(text) != 0;
  if (byte == '\n' || byte == '\r' || byte == '\f' || (byte >= 0x20 && byte < 0x7F)) return true;
  return format == "UT1" && byte >= 0xA0;
}

void AskCharacters(Checking& checking, const SurveyedPart& part) {
  const std::string text = checking.survey.Data(part, kLongest);
  const std::string_view format = part.Text("TXTFMT");
  if (!IsOneOf(format, "STA|MTF|UT1|U8S")) return;
  for (size_t at = 0; at < text.size();) {
    const std::string_view left = std::string_view(text).substr(at);
    if (!IsOfSet(left, format))
      return checking.FailAtByte(
          part, part.dataOffset + at,
          "byte " + HexOf(left.substr(0, 1)) + " in a text of " + std::string(format));
    at += format == "U8S" ? std::max<size_t>(1, Utf8Bytes(left)) : 1;
  }
}

void AskLines(Checking& checking, const SurveyedPart& part) {
  const std::string text = checking.survey.Data(part, kLongest);
  if (part.Text("TXTFMT") != "STA") return;
  for (size_t at = 0; at < text.size(); ++at) {
    const bool lonely = (text[at] == '\n' && (at == 0 || text[at - 1] != '\r')) ||
                        (text[at] == '\r' && (at + 1 == text.size() || text[at + 1] != '\n'));
    if (lonely)
      return checking.FailAtByte(part, part.dataOffset + at,
                                 "a line ends in " + HexOf({&text[at], 1}) + " alone");
  }
}

constexpr const char kTableA6[] = "MIL-STD-2500C, table A-6";
constexpr Rule kRules[] = {
    {"text.format", Severity::Error, On::Text, "TXTFMT", kTableA6,
     "The form of a text is STA, MTF, UT1 or U8S.", AskFormat},
    {"text.length", Severity::Error, On::Text, "LT", "MIL-STD-2500C, table A-1",
     "A text has 1 to 99999 bytes.", AskLength},
    {"text.characters", Severity::Error, On::Text, "TXTFMT", "MIL-STD-2500C, 5.6",
     "A text holds characters of its set.", AskCharacters},
    {"text.lines", Severity::Warning, On::Text, "TXTFMT", "MIL-STD-2500C, 5.6",
     "Lines end in carriage return and line feed.", AskLines},
};

}  // namespace

const Rules kTextRules = kRules;

}  // namespace core
