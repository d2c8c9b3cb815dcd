// The file header's own fields, and the marks and dates of every header.
#include <ctime>

#include "core/check/rule.h"
#include "core/format/allowed.h"
#include "core/format/numbers.h"

namespace core {
namespace {

void AskMark(Checking& checking, const SurveyedPart& part) {
  const std::string mark = std::string(part.Text("FHDR")) + std::string(part.Text("FVER"));
  if (mark != "NITF02.10" && mark != "NSIF01.00")
    checking.Fail(part, "FHDR",
                  IsOneOf(mark.substr(0, 4), "NITF|NSIF")
                      ? "this is " + mark.substr(0, 4) + " " + mark.substr(4)
                      : "the file begins with " + Quoted(mark));
}

void AskType(Checking& checking, const SurveyedPart& part) { checking.FailUnlessAllowed(part, "STYPE"); }

void AskStation(Checking& checking, const SurveyedPart& part) {
  if (part.Has("OSTAID") && part.Trimmed("OSTAID").empty())
    checking.Fail(part, "OSTAID", "OSTAID is blank");
}

const char* DateField(PartKind kind) {
  if (kind == PartKind::File) return "FDT";
  if (kind == PartKind::Image) return "IDATIM";
  return kind == PartKind::Text ? "TXTDT" : nullptr;
}

void AskDate(Checking& checking, const SurveyedPart& part) {
  const char* field = DateField(part.kind);
  if (field != nullptr && part.Has(field) && !IsTime(part.Text(field))) checking.FailAt(part, field);
}

// A day in the future, or one that clocks and programs begin with.
void AskPlausibleDate(Checking& checking, const SurveyedPart& part) {
  const std::string text(part.Text("FDT"));
  if (!IsTime(text) || text.find('-') != std::string::npos) return;
  char tomorrow[16];
  const std::time_t now = std::time(nullptr) + 24 * 60 * 60;
  std::tm utc = {};
  gmtime_r(&now, &utc);
  std::strftime(tomorrow, sizeof tomorrow, "%Y%m%d%H%M%S", &utc);
  if (text > tomorrow) return checking.Fail(part, "FDT", "FDT " + text + " lies in the future");
  const std::string day = text.substr(0, 8);
  if (IsOneOf(day, "19000101|19700101|19800101"))
    checking.Fail(part, "FDT", "FDT " + text + " is the zero of a clock that was never set");
}

void AskCopies(Checking& checking, const SurveyedPart& part) {
  const int64_t copy = part.Number("FSCOP"), copies = part.Number("FSCPYS");
  if (!part.Has("FSCPYS")) return;
  if (copy < 0 || copies < 0) return checking.FailAt(part, copy < 0 ? "FSCOP" : "FSCPYS");
  if (copy > copies)
    checking.Fail(part, "FSCOP", "copy " + std::to_string(copy) + " of " + std::to_string(copies));
}

void AskEncryption(Checking& checking, const SurveyedPart& part) {
  checking.FailUnlessAllowed(part, "ENCRYP");
}

void AskReserved(Checking& checking, const SurveyedPart& part) {
  if (part.Has("NUMX") && part.Text("NUMX") != "000") checking.FailAt(part, "NUMX");
}

void AskReservedExtensions(Checking& checking, const SurveyedPart& part) {
  if (part.Has("NUMRES") && part.Text("NUMRES") != "000") checking.FailAt(part, "NUMRES");
}

void AskCharacters(Checking& checking, const SurveyedPart& part) {
  part.ForEachField([&](const SurveyedField& field) {
    if (HoldsBytes(field.name)) return;
    for (const char c : field.text) {
      const auto byte = static_cast<uint8_t>(c);
      const bool isBasic = byte >= 0x20 && byte < 0x7F;
      if (isBasic || (field.form == FieldForm::Extended && byte >= 0xA0)) continue;
      const bool isControl = byte < 0x20 || (byte >= 0x7F && byte < 0xA0);
      checking.Fail(part, field.name,
                    field.name + " holds the " + (isControl ? "control character " : "byte ") +
                        HexOf({&c, 1}) + (isControl ? "" : ", which is none of the basic character set"));
      break;
    }
  });
}

void AskBegin(Checking& checking, const SurveyedPart& part) {
  constexpr const char* kMarks[] = {nullptr, "IM", "SY", "TE", "DE", "RE"};
  const char* mark = kMarks[static_cast<size_t>(part.kind)];
  if (mark != nullptr && part.Has(mark) && part.Text(mark) != mark)
    checking.Fail(part, mark, part.Title() + " begins with " + Quoted(part.Text(mark)) + ", not " + mark);
}

constexpr const char kTableA1[] = "MIL-STD-2500C, table A-1";
constexpr Rule kRules[] = {
    {"file.mark", Severity::Error, On::File, "FHDR", kTableA1,
     "A file begins with NITF02.10 or NSIF01.00.", AskMark},
    {"file.type", Severity::Error, On::File, "STYPE", kTableA1, "The standard type is BF01.", AskType},
    {"file.station", Severity::Error, On::File, "OSTAID", kTableA1,
     "A file names the station that made it.", AskStation},
    {"date.form", Severity::Error, On::Header, "FDT", "MIL-STD-2500C, tables A-1, A-3 and A-6",
     "Dates are CCYYMMDDhhmmss of a day that there was; dashes stand for what is not known.", AskDate},
    {"file.date", Severity::Warning, On::File, "FDT", kTableA1, "The date of a file is when it was made.",
     AskPlausibleDate},
    {"file.copies", Severity::Error, On::File, "FSCOP", kTableA1,
     "The copy number is at most the number of copies.", AskCopies},
    {"header.encryption", Severity::Error, On::Header, "ENCRYP", "MIL-STD-2500C, tables A-1 to A-6",
     "Nothing is encrypted: ENCRYP is 0.", AskEncryption},
    {"file.numx", Severity::Error, On::File, "NUMX", kTableA1, "NUMX is reserved, 000.", AskReserved},
    {"file.reserved", Severity::Error, On::File, "NUMRES", kTableA1,
     "No reserved extension is approved: NUMRES is 000.", AskReservedExtensions},
    {"header.characters", Severity::Error, On::Header, "FTITLE", "MIL-STD-2500C, 5.1.7",
     "Fields hold characters of their set: basic (BCS-A), or extended (ECS-A) where the tables say so.",
     AskCharacters},
    {"segment.mark", Severity::Error, On::Header, "IM", "MIL-STD-2500C, tables A-3 to A-8",
     "A subheader begins with the mark of its kind.", AskBegin},
};

}  // namespace

const Rules kFileRules = kRules;

}  // namespace core
