// Texts of a page. Everything that comes from a file passes Escaped.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace core {

/// UTF-8 as it may stand in an element or an attribute; control characters are shown as \xHH.
std::string Escaped(std::string_view utf8);
/// The same of several lines, which stay so.
std::string EscapedLines(std::string_view utf8);
/// The same of a field's text, single bytes of Latin-1, without the spaces behind it.
std::string EscapedField(std::string_view field);

/// <name attributes>content</name>; the content is HTML already.
std::string Tag(const std::string& name, const std::string& content, const std::string& attributes = "");
/// A row of cells, the first one a heading of the row; the cells are HTML already.
std::string TableRow(const std::vector<std::string>& cells);
/// A table with a caption for screen readers; rows are HTML already.
std::string Table(const std::string& label, const std::vector<std::string>& headings,
                  const std::string& rows, const std::string& classes = "");
/// A section with a heading that names it.
std::string Section(const std::string& id, const std::string& heading, const std::string& content);
/// A term and what it is.
std::string Term(const std::string& term, const std::string& description);

std::string Base64(std::string_view bytes);
/// A number with so many digits behind the point.
std::string Fixed(double value, int digits);
/// "1 band", "3 bands".
std::string Counted(uint64_t number, const std::string& what);
/// 1234567 as "1,234,567".
std::string Grouped(uint64_t number);

}  // namespace core
