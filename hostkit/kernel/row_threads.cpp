#include "hostkit/kernel/row_threads.h"

#include <algorithm>
#include <system_error>
#include <thread>

namespace hostkit {

void ForRows(uint32_t rows, uint64_t bytes,
             const std::function<void(uint32_t first, uint32_t end)>& work) {
  constexpr uint64_t kWorthThread = 8 << 20;
  const bool shared = bytes >= kWorthThread && std::thread::hardware_concurrency() > 1;
  // Moving bytes keeps two cores busy; more would wait for memory.
  const uint32_t half = shared ? rows / 2 : 0;
  std::thread other;
  if (half != 0) {
    try {
      other = std::thread(work, 0, half);
    } catch (const std::system_error&) {
      work(0, half);  // no thread to be had
    } catch (const std::bad_alloc&) {
      work(0, half);
    }
  }
  work(half, rows);
  if (other.joinable()) other.join();
}

}  // namespace hostkit
