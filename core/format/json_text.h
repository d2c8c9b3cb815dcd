// JSON written as it is made: a file of a thousand segments has a hundred thousand members.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace core {

/// Builds a JSON text of objects and arrays. Members and elements come in order; nothing is kept of them.
class JsonText {
 public:
  /// Indented by two spaces a level, the first of which is `level`; or all on one line. With a sink the
  /// text goes there piece by piece, and Text is what has not gone yet.
  explicit JsonText(bool indented, size_t level = 0, std::FILE* sink = nullptr)
      : indented_(indented), level_(level), sink_(sink) {}

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }
  /// Names the member that the next value is.
  void Key(std::string_view name);

  /// UTF-8; what is none is shown as U+FFFD.
  void String(std::string_view utf8);
  /// A field's text, single bytes of Latin-1.
  void FieldText(std::string_view latin1);
  void Number(int64_t value);
  void Real(double value);
  void Null();
  void Bool(bool value);

  const std::string& Text() const { return text_; }

 private:
  void Open(char bracket);
  void Close(char bracket);
  void Next();
  void NewLine();
  void PutByte(uint8_t byte);

  bool indented_;
  size_t level_;
  std::FILE* sink_;
  std::string text_;
  size_t depth_ = 0;
  bool isFirst_ = true;
  bool behindKey_ = false;
};

}  // namespace core
