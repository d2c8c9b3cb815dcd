// The markers in front of a JPEG stream's first scan.
#include <cstring>

#include "media/codecs/jpeg.h"

namespace media {
namespace {

bool IsFrameMarker(uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

}  // namespace

Source WithoutFill(const Source& source) {
  SourceBytes stream(source);
  uint64_t at = 0;
  for (const uint8_t* two = stream.Get(0, 2); two != nullptr && two[0] == 0xFF && two[1] == 0xFF;
       two = stream.Get(at, 2))
    ++at;
  return source.From(at);
}

bool FindJpegFrame(const Source& source, JpegFrame& frame) {
  SourceBytes stream(source);
  const uint8_t* begin = stream.Get(0, 4);
  if (begin == nullptr || begin[0] != 0xFF || begin[1] != 0xD8 || begin[2] != 0xFF) return false;
  frame = {};
  uint64_t at = 2;
  while (const uint8_t* bytes = stream.Get(at, 4)) {
    if (bytes[0] != 0xFF) return false;
    const uint8_t marker = bytes[1];
    if (marker == 0xFF || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8)) {
      at += marker == 0xFF ? 1 : 2;
      continue;
    }
    const uint32_t length = Big16(bytes + 2);
    const uint8_t* segment =
        length < 2 || marker == 0xDA || marker == 0xD9 ? nullptr : stream.Get(at + 4, length - 2);
    if (segment == nullptr) return false;
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
