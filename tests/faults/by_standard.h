// Drawing by the published standard's word, which no export does.
#pragma once

#include <cstdint>

namespace faults {

/// Draws a file; the status.
int32_t DrawByStandard(const char16_t* path);

}  // namespace faults
