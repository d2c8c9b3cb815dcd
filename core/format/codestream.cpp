#include "core/format/codestream.h"

#include <algorithm>

#include "core/format/words.h"

namespace core {
bool HasCodestream(const SurveyedPart& part) {
  return part.complete && IsOneOf(part.Text("IC"), "C8|M8");
}

Codestream ReadCodestream(const FileBytes& file, const SurveyedPart& part) {
  constexpr uint64_t kHead = 1 << 16;
  constexpr size_t kSizBody = 45, kFirstDepth = 42;
  Codestream stream;
  if (!HasCodestream(part)) return stream;
  const uint64_t start = part.IsMasked() ? part.mask.dataOffset : 0;
  if (start >= part.dataLength) return stream;
  const uint64_t length = part.dataLength - start;
  const std::string head = file.At(part.dataOffset + start, std::min(length, kHead));
  stream.begins = BigNumber(head, 0, 4) == 0xFF4FFF51 && head.size() > kSizBody;
  if (!stream.begins) return stream;
  // Sizes are those of the reference grid, of which the first component has every n-th point.
  const uint64_t across = std::max<uint64_t>(1, BigNumber(head, 43, 1)),
                 down = std::max<uint64_t>(1, BigNumber(head, 44, 1));
  const auto points = [](uint64_t end, uint64_t origin, uint64_t step) {
    return (end + step - 1) / step - (origin + step - 1) / step;
  };
  stream.width = points(BigNumber(head, 8, 4), BigNumber(head, 16, 4), across);
  stream.height = points(BigNumber(head, 12, 4), BigNumber(head, 20, 4), down);
  stream.tileWidth = BigNumber(head, 24, 4) / across;
  stream.tileHeight = BigNumber(head, 28, 4) / down;
  stream.components = BigNumber(head, 40, 2);
  for (size_t i = 0; i < stream.components && kFirstDepth + 3 * i < head.size(); ++i) {
    const uint64_t depth = (BigNumber(head, kFirstDepth + 3 * i, 1) & 0x7F) + 1;
    stream.least = i == 0 ? depth : std::min(stream.least, depth);
    stream.most = std::max(stream.most, depth);
  }
  // Fill may stand behind it.
  constexpr uint64_t kTail = 1024;
  const uint64_t tail = std::min(part.dataLength, kTail);
  const std::string end = file.At(part.dataOffset + part.dataLength - tail, tail);
  const size_t marker = end.rfind("\xFF\xD9");
  stream.ends = marker != std::string::npos &&
                end.find_first_not_of(std::string_view("\xFF\0", 2), marker + 2) == std::string::npos;
  return stream;
}

}  // namespace core
