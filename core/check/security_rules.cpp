// The fields of classification, which all headers have.
#include <algorithm>

#include "core/check/rule.h"
#include "core/format/allowed.h"
#include "core/format/countries.h"
#include "core/format/numbers.h"

namespace core {
namespace {

constexpr std::string_view kOrder = "URCST";  // of classifications, from the lowest

std::string ClassName(const SurveyedPart& part) {
  if (part.kind == PartKind::DataExtension) return "DECLAS";
  return part.kind == PartKind::Reserved ? "RECLAS" : std::string(part.SecurityPrefix()) + "CLAS";
}

std::string NameIn(const SurveyedPart& part, const char* field) {
  return std::string(part.SecurityPrefix()) + field;
}

bool IsBlank(const SurveyedPart& part, const char* field) {
  return part.Trimmed(NameIn(part, field)).empty();
}

void AskClass(Checking& checking, const SurveyedPart& part) {
  const std::string name = ClassName(part);
  if (part.Has(name) && !IsAllowed("CLAS", part.Text(name))) checking.FailAt(part, name);
}

void AskOrder(Checking& checking, const SurveyedPart& part) {
  if (part.kind == PartKind::File) return;
  const SurveyedPart& header = checking.survey.Header();
  const std::string_view own = part.Text(ClassName(part)), whole = header.Text("FSCLAS");
  if (own.size() != 1 || whole.size() != 1) return;
  const size_t rank = kOrder.find(own[0]), fileRank = kOrder.find(whole[0]);
  if (rank == std::string_view::npos || fileRank == std::string_view::npos || rank <= fileRank) return;
  checking.Fail(part, ClassName(part),
                part.Title() + " is " + Quoted(own) + ", the file " + Quoted(whole));
}

void AskSystem(Checking& checking, const SurveyedPart& part) {
  constexpr const char* kFields[] = {"CODE", "CTLH", "REL",  "DCTP", "DCDT", "DCXM", "DG",
                                     "DGDT", "CLTX", "CATP", "CAUT", "CRSN", "SRDT", "CTLN"};
  if (!part.Has(NameIn(part, "CLSY")) || !IsBlank(part, "CLSY")) return;
  const auto* filled = std::find_if(std::begin(kFields), std::end(kFields),
                                    [&](const char* field) { return !IsBlank(part, field); });
  if (filled != std::end(kFields))
    checking.Fail(part, NameIn(part, "CLSY"),
                  NameIn(part, "CLSY") + " is blank, but " + NameIn(part, *filled) + " is " +
                      Quoted(part.Trimmed(NameIn(part, *filled))));
}

void AskList(Checking& checking, const SurveyedPart& part, const char* field) {
  const std::string name = NameIn(part, field);
  if (part.Has(name) && !IsAllowed(field, part.Text(name))) checking.FailAt(part, name);
}

void AskType(Checking& checking, const SurveyedPart& part) { AskList(checking, part, "DCTP"); }
void AskAuthority(Checking& checking, const SurveyedPart& part) { AskList(checking, part, "CATP"); }
void AskReason(Checking& checking, const SurveyedPart& part) { AskList(checking, part, "CRSN"); }

// A field that is there exactly where the declassification type asks for it.
void AskBelonging(Checking& checking, const SurveyedPart& part, const char* field,
                  std::string_view types) {
  const std::string name = NameIn(part, field);
  const std::string_view type = part.Trimmed(NameIn(part, "DCTP"));
  if (!part.Has(name)) return;
  const bool wanted = !type.empty() && IsOneOf(type, types);
  if (wanted == !part.Trimmed(name).empty()) return;
  checking.Fail(part, name,
                name + " is " + Quoted(part.Trimmed(name)) + " where " + NameIn(part, "DCTP") + " is " +
                    Quoted(type));
}

void AskDate(Checking& checking, const SurveyedPart& part) { AskBelonging(checking, part, "DCDT", "DD"); }
void AskExemption(Checking& checking, const SurveyedPart& part) {
  AskBelonging(checking, part, "DCXM", "X");
}
void AskDowngrade(Checking& checking, const SurveyedPart& part) {
  AskBelonging(checking, part, "DG", "GD|GE");
  AskList(checking, part, "DG");
}
void AskDowngradeDate(Checking& checking, const SurveyedPart& part) {
  AskBelonging(checking, part, "DGDT", "GD");
}

// X1 to X8, X251 to X259, 25X1 to 25X9, 50X1 and its like, DN10, DNI.
bool IsExemption(std::string_view text) {
  const auto isOf = [&](std::string_view pattern) {
    return text.size() == pattern.size() &&
           std::equal(text.begin(), text.end(), pattern.begin(),
                      [](char c, char p) { return p == '#' ? c >= '1' && c <= '9' : c == p; });
  };
  return text.empty() || isOf("X#") || isOf("X25#") || isOf("25X#") || isOf("50X#") || isOf("75X#") ||
         text == "75X" || text == "DN10" || text == "DNI";
}

void AskExemptionCode(Checking& checking, const SurveyedPart& part) {
  const std::string name = NameIn(part, "DCXM");
  if (part.Has(name) && !IsExemption(part.Trimmed(name))) checking.FailAt(part, name);
}

void AskCountry(Checking& checking, const SurveyedPart& part) {
  const std::string name = NameIn(part, "CLSY");
  if (part.Has(name) && !part.Trimmed(name).empty() && !IsCountry(part.Text(name)))
    checking.FailAt(part, name);
}

void AskDays(Checking& checking, const SurveyedPart& part) {
  for (const char* field : {"DCDT", "DGDT", "SRDT"}) {
    const std::string name = NameIn(part, field);
    if (part.Has(name) && !part.Trimmed(name).empty() && !IsDay(part.Text(name)))
      checking.FailAt(part, name);
  }
}

constexpr const char kTables[] = "MIL-STD-2500C, tables A-1 to A-8, security fields";
constexpr Rule kRules[] = {
    {"security.class", Severity::Error, On::Header, "FSCLAS", kTables,
     "The classification is T, S, C, R or U.", AskClass},
    {"security.order", Severity::Error, On::Header, "FSCLAS", "MIL-STD-2500C, 5.1.8",
     "A file is classified at least as high as each of its segments.", AskOrder},
    {"security.system", Severity::Error, On::Header, "FSCLSY", kTables,
     "Where other security fields are set, the classification system is named.", AskSystem},
    {"security.country", Severity::Error, On::Header, "FSCLSY", kTables,
     "The classification system is named by a country's code (ISO 3166 or FIPS 10-4) or an alliance's.",
     AskCountry},
    {"security.exemption.code", Severity::Error, On::Header, "FSDCXM", kTables,
     "A declassification exemption is one of those that there are.", AskExemptionCode},
    {"security.type", Severity::Error, On::Header, "FSDCTP", kTables,
     "The declassification type is DD, DE, GD, GE, O, X or blank.", AskType},
    {"security.declassification", Severity::Error, On::Header, "FSDCDT", kTables,
     "A declassification date stands with type DD only.", AskDate},
    {"security.exemption", Severity::Error, On::Header, "FSDCXM", kTables,
     "A declassification exemption stands with type X only.", AskExemption},
    {"security.downgrade", Severity::Error, On::Header, "FSDG", kTables,
     "A downgrade, to S, C or R, stands with types GD and GE only.", AskDowngrade},
    {"security.downgrade.date", Severity::Error, On::Header, "FSDGDT", kTables,
     "A downgrade date stands with type GD only.", AskDowngradeDate},
    {"security.dates", Severity::Error, On::Header, "FSSRDT", kTables,
     "Dates of classification are days, CCYYMMDD.", AskDays},
    {"security.authority", Severity::Error, On::Header, "FSCATP", kTables,
     "The type of authority is O, D, M or blank.", AskAuthority},
    {"security.reason", Severity::Error, On::Header, "FSCRSN", kTables, "The reason is A to G or blank.",
     AskReason},
};

}  // namespace

const Rules kSecurityRules = kRules;

}  // namespace core
