// An image's sizes, corners, compression and what surrounds its pixels.
#include <cmath>

#include "core/check/rule.h"
#include "core/format/geography.h"
#include "core/place/apart.h"
#include "core/place/footprint.h"

namespace core {
namespace {

void AskSize(Checking& checking, const SurveyedPart& part) {
  for (const char* name : {"NROWS", "NCOLS"}) {
    if (part.Has(name) && part.Number(name) < 1) checking.FailAt(part, name);
  }
}

void AskCategory(Checking& checking, const SurveyedPart& part) {
  checking.FailUnlessAllowed(part, "ICAT");
}

void AskCornerForm(Checking& checking, const SurveyedPart& part) {
  checking.FailUnlessAllowed(part, "ICORDS");
}

char FormOf(const SurveyedPart& part) {
  return part.Text("ICORDS").empty() ? ' ' : part.Text("ICORDS")[0];
}

void AskCorners(Checking& checking, const SurveyedPart& part) {
  if (!part.Has("IGEOLO") || !IsOneOf(part.Text("ICORDS"), "U|N|S|G|D")) return;
  if (!CornersOf(FormOf(part), part.Text("IGEOLO"))) checking.FailAt(part, "IGEOLO");
}

void AskCrossed(Checking& checking, const SurveyedPart& part) {
  const auto corners = CornersOf(FormOf(part), part.Text("IGEOLO"));
  if (corners && AreCrossed(*corners))
    checking.Fail(part, "IGEOLO", "the sides between the corners cross one another");
}

std::string Metres(double number) { return std::to_string(std::llround(number)) + " m"; }

void AskRecords(Checking& checking, const SurveyedPart& part) {
  for (const Apart& other : ApartFromCorners(part, checking.Records(part)))
    checking.Fail(part, "IGEOLO",
                  "a corner of IGEOLO is " + Metres(other.metres) + " from that of " + other.source +
                      ", where " + Metres(other.allowed) + " are within both errors");
}

void AskCompression(Checking& checking, const SurveyedPart& part) {
  checking.FailUnlessAllowed(part, "IC");
}

// Whether a text has the form of a pattern: 0 for a digit, N for N or V, anything else for itself.
bool HasForm(std::string_view text, std::string_view pattern) {
  if (text.size() != pattern.size()) return false;
  for (size_t i = 0; i < text.size(); ++i) {
    const bool fits = pattern[i] == '0'   ? text[i] >= '0' && text[i] <= '9'
                      : pattern[i] == 'N' ? text[i] == 'N' || text[i] == 'V'
                                          : text[i] == pattern[i];
    if (!fits) return false;
  }
  return true;
}

void AskRate(Checking& checking, const SurveyedPart& part) {
  struct Form {
    std::string_view compressions, forms;
  };
  constexpr Form kForms[] = {{"C1|M1", "1D  |2DS |2DH "},
                             {"C3|M3|C5|M5|I1", "00.0"},
                             {"C4|M4", "0.00|00.0"},
                             {"C6|M6|C7|M7|C8|M8", "N000|0000|00.0"}};
  if (!part.Has("COMRAT")) return;
  const std::string_view rate = part.Text("COMRAT");
  for (const Form& form : kForms) {
    if (!IsOneOf(part.Text("IC"), form.compressions)) continue;
    std::string_view left = form.forms;
    while (!left.empty()) {
      const size_t end = std::min(left.find('|'), left.size());
      if (rate == left.substr(0, end) || (left[0] != '1' && HasForm(rate, left.substr(0, end)))) return;
      left.remove_prefix(std::min(end + 1, left.size()));
    }
    return checking.Fail(part, "COMRAT",
                         "COMRAT is " + Quoted(rate) + " where IC is " + Quoted(part.Text("IC")));
  }
}

void AskSynchronisation(Checking& checking, const SurveyedPart& part) {
  if (part.Has("ISYNC") && part.Text("ISYNC") != "0") checking.FailAt(part, "ISYNC");
}

void AskMagnification(Checking& checking, const SurveyedPart& part) {
  std::string_view text = part.Trimmed("IMAG");
  if (!part.Has("IMAG")) return;
  const bool isFraction = !text.empty() && text[0] == '/';
  if (isFraction) text.remove_prefix(1);
  const size_t digits = text.find_first_not_of("0123456789.");
  const bool isNumber = !text.empty() && digits == std::string_view::npos &&
                        text.find_first_of("123456789") != std::string_view::npos;
  // A reciprocal is that of a power of two.
  const int64_t divisor = isFraction ? DigitsOf(text) : 1;
  const bool isPower = divisor > 0 && (divisor & (divisor - 1)) == 0;
  if (!isNumber || !isPower) checking.FailAt(part, "IMAG");
}

constexpr const char kTableA3[] = "MIL-STD-2500C, table A-3";
constexpr Rule kRules[] = {
    {"image.size", Severity::Error, On::Image, "NROWS", kTableA3,
     "An image has at least a row and a column.", AskSize},
    {"image.category", Severity::Note, On::Image, "ICAT", "MIL-STD-2500C, table A-3; the register",
     "The category is one of those registered.", AskCategory},
    {"image.icords", Severity::Error, On::Image, "ICORDS", kTableA3,
     "The form of the corners is U, N, S, G, D or blank.", AskCornerForm},
    {"image.corners", Severity::Error, On::Image, "IGEOLO", kTableA3,
     "The corners have the form that ICORDS says and lie on the globe.", AskCorners},
    {"image.corners.crossed", Severity::Warning, On::Image, "IGEOLO", kTableA3,
     "The corners go around the image.", AskCrossed},
    {"image.corners.records", Severity::Warning, On::Image, "IGEOLO", "STDI-0002, BLOCKA and RPC00B",
     "The corners lie where the image's records put them, within the errors of both.", AskRecords},
    {"image.compression", Severity::Error, On::Image, "IC", kTableA3, "The compression is a known one.",
     AskCompression},
    {"image.rate", Severity::Error, On::Image, "COMRAT", kTableA3,
     "The rate has the form that goes with the compression.", AskRate},
    {"image.isync", Severity::Error, On::Image, "ISYNC", kTableA3, "ISYNC is reserved, 0.",
     AskSynchronisation},
    {"image.magnification", Severity::Error, On::Image, "IMAG", kTableA3,
     "The magnification is a decimal number, or a slash and a power of two that divides.",
     AskMagnification},
};

}  // namespace

const Rules kImageRules = kRules;

}  // namespace core
