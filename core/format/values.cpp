#include "core/format/values.h"

#include <cstdio>
#include <cstdlib>

#include "core/format/numbers.h"
#include "core/format/words.h"

namespace core {
namespace {

void WriteNumber(JsonText& json, std::string_view text) {
  const auto value = NumberOf(text);
  value ? json.Number(*value) : json.Null();
}

// "1.0", ".5" or "/2", a divisor.
void WriteMagnification(JsonText& json, std::string_view text) {
  const std::string digits(WithoutSpaces(text));
  const bool divides = digits.substr(0, 1) == "/";
  char* end = nullptr;
  const double value = std::strtod(digits.c_str() + (divides ? 1 : 0), &end);
  if (digits.empty() || *end != 0 || (divides && value == 0)) return json.Null();
  json.Real(divides ? 1 / value : value);
}

void WritePlace(JsonText& json, std::string_view text) {
  constexpr size_t kHalf = 5;
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

bool EndsWith(std::string_view name, std::string_view end) {
  return name.size() > end.size() && name.substr(name.size() - end.size()) == end;
}

}  // namespace

FieldMeaning MeaningOfField(std::string_view name) {
  constexpr std::string_view kNumbers =
      "CLEVEL|FSCOP|FSCPYS|ENCRYP|FL|HL|NUMI|NUMS|NUMX|NUMT|NUMDES|NUMRES|UDHDL|UDHOFL|XHDL|XHDLOFL|"
      "NROWS|NCOLS|ABPP|"
      "NICOM|NBANDS|XBANDS|ISYNC|NBPR|NBPC|NPPBH|NPPBV|NBPP|IDLVL|IALVL|UDIDL|UDOFL|IXSHDL|IXSOFL|"
      "SSTRUCT|SDLVL|SALVL|"
      "SRES|SXSHDL|SXSOFL|TXTALVL|TXSHDL|TXSOFL|DESSHL|RESSHL|DESVER|RESVER";
  if (name == "FBKGC") return FieldMeaning::Colour;
  if (name == "IMAG") return FieldMeaning::Magnification;
  if (IsOneOf(name, "ILOC|SLOC|SBND1|SBND2")) return FieldMeaning::Place;
  if (IsOneOf(name, "FDT|IDATIM|TXTDT") || EndsWith(name, "DCDT") || EndsWith(name, "DGDT") ||
      EndsWith(name, "SRDT"))
    return FieldMeaning::Date;
  return IsOneOf(name, kNumbers) ? FieldMeaning::Number : FieldMeaning::Text;
}

void WriteValue(JsonText& json, FieldMeaning meaning, std::string_view text) {
  switch (meaning) {
    case FieldMeaning::Colour:
      return WriteColour(json, text);
    case FieldMeaning::Magnification:
      return WriteMagnification(json, text);
    case FieldMeaning::Date:
      return WriteDate(json, text);
    case FieldMeaning::Place:
      return WritePlace(json, text);
    default:
      return WriteNumber(json, text);
  }
}

}  // namespace core
