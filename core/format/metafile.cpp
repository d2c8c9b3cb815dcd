#include "core/format/metafile.h"

namespace core {
namespace {

uint32_t WordAt(const PartBytes& bytes, uint64_t at) {
  return static_cast<uint32_t>(bytes.At(at) << 8 | bytes.At(at + 1));
}

}  // namespace

// A head is a word: class, id and a length up to 30; 31 stands for words of length, each of one part, the
// highest bit of which says that another part follows.
std::vector<MetafileElement> WalkMetafile(const PartBytes& bytes, bool& whole) {
  constexpr uint32_t kLong = 31, kMore = 0x8000, kLength = 0x7FFF, kMost = 1 << 20;
  std::vector<MetafileElement> elements;
  uint64_t at = 0;
  whole = false;
  while (at + 2 <= bytes.Size() && elements.size() < kMost) {
    const uint32_t head = WordAt(bytes, at);
    MetafileElement element = {head >> 12, head >> 5 & 0x7F, at};
    uint32_t length = head & kLong;
    bool first = true, more = length == kLong, isLong = more;
    at += 2;
    do {
      if (isLong) {
        if (at + 2 > bytes.Size()) return elements;
        length = WordAt(bytes, at) & kLength;
        more = (WordAt(bytes, at) & kMore) != 0;
        at += 2;
      }
      if (length > bytes.Size() - at) return elements;
      if (first && length >= 2) element.word = static_cast<int32_t>(WordAt(bytes, at));
      first = false;
      at += length + length % 2;
      if (at > bytes.Size()) at = bytes.Size();
    } while (isLong && more);
    elements.push_back(element);
    if (element.elementClass == 0 && element.id == 2) break;
  }
  whole = true;
  return elements;
}

}  // namespace core
