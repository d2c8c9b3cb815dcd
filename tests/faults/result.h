// What an injected failure answers where a host answers with a status.
#pragma once

#include <cstdint>

namespace faults {

inline constexpr int32_t kInjected = -77;

}  // namespace faults
