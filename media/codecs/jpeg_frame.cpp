// The markers in front of a JPEG stream's first scan.
#include <cstring>

#include "media/codecs/jpeg.h"

namespace media {
namespace {

uint32_t Big16(const uint8_t* p) { return static_cast<uint32_t>(p[0] << 8 | p[1]); }

bool IsFrameMarker(uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

}  // namespace

Bytes WithoutFill(Bytes bytes) {
  while (bytes.size() > 1 && bytes[0] == 0xFF && bytes[1] == 0xFF) bytes = bytes.subspan(1);
  return bytes;
}

bool FindJpegFrame(Bytes bytes, JpegFrame& frame) {
  if (bytes.size() < 4 || bytes[0] != 0xFF || bytes[1] != 0xD8 || bytes[2] != 0xFF) return false;
  frame = {};
  size_t at = 2;
  while (at + 4 <= bytes.size()) {
    if (bytes[at] != 0xFF) return false;
    const uint8_t marker = bytes[at + 1];
    if (marker == 0xFF || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8)) {
      at += marker == 0xFF ? 1 : 2;
      continue;
    }
    const uint8_t* segment = &bytes[at + 4];
    const uint32_t length = Big16(&bytes[at + 2]);
    const size_t left = bytes.size() - at - 4;
    if (length < 2 || length - 2 > left || marker == 0xDA || marker == 0xD9) return false;
    if (marker == 0xE0 && length >= 7 && std::memcmp(segment, "JFIF", 5) == 0)
      frame.declaresColour = true;
    if (marker == 0xEE && length >= 14 && std::memcmp(segment, "Adobe", 5) == 0)
      frame.declaresColour = true;
    if (IsFrameMarker(marker) && length >= 8) {
      frame.marker = marker;
      frame.precision = segment[0];
      frame.height = Big16(segment + 1);
      frame.width = Big16(segment + 3);
      frame.components = segment[5];
      frame.end = at + 2 + length;
      return frame.width != 0 && frame.height != 0 && frame.components != 0;
    }
    at += 2 + length;
  }
  return false;
}

}  // namespace media
