// What field texts mean, as JSON.
#pragma once

#include <string_view>

#include "core/format/json_text.h"

namespace core {

/// What a field's text stands for.
enum class FieldMeaning { Text, Number, Date, Place, Colour, Magnification };
FieldMeaning MeaningOfField(std::string_view name);
/// Writes its value: a number, a date as ISO 8601 as far as it is known, [row, column], "#RRGGBB"; null
/// for a text that is no value of the field.
void WriteValue(JsonText& json, FieldMeaning meaning, std::string_view text);

}  // namespace core
