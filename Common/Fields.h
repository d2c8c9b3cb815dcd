// How header records hold NITF fields, and the conversions between a field's text and its value.
//
// A field of w bytes is held as text with a terminator, exactly as in the file; numeric fields keep the
// decoded value beside it.
#pragma once

#include <cstring>
#include <span>
#include <string_view>

#include "Common/Status.h"

// ---------------------------------------------------------------- field types

/// Text of at most N characters.
template <uint16_t N>
struct Text {
  char text[N + 1] = {};
};
/// Decimal text of at most N characters and its value; values of signed fields are two's complement.
template <uint16_t N>
struct Number {
  char text[N + 1] = {};
  uint32_t value = 0;
  int32_t Signed() const { return static_cast<int32_t>(value); }
};
/// Text of at most N characters and the code that a table gives it.
template <uint16_t N>
struct Coded {
  char text[N + 1] = {};
  uint32_t code = 0;
};
/// Two halves of five characters: the row and the column of a place, or the two numbers of a bound.
struct Location {
  static constexpr uint32_t kHalf = 5;

  char text[2 * kHalf + 1] = {};
  int32_t first = 0;
  int32_t second = 0;
  int32_t Row() const { return first; }
  int32_t Column() const { return second; }
};

/// Any of the field types, seen without its width.
struct FieldView {
  char* text;
  uint16_t capacity;
  uint32_t* value;     ///< decoded value or code, null for plain text
  Location* location;  ///< null unless a Location
};
template <uint16_t N>
FieldView View(Text<N>& field) {
  return {field.text, N, nullptr, nullptr};
}
template <uint16_t N>
FieldView View(Number<N>& field) {
  return {field.text, N, &field.value, nullptr};
}
template <uint16_t N>
FieldView View(Coded<N>& field) {
  return {field.text, N, &field.code, nullptr};
}
inline FieldView View(Location& field) { return {field.text, 2 * Location::kHalf, nullptr, &field}; }

// ---------------------------------------------------------------- field codec

/// Decimal conversion as atoi does it: leading white space, a sign, digits up to the first other
/// character. Values outside 32 bits are held at the nearest end.
int32_t DecimalOf(std::string_view text);
/// The same for lengths and counts: negative text gives 0, 4294967295 is the most.
uint32_t LengthOf(std::string_view text);
/// The same in 64 bits.
uint64_t LongLengthOf(std::string_view text);
/// Decimal number with a fraction, as atof does it for NITF texts.
double RealOf(std::string_view text);
/// The largest number of `digits` decimal digits.
constexpr uint64_t LargestOf(uint32_t digits) {
  uint64_t largest = 0;
  for (; digits > 0; --digits) largest = 10 * largest + 9;
  return largest;
}

/// Writes a value as zero-filled decimal text of exactly `width` characters and a terminator. A text
/// longer than the width is refused with -13, the destination unchanged.
Status FormatNumberField(char* destination, uint32_t width, int64_t value);
/// Writes text left-justified and padded with spaces to `width`, and a terminator; -13, the destination
/// unchanged, when either is null or the text is longer.
Status CopyTextField(char* destination, uint32_t width, const char* text);
/// Counts tagged records: a 6-character tag, a 5-digit length and that many bytes each. A last record
/// that runs past the end counts.
uint32_t CountTaggedRecords(std::string_view bytes);
/// Writes exactly `width` bytes: with pad ' ' the text comes first, otherwise the pad. Longer text is
/// cut. -5 when a write falls short.
Status WritePaddedField(int32_t file, std::string_view text, uint32_t width, char pad);
/// Writes a number as "%d" into a field of `width` characters, "0"-filled. -5.
Status WriteNumberField(int32_t file, int64_t value, uint32_t width);

/// Stores text that a caller gives in a field of any type that keeps no code.
Status SetText(FieldView field, const char* text);
/// Stores two numbers. With `leadingSign` a minus stands first in its half, else where the decimal text
/// has it. -13 when a half's text is longer than five characters.
Status SetLocation(Location& location, int32_t first, int32_t second, bool leadingSign);
/// Splits a location's text into its numbers.
void DecodeLocation(Location& location);
/// Writes the first two characters of each of `pieces` dates one after the other.
Status SetDate(char* field, std::span<const char* const> pieces);

// ---------------------------------------------------------------- code tables

/// One row of a code table: what the text begins with (or is), its code, what the writer writes.
struct CodeRow {
  const char* text;
  uint32_t code;
  const char* written;
};
/// A field's code table, searched from its first row.
struct CodeTable {
  std::span<const CodeRow> rows;
  bool byPrefix;

  /// The row that the text matches, or null.
  const CodeRow* Find(std::string_view text) const;
  /// What is written for a code, or `otherwise`.
  const char* WrittenFor(uint32_t code, const char* otherwise) const;
};
