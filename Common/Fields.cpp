#include "Common/Fields.h"

#include <algorithm>

#include "Common/Bounds.h"
#include "Common/Owning.h"

namespace {

constexpr uint32_t kLocationHalf = Location::kHalf;

struct Digits {
  uint64_t magnitude;  // held at the 64-bit end
  bool negative;
};

Digits ParseDigits(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
  const bool negative = i < text.size() && text[i] == '-';
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
  uint64_t magnitude = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    const CheckedSize next = CheckedSize(magnitude) * 10 + static_cast<uint64_t>(text[i] - '0');
    magnitude = next.Within(UINT64_MAX - 1) ? next.Value() : UINT64_MAX - 1;
  }
  return {magnitude, negative};
}

// Decimal text of a value, "%d" as it were.
std::string_view DecimalText(int64_t value, char (&buffer)[24]) {
  char* p = buffer + sizeof buffer;
  uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  do {
    *--p = static_cast<char>('0' + magnitude % 10);
    magnitude /= 10;
  } while (magnitude != 0);
  if (value < 0) *--p = '-';
  return {p, static_cast<size_t>(buffer + sizeof buffer - p)};
}

// One half of a location: a leading minus is the sign, and stands for a zero.
int32_t DecodeHalf(std::string_view half) {
  if (half[0] != '-') return DecimalOf(half);
  char digits[kLocationHalf];
  half.copy(digits, kLocationHalf);
  digits[0] = '0';
  return -DecimalOf({digits, kLocationHalf});
}

bool FormatHalf(char* half, int32_t value, bool leadingSign) {
  char buffer[24];
  std::string_view text = DecimalText(value, buffer);
  if (text.size() > kLocationHalf) return false;
  if (leadingSign && value < 0) text.remove_prefix(1);
  std::memset(half, '0', kLocationHalf);
  text.copy(half + kLocationHalf - text.size(), text.size());
  if (leadingSign && value < 0) half[0] = '-';
  return true;
}

}  // namespace

int32_t DecimalOf(std::string_view text) {
  const Digits digits = ParseDigits(text);
  if (digits.negative) {
    return digits.magnitude > INT32_MAX ? INT32_MIN : -static_cast<int32_t>(digits.magnitude);
  }
  return digits.magnitude > INT32_MAX ? INT32_MAX : static_cast<int32_t>(digits.magnitude);
}

uint64_t LongLengthOf(std::string_view text) {
  const Digits digits = ParseDigits(text);
  return digits.negative ? 0 : digits.magnitude;
}

uint32_t LengthOf(std::string_view text) { return Saturate32(LongLengthOf(text)); }

double RealOf(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool negative = !text.empty() && text[0] == '-';
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  const auto isDigit = [&] { return !text.empty() && text[0] >= '0' && text[0] <= '9'; };
  double value = 0;
  for (; isDigit(); text.remove_prefix(1)) value = value * 10 + (text[0] - '0');
  if (!text.empty() && text[0] == '.') {
    double scale = 1;
    for (text.remove_prefix(1); isDigit(); text.remove_prefix(1))
      value += (scale /= 10) * (text[0] - '0');
  }
  if (text.size() > 1 && (text[0] == 'e' || text[0] == 'E')) {
    const int32_t exponent = DecimalOf(text.substr(1));
    for (int32_t i = 0; i < std::min(exponent, 99); ++i) value *= 10;
    for (int32_t i = 0; i > std::max(exponent, -99); --i) value /= 10;
  }
  return negative ? -value : value;
}

Status FormatNumberField(char* destination, uint32_t width, int64_t value) {
  char buffer[24];
  const std::string_view text = DecimalText(value, buffer);
  if (text.size() > width) return Status::InvalidParameter;
  std::memset(destination, '0', width);
  destination[width] = 0;
  text.copy(destination + width - text.size(), text.size());
  return Status::Success;
}

Status CopyTextField(char* destination, uint32_t width, const char* text) {
  if (destination == nullptr || text == nullptr) return Status::InvalidParameter;
  const size_t length = std::strlen(text);
  if (length > width) return Status::InvalidParameter;
  // The text may be the field itself.
  std::memmove(destination, text, length);
  std::memset(destination + length, ' ', width - length);
  destination[width] = 0;
  return Status::Success;
}

uint32_t CountTaggedRecords(std::string_view bytes) {
  constexpr size_t kTag = 6, kLength = 5;
  uint32_t count = 0;
  for (uint64_t position = 0; position < bytes.size(); ++count) {
    const size_t at = std::min<size_t>(static_cast<size_t>(position) + kTag, bytes.size());
    position += uint64_t{LengthOf(bytes.substr(at, kLength))} + kTag + kLength;
  }
  return count;
}

Status WritePaddedField(int32_t file, std::string_view text, uint32_t width, char pad) {
  text = text.substr(0, width);
  const auto padding = static_cast<uint32_t>(width - text.size());
  const auto writePadding = [&] {
    for (uint32_t i = 0; i < padding; ++i) {
      if (Status s = WriteExactly(file, &pad, 1); !Ok(s)) return s;
    }
    return Status::Success;
  };
  if (pad != ' ') {
    if (Status s = writePadding(); !Ok(s)) return s;
  }
  if (Status s = WriteExactly(file, text.data(), static_cast<uint32_t>(text.size())); !Ok(s)) return s;
  return pad == ' ' ? writePadding() : Status::Success;
}

Status WriteNumberField(int32_t file, int64_t value, uint32_t width) {
  char buffer[24];
  return WritePaddedField(file, DecimalText(value, buffer), width, '0');
}

Status SetText(FieldView field, const char* text) {
  return CopyTextField(field.text, field.capacity, text);
}

Status SetLocation(Location& location, int32_t first, int32_t second, bool leadingSign) {
  char text[2 * kLocationHalf];
  if (!FormatHalf(text, first, leadingSign) || !FormatHalf(text + kLocationHalf, second, leadingSign)) {
    return Status::InvalidParameter;
  }
  std::memcpy(location.text, text, sizeof text);
  location.first = first;
  location.second = second;
  return Status::Success;
}

void DecodeLocation(Location& location) {
  const std::string_view text(location.text, 2 * kLocationHalf);
  location.first = DecodeHalf(text.substr(0, kLocationHalf));
  location.second = DecodeHalf(text.substr(kLocationHalf));
}

Status SetDate(char* field, std::span<const char* const> pieces) {
  for (const char* piece : pieces) {
    if (piece == nullptr) return Status::InvalidParameter;
  }
  for (const char* piece : pieces) {
    *field++ = piece[0];
    *field++ = piece[1];
  }
  *field = 0;
  return Status::Success;
}

const CodeRow* CodeTable::Find(std::string_view text) const {
  for (const CodeRow& row : rows) {
    const std::string_view wanted(row.text);
    if (byPrefix ? text.substr(0, wanted.size()) == wanted : text == wanted) return &row;
  }
  return nullptr;
}

const char* CodeTable::WrittenFor(uint32_t code, const char* otherwise) const {
  for (const CodeRow& row : rows) {
    if (row.code == code) return row.written;
  }
  return otherwise;
}
