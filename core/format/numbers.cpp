#include "core/format/numbers.h"

namespace core {
namespace {

bool IsDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool IsLeapYear(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

// Whether digits "CCYYMMDD" begin a text and name a day that there was.
bool BeginsWithDay(std::string_view text) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (text.size() < 8 || text.substr(0, 8).find_first_not_of("0123456789") != std::string_view::npos)
    return false;
  const auto number = [&](size_t at, size_t count) {
    return static_cast<int>(NumberOf(text.substr(at, count)).value_or(0));
  };
  const int month = number(4, 2), day = number(6, 2);
  if (month < 1 || month > 12 || day < 1) return false;
  return day <= kDays[month - 1] + (month == 2 && IsLeapYear(number(0, 4)));
}

}  // namespace

std::string_view WithoutSpaces(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::optional<int64_t> NumberOf(std::string_view text) {
  const std::string_view digits = WithoutSpaces(text);
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

bool IsDay(std::string_view text) { return text.size() == 8 && BeginsWithDay(text); }

bool IsTime(std::string_view text) {
  if (text.size() != 14 || IsoDate(text).empty()) return false;
  return text.find('-') != std::string_view::npos ||
         (text.find_first_not_of("0123456789") == std::string_view::npos && BeginsWithDay(text));
}

}  // namespace core
