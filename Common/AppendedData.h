// The data of a segment that a caller gave, as opposed to one whose data lies in the source file.
#pragma once

#include "Common/Owning.h"

struct AppendedData {
  KernelBuffer<uint8_t> bytes;
  bool present = false;

  /// Keeps a copy: -814 for null, -1; what was kept before stays then.
  Status Set(const void* from, uint32_t count, SourceTag where) {
    if (from == nullptr) return Status::NoData;
    KernelBuffer<uint8_t> copy;
    if (Status s = copy.Allocate(count, where); !Ok(s)) return s;
    KernelCopyMemory(copy.data(), from, count);
    bytes = std::move(copy);
    present = true;
    return Status::Success;
  }
};
