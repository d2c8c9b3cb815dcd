// Texts of files and names as people may see them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace core {

/// A field's text, single bytes of the file's own character set (Latin-1), as UTF-8.
std::string ToUtf8(std::string_view text);
/// Bytes of the UTF-8 character that a text begins with; 0 when it is none.
size_t Utf8Bytes(std::string_view text);
/// UTF-8 that does nothing to a terminal: control characters, and bytes that are no UTF-8, as \xHH.
std::string Printable(std::string_view utf8);
/// A field's text for people: without the spaces behind it, printable.
std::string Shown(std::string_view field);

/// Whether a text is one of those in a list, which are separated by '|'.
bool IsOneOf(std::string_view text, std::string_view list);
/// A text in quotes, printable.
std::string Quoted(std::string_view text);

/// Bytes as hexadecimal digits; of more than `most`, how many are left out.
std::string HexOf(std::string_view bytes, size_t most = SIZE_MAX);

}  // namespace core
