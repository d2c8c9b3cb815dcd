#include "core/format/metafile.h"

namespace core {
namespace {

uint32_t WordAt(std::string_view bytes, size_t at) {
  return static_cast<uint32_t>(static_cast<uint8_t>(bytes[at]) << 8 |
                               static_cast<uint8_t>(bytes[at + 1]));
}

}  // namespace

// A head is a word: class, id and a length up to 30; 31 stands for words of length, each of one part, the
// highest bit of which says that another part follows.
std::vector<MetafileElement> WalkMetafile(std::string_view bytes, bool& whole) {
  constexpr uint32_t kLong = 31, kMore = 0x8000, kLength = 0x7FFF, kMost = 1 << 20;
  std::vector<MetafileElement> elements;
  size_t at = 0;
  whole = false;
  while (at + 2 <= bytes.size() && elements.size() < kMost) {
    const uint32_t head = WordAt(bytes, at);
    MetafileElement element = {head >> 12, head >> 5 & 0x7F, at, {}};
    uint32_t length = head & kLong;
    bool first = true, more = length == kLong, isLong = more;
    at += 2;
    do {
      if (isLong) {
        if (at + 2 > bytes.size()) return elements;
        length = WordAt(bytes, at) & kLength;
        more = (WordAt(bytes, at) & kMore) != 0;
        at += 2;
      }
      if (length > bytes.size() - at) return elements;
      if (first) element.parameters = bytes.substr(at, length);
      first = false;
      at += length + length % 2;
      if (at > bytes.size()) at = bytes.size();
    } while (isLong && more);
    elements.push_back(element);
    if (element.elementClass == 0 && element.id == 2) break;
  }
  whole = true;
  return elements;
}

}  // namespace core
