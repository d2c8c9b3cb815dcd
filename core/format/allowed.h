// What the format allows in fields that a person changes (MIL-STD-2500C, tables ).
#pragma once

#include <string>
#include <string_view>

namespace core {

/// Whether a text is one of those that a field may have, blanks behind it aside; so is any text of a
/// field without a list. Fields of classification are named without their header's prefix: CLAS, DCTP.
bool IsAllowed(std::string_view field, std::string_view text);
/// Whether a field says how the pixels of an image are stored: changing it would not change them.
bool DescribesPixels(const std::string& name);
/// Why a field of a header cannot have a value, empty when it can. `icords` is the form that the image
/// says its corners have.
std::string ProblemOf(std::string_view name, std::string_view value, char icords);

}  // namespace core
