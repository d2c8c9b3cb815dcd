// The elements of a CGM metafile in the binary encoding (ISO/IEC 8632-3).
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace core {

struct MetafileElement {
  uint32_t elementClass, id;
  uint64_t offset;              ///< of its head
  std::string_view parameters;  ///< of its first part, where it has several
};
/// The elements up to the end of the bytes, or to one that does not fit: `whole` is false then.
std::vector<MetafileElement> WalkMetafile(std::string_view bytes, bool& whole);

}  // namespace core
