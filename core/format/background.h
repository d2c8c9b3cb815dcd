// Work that another thread does.
#pragma once

#include <pthread.h>

#include <csignal>
#include <future>
#include <optional>
#include <system_error>
#include <thread>
#include <type_traits>
#include <utility>

namespace core {

/// Whether there is a core beside the one that asks.
inline bool HasSecondCore() {
  static const bool has = std::thread::hardware_concurrency() > 1;
  return has;
}

/// Begins some work on a thread of its own, which no signal interrupts. None where there is no thread to
/// be had: the work has not begun then.
template <class Work>
std::optional<std::future<std::invoke_result_t<Work>>> InBackground(Work work) {
  sigset_t all, before;
  sigfillset(&all);
  (void)pthread_sigmask(SIG_SETMASK, &all, &before);
  std::optional<std::future<std::invoke_result_t<Work>>> begun;
  try {
    begun = std::async(std::launch::async, std::move(work));
  } catch (const std::system_error&) {
    begun.reset();
  }
  (void)pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return begun;
}

}  // namespace core
