#include "core/format/words.h"

#include <algorithm>
#include <cstdint>

namespace core {
namespace {

// The code of the character that a text begins with and its bytes; none where there is no UTF-8.
struct Character {
  uint32_t code = 0;
  size_t bytes = 0;
};
Character FirstOf(std::string_view text) {
  const auto lead = static_cast<uint8_t>(text[0]);
  if (lead < 0x80) return {lead, 1};
  const size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < bytes) return {};
  uint32_t code = lead & (0x7Fu >> bytes);
  for (size_t i = 1; i < bytes; ++i) {
    const auto next = static_cast<uint8_t>(text[i]);
    if ((next & 0xC0) != 0x80) return {};
    code = code << 6 | (next & 0x3F);
  }
  constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool isSurrogate = code >= 0xD800 && code < 0xE000;
  if (code < kLeast[bytes] || code > 0x10FFFF || isSurrogate) return {};
  return {code, bytes};
}

// Control characters, those that turn the direction of writing among them.
bool IsControl(uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x200E || code == 0x200F ||
         (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

}  // namespace

size_t Utf8Bytes(std::string_view text) { return FirstOf(text).bytes; }

std::string ToUtf8(std::string_view text) {
  std::string utf8;
  utf8.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<uint8_t>(c);
    if (byte < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

std::string Printable(std::string_view utf8) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string shown;
  while (!utf8.empty()) {
    const Character character = FirstOf(utf8);
    const size_t bytes = std::max<size_t>(1, character.bytes);
    if (character.bytes != 0 && !IsControl(character.code)) {
      shown += utf8.substr(0, bytes);
    } else {
      for (const char c : utf8.substr(0, bytes)) {
        const auto byte = static_cast<uint8_t>(c);
        shown += std::string("\\x") + kDigits[byte >> 4] + kDigits[byte & 15];
      }
    }
    utf8.remove_prefix(bytes);
  }
  return shown;
}

std::string Shown(std::string_view field) {
  return Printable(ToUtf8(field.substr(0, field.find_last_not_of(' ') + 1)));
}

bool IsOneOf(std::string_view text, std::string_view list) {
  if (text.find('|') != std::string_view::npos) return false;
  for (size_t at = list.find(text); at != std::string_view::npos; at = list.find(text, at + 1)) {
    const size_t end = at + text.size();
    if ((at == 0 || list[at - 1] == '|') && (end == list.size() || list[end] == '|')) return true;
  }
  return false;
}

std::string Quoted(std::string_view text) {
  constexpr size_t kShown = 40;
  return '"' + Printable(ToUtf8(text.substr(0, kShown))) + (text.size() > kShown ? "…\"" : "\"");
}

std::string HexOf(std::string_view bytes, size_t most) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char byte : bytes.substr(0, most)) {
    text += kDigits[static_cast<uint8_t>(byte) >> 4];
    text += kDigits[byte & 15];
  }
  if (bytes.size() > most) text += "… (" + std::to_string(bytes.size() - most) + " more bytes)";
  return text;
}

}  // namespace core
