// Texts of files and names as people may see them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tool {

/// A field's text, single bytes of the file's own character set (Latin-1), as UTF-8.
std::string ToUtf8(std::string_view text);
/// Bytes of the UTF-8 character that a text begins with; 0 when it is none.
size_t Utf8Bytes(std::string_view text);
/// UTF-8 that does nothing to a terminal: control characters, and bytes that are no UTF-8, as \xHH.
std::string Printable(std::string_view utf8);
/// A field's text for people: without the spaces behind it, printable.
std::string Shown(std::string_view field);

}  // namespace tool
