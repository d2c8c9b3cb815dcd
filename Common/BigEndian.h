// Numbers inside image data and mask tables are big-endian, the bytes of a bitmap's pixels little-endian.
#pragma once

#include <cstdint>

inline uint16_t Big16(const void* at) {
  const auto* bytes = static_cast<const uint8_t*>(at);
  return static_cast<uint16_t>(bytes[0] << 8 | bytes[1]);
}
inline uint32_t Big32(const void* at) {
  const auto* bytes = static_cast<const uint8_t*>(at);
  return static_cast<uint32_t>(Big16(bytes)) << 16 | Big16(bytes + 2);
}
inline uint32_t Little32(const void* at) {
  const auto* bytes = static_cast<const uint8_t*>(at);
  return bytes[0] | static_cast<uint32_t>(bytes[1]) << 8 | static_cast<uint32_t>(bytes[2]) << 16 |
         static_cast<uint32_t>(bytes[3]) << 24;
}
inline void PutLittle32(uint32_t value, void* at) {
  auto* bytes = static_cast<uint8_t*>(at);
  for (uint32_t i = 0; i < 4; ++i) bytes[i] = static_cast<uint8_t>(value >> (8 * i));
}
