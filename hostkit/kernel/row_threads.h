// Work on the rows of a large bitmap, on as many cores as there are.
#pragma once

#include <cstdint>
#include <functional>

namespace hostkit {

/// Calls `work` with stretches of rows [first, end) that together are all rows, on several threads where
/// `bytes` to move are worth it, and returns when all is done. `work` must not throw, nor use what
/// belongs to its thread.
void ForRows(uint32_t rows, uint64_t bytes,
             const std::function<void(uint32_t first, uint32_t end)>& work);

}  // namespace hostkit
