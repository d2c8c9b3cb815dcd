// What the format allows in fields that a person changes (MIL-STD-2500C, tables ).
#pragma once

#include <string>

#include "tools/orbntf/commands/change.h"

namespace tool {

/// Whether a text is a date and time, CCYYMMDDhhmmss, that there was; parts that are not known are
/// dashes.
bool IsTime(std::string_view text);
/// Whether a text is a day, CCYYMMDD.
bool IsDay(std::string_view text);

/// Whether a field says how the pixels of an image are stored: changing it would not change them.
bool DescribesPixels(const std::string& name);
/// Why a field of a header cannot have a value; empty when it can.
std::string ProblemOf(const NitfFile& document, const Target& target, const std::string& name,
                      const std::string& value);

}  // namespace tool
