// Numbers inside image data and mask tables are big-endian.
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
