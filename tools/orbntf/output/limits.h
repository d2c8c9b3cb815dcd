// How long a command may take, and how much memory.
#pragma once

#include <cstdint>
#include <string>

namespace tool {

/// Ends the program after so many seconds, 0 for none, as a signal would, with a sentence and the exit
/// code 1; lets it have so much memory: bytes, or "512M" with K, M or G, empty for no limit. What is
/// wrong with them; empty for nothing.
std::string TakeLimits(uint32_t seconds, const std::string& memory);

}  // namespace tool
