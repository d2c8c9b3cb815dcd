#include "core/format/json_text.h"

#include <charconv>
#include <cmath>
#include <cstdio>

#include "core/format/words.h"

namespace core {

void JsonText::NewLine() {
  if (!indented_) return;
  text_ += '\n';
  text_.append(2 * (level_ + depth_), ' ');
}

// What stands in front of a value or key.
void JsonText::Next() {
  constexpr size_t kPiece = 256 << 10;
  if (sink_ != nullptr && text_.size() >= kPiece) {
    (void)std::fwrite(text_.data(), 1, text_.size(), sink_);
    text_.clear();
  }
  if (behindKey_) {
    behindKey_ = false;
    return;
  }
  if (depth_ == 0) return;
  if (!isFirst_) text_ += ',';
  isFirst_ = false;
  NewLine();
}

void JsonText::Open(char bracket) {
  Next();
  text_ += bracket;
  ++depth_;
  isFirst_ = true;
}

void JsonText::Close(char bracket) {
  --depth_;
  if (!isFirst_) NewLine();
  text_ += bracket;
  isFirst_ = false;
}

void JsonText::Key(std::string_view name) {
  Next();
  text_ += '"';
  text_ += name;
  text_ += indented_ ? "\": " : "\":";
  behindKey_ = true;
}

// A byte of ASCII in a string.
void JsonText::PutByte(uint8_t byte) {
  if (byte == '"' || byte == '\\') text_ += '\\';
  if (byte >= 0x20) {
    text_ += static_cast<char>(byte);
    return;
  }
  char escape[8];
  std::snprintf(escape, sizeof escape, "\\u%04x", byte);
  text_ += escape;
}

void JsonText::String(std::string_view utf8) {
  Next();
  text_ += '"';
  while (!utf8.empty()) {
    const auto lead = static_cast<uint8_t>(utf8[0]);
    const size_t bytes = lead < 0x80 ? 1 : Utf8Bytes(utf8);
    if (lead < 0x80) {
      PutByte(lead);
    } else {
      text_ += bytes == 0 ? "\xEF\xBF\xBD" : utf8.substr(0, bytes);
    }
    utf8.remove_prefix(bytes == 0 ? 1 : bytes);
  }
  text_ += '"';
}

void JsonText::FieldText(std::string_view latin1) {
  Next();
  text_ += '"';
  for (const char c : latin1) {
    const auto byte = static_cast<uint8_t>(c);
    if (byte < 0x80) {
      PutByte(byte);
    } else {
      text_ += static_cast<char>(0xC0 | byte >> 6);
      text_ += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  text_ += '"';
}

void JsonText::Number(int64_t value) {
  Next();
  text_ += std::to_string(value);
}

void JsonText::Real(double value) {
  if (!std::isfinite(value)) return Null();
  Next();
  // The shortest text that reads back as the same number.
  char buffer[32];
  const std::to_chars_result end = std::to_chars(buffer, std::end(buffer), value);
  const std::string_view digits(buffer, static_cast<size_t>(end.ptr - buffer));
  text_ += digits;
  if (digits.find_first_of(".e") == std::string_view::npos) text_ += ".0";
}

void JsonText::Null() {
  Next();
  text_ += "null";
}

void JsonText::Bool(bool value) {
  Next();
  text_ += value ? "true" : "false";
}

}  // namespace core
