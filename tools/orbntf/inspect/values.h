// What field texts mean, as JSON.
#pragma once

#include <string_view>

#include "Common/FieldRows.h"
#include "core/format/json_text.h"
#include "tools/orbntf/tool.h"

namespace tool {

/// Whether a field means more than a text: a number, a date, a place or a colour.
bool HasValue(const FieldTraits& traits);
/// Writes its value: a number, a date as ISO 8601 as far as it is known, [row, column], "#RRGGBB"; null
/// for a text that is no value of the field.
void WriteValue(JsonText& json, const FieldTraits& traits, std::string_view text);

}  // namespace tool
