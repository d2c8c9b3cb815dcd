#include "tools/orbntf/inspect/values.h"

#include <cstdio>
#include <cstdlib>

#include "core/format/numbers.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

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

bool IsPlace(const FieldTraits& traits) {
  return traits.setAs == SetAs::Location || traits.setAs == SetAs::SignedLocation;
}

}  // namespace

bool HasValue(const FieldTraits& traits) {
  const std::string_view name(traits.name);
  return name == "FBKGC" || name == "IMAG" || IsDate(traits) || IsPlace(traits) ||
         traits.setAs == SetAs::Number;
}

void WriteValue(JsonText& json, const FieldTraits& traits, std::string_view text) {
  const std::string_view name(traits.name);
  if (name == "FBKGC") return WriteColour(json, text);
  if (name == "IMAG") return WriteMagnification(json, text);
  if (IsDate(traits)) return WriteDate(json, text);
  if (IsPlace(traits)) return WritePlace(json, text);
  WriteNumber(json, text);
}

}  // namespace tool
