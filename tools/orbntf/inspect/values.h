// What field texts mean.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Common/FieldRows.h"
#include "tools/orbntf/inspect/json_text.h"

namespace tool {

/// A decimal number, spaces around it and a sign in front of it allowed; none for another text.
std::optional<int64_t> NumberOf(std::string_view text);
/// Whether a field means more than a text: a number, a date, a place or a colour.
bool HasValue(const FieldTraits& traits);
/// Writes its value: a number, a date as ISO 8601 as far as it is known, [row, column], "#RRGGBB"; null
/// for a text that is no value of the field.
void WriteValue(JsonText& json, const FieldTraits& traits, std::string_view text);

/// "20261124120000" as "2026-11-24T12:00:00Z"; parts of dashes or spaces end it. Empty when it is no
/// date.
std::string IsoDate(std::string_view text);

}  // namespace tool
