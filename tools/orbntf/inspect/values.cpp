#include "tools/orbntf/inspect/values.h"

#include <cstdio>
#include <cstdlib>

namespace tool {
namespace {

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string_view Trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

void WriteNumber(JsonText& json, std::string_view text) {
  const auto value = NumberOf(text);
  value ? json.Number(*value) : json.Null();
}

// "1.0", ".5" or "/2", a divisor.
void WriteMagnification(JsonText& json, std::string_view text) {
  const std::string digits(Trimmed(text));
  const bool divides = digits.substr(0, 1) == "/";
  char* end = nullptr;
  const double value = std::strtod(digits.c_str() + (divides ? 1 : 0), &end);
  if (digits.empty() || *end != 0 || (divides && value == 0)) return json.Null();
  json.Real(divides ? 1 / value : value);
}

void WritePlace(JsonText& json, std::string_view text) {
  constexpr size_t kHalf = Location::kHalf;
  const auto row = NumberOf(text.substr(0, kHalf)),
             column = NumberOf(text.substr(std::min(kHalf, text.size())));
  if (text.size() != 2 * kHalf || !row || !column) return json.Null();
  json.BeginArray();
  json.Number(*row);
  json.Number(*column);
  json.EndArray();
}

void WriteColour(JsonText& json, std::string_view bytes) {
  if (bytes.size() != 3) return json.Null();
  char text[8];
  const auto byte = [&](size_t i) { return static_cast<unsigned>(static_cast<uint8_t>(bytes[i])); };
  std::snprintf(text, sizeof text, "#%02X%02X%02X", byte(0), byte(1), byte(2));
  json.String(text);
}

void WriteDate(JsonText& json, std::string_view text) {
  const std::string date = IsoDate(text);
  date.empty() ? json.Null() : json.String(date);
}

// Dates of the security fields are texts to the module: they may be blank.
bool IsDate(const FieldTraits& traits) {
  const std::string_view name(traits.name);
  return traits.setAs == SetAs::Date || name == "DCDT" || name == "DGDT" || name == "SRDT";
}

}  // namespace

std::optional<int64_t> NumberOf(std::string_view text) {
  const std::string_view digits = Trimmed(text);
  const bool isSigned = !digits.empty() && (digits[0] == '-' || digits[0] == '+');
  if (!IsDigits(digits.substr(isSigned ? 1 : 0)) || digits.size() > 18) return std::nullopt;
  int64_t value = 0;
  for (const char c : digits.substr(isSigned ? 1 : 0)) value = value * 10 + (c - '0');
  return digits[0] == '-' ? -value : value;
}

std::string IsoDate(std::string_view text) {
  struct Part {
    size_t at, width;
    int least, most;
    const char* front;
  };
  constexpr Part kParts[] = {{0, 4, 0, 9999, ""}, {4, 2, 1, 12, "-"},  {6, 2, 1, 31, "-"},
                             {8, 2, 0, 23, "T"},  {10, 2, 0, 59, ":"}, {12, 2, 0, 60, ":"}};
  std::string iso;
  for (const Part& part : kParts) {
    if (text.size() < part.at + part.width) break;
    const std::string_view digits = text.substr(part.at, part.width);
    if (digits.find_first_not_of("- ") == std::string_view::npos) break;
    const int value = IsDigits(digits) ? static_cast<int>(*NumberOf(digits)) : -1;
    if (value < part.least || value > part.most) return "";
    iso += part.front + std::string(digits);
  }
  // A time of an hour alone has no form of its own.
  if (iso.size() == sizeof "CCYY-MM-DDThh" - 1) iso += ":00";
  if (iso.size() > sizeof "CCYY-MM-DD" - 1) iso += 'Z';
  return iso;
}

bool HasValue(const FieldTraits& traits) {
  const std::string_view name(traits.name);
  return name == "FBKGC" || name == "IMAG" || IsDate(traits) || traits.setAs == SetAs::Location ||
         traits.setAs == SetAs::Number;
}

void WriteValue(JsonText& json, const FieldTraits& traits, std::string_view text) {
  const std::string_view name(traits.name);
  if (name == "FBKGC") return WriteColour(json, text);
  if (name == "IMAG") return WriteMagnification(json, text);
  if (IsDate(traits)) return WriteDate(json, text);
  if (traits.setAs == SetAs::Location) return WritePlace(json, text);
  WriteNumber(json, text);
}

}  // namespace tool
