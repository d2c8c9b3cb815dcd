#include "core/report/html.h"

#include <cstdio>

#include "core/format/survey.h"
#include "core/format/words.h"

namespace core {

std::string Escaped(std::string_view utf8) {
  std::string text;
  for (const char c : Printable(utf8)) {
    switch (c) {
      case '&':
        text += "&amp;";
        break;
      case '<':
        text += "&lt;";
        break;
      case '>':
        text += "&gt;";
        break;
      case '"':
        text += "&quot;";
        break;
      case '\'':
        text += "&#39;";
        break;
      default:
        text += c;
    }
  }
  return text;
}

std::string EscapedLines(std::string_view utf8) {
  std::string lines;
  while (!utf8.empty()) {
    const size_t end = utf8.find('\n');
    std::string_view line = utf8.substr(0, end);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    lines += Escaped(line) + "\n";
    if (end == std::string_view::npos) break;
    utf8.remove_prefix(end + 1);
  }
  return lines;
}

std::string EscapedField(std::string_view field) { return Escaped(ToUtf8(TrimmedText(field))); }

std::string Tag(const std::string& name, const std::string& content, const std::string& attributes) {
  return "<" + name + (attributes.empty() ? "" : " ") + attributes + ">" + content + "</" + name + ">";
}

std::string TableRow(const std::vector<std::string>& cells) {
  std::string row;
  for (size_t i = 0; i < cells.size(); ++i)
    row += i == 0 ? Tag("th", cells[i], "scope=\"row\"")
                  : Tag("td", cells[i], i == 1 ? "class=\"value\"" : "");
  return Tag("tr", row) + "\n";
}

std::string Table(const std::string& label, const std::vector<std::string>& headings,
                  const std::string& rows, const std::string& classes) {
  std::string head;
  for (const std::string& heading : headings) head += Tag("th", heading, "scope=\"col\"");
  return Tag("table", Tag("thead", Tag("tr", head)) + "\n" + Tag("tbody", rows),
             "aria-label=\"" + Escaped(label) + "\"" +
                 (classes.empty() ? "" : " class=\"" + classes + "\"")) +
         "\n";
}

std::string Section(const std::string& id, const std::string& heading, const std::string& content) {
  return Tag("section", Tag("h2", heading, "id=\"" + id + "-h\"") + "\n" + content,
             "id=\"" + id + "\" aria-labelledby=\"" + id + "-h\"") +
         "\n";
}

std::string Term(const std::string& term, const std::string& description) {
  return Tag("dt", term) + Tag("dd", description) + "\n";
}

std::string Base64(std::string_view bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t at = 0; at < bytes.size(); at += 3) {
    uint32_t three = 0;
    for (size_t i = 0; i < 3; ++i)
      three = three << 8 | (at + i < bytes.size() ? static_cast<uint8_t>(bytes[at + i]) : 0);
    for (size_t i = 0; i < 4; ++i)
      text += at + i <= bytes.size() ? kDigits[three >> (18 - 6 * i) & 63] : '=';
  }
  return text;
}

std::string Fixed(double value, int digits) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

std::string Counted(uint64_t number, const std::string& what) {
  return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string Grouped(uint64_t number) {
  std::string text = std::to_string(number);
  for (size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, ",");
  return text;
}

}  // namespace core
