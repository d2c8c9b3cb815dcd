// Narrow (UTF-8) and wide (UTF-16) text. Names of files are bytes on POSIX systems: one that is no part
// of UTF-8 becomes a low surrogate without a high one, and that becomes the byte again.
#include <new>

#include "hostkit/kernel/internal.h"

namespace {

constexpr uint32_t kLoneByte = 0xDC00;  // 0x80 to 0xFF are added

// Takes one code point off UTF-8, or a byte where there is none.
uint32_t NextCodePoint(const uint8_t*& p) {
  const uint8_t lead = *p++;
  if (lead < 0x80) return lead;
  const int extra = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : 0;
  if (extra == 0 || lead > 0xF4) return kLoneByte + lead;
  uint32_t code = lead & (0x3F >> extra);
  for (int i = 0; i < extra; ++i) {
    if ((p[i] & 0xC0) != 0x80) return kLoneByte + lead;
    code = code << 6 | (p[i] & 0x3F);
  }
  constexpr uint32_t kLeast[] = {0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code < 0xE000;
  if (code < kLeast[extra] || code > 0x10FFFF || surrogate) return kLoneByte + lead;
  p += extra;
  return code;
}

}  // namespace

char16_t* ORB_CALL KernelWiden(const char* narrow) {
  if (narrow == nullptr) return nullptr;
  constexpr const char16_t* kFile = u"text";
  auto* wide =
      static_cast<char16_t*>(KernelAllocate(std::strlen(narrow) + 1, sizeof(char16_t), __LINE__, kFile));
  if (wide == nullptr) return nullptr;
  char16_t* out = wide;
  const auto* p = reinterpret_cast<const uint8_t*>(narrow);
  while (*p != 0) {
    const uint32_t code = NextCodePoint(p);
    if (code >= 0x10000) *out++ = static_cast<char16_t>(0xD7C0 + (code >> 10));
    *out++ = static_cast<char16_t>(code < 0x10000 ? code : 0xDC00 + (code & 0x3FF));
  }
  return wide;
}

std::string hostkit::ToUtf8(const char16_t* text) {
  std::string utf8;
  while (*text != 0) {
    uint32_t code = *text++;
    if (code >= 0xD800 && code < 0xDC00 && *text >= 0xDC00 && *text < 0xE000) {
      code = 0x10000 + ((code - 0xD800) << 10) + (*text++ - 0xDC00);
    }
    const bool isLone = code >= kLoneByte + 0x80 && code <= kLoneByte + 0xFF;
    if (code < 0x80 || isLone) {
      utf8 += static_cast<char>(code);
      continue;
    }
    const int extra = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    utf8 += static_cast<char>((0xFF00 >> (extra + 1) & 0xFF) | code >> (6 * extra));
    for (int i = extra - 1; i >= 0; --i) utf8 += static_cast<char>(0x80 | (code >> (6 * i) & 0x3F));
  }
  return utf8;
}
