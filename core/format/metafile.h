// The elements of a CGM metafile in the binary encoding (ISO/IEC 8632-3).
#pragma once

#include <cstdint>
#include <vector>

#include "core/format/bytes.h"

namespace core {

struct MetafileElement {
  uint32_t elementClass, id;
  uint64_t offset;    ///< of its head
  int32_t word = -1;  ///< the first two bytes of its parameters; -1 where there are fewer
};
/// The elements up to the end of the bytes, or to one that does not fit: `whole` is false then.
std::vector<MetafileElement> WalkMetafile(const PartBytes& bytes, bool& whole);

}  // namespace core
