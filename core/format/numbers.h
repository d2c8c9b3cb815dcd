// Numbers and dates in the texts of fields.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace core {

/// A text without the spaces around it.
std::string_view WithoutSpaces(std::string_view text);
/// A decimal number, spaces around it and a sign in front of it allowed; none for another text.
std::optional<int64_t> NumberOf(std::string_view text);
/// "20261124120000" as "2026-11-24T12:00:00Z"; parts of dashes or spaces end it. Empty when it is no
/// date.
std::string IsoDate(std::string_view text);
/// Whether a text is a date and time, CCYYMMDDhhmmss, that there was; parts that are not known are
/// dashes.
bool IsTime(std::string_view text);
/// Whether a text is a day, CCYYMMDD.
bool IsDay(std::string_view text);

}  // namespace core
