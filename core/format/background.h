// Work that another thread does.
#pragma once

#include <pthread.h>

#include <csignal>
#include <future>
#include <new>
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

/// Signals go to other threads while it lasts; threads that are begun meanwhile never take any.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    sigfillset(&all);
    (void)pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~SignalsBlocked() { (void)pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

/// Begins some work on a thread of its own, which no signal interrupts. None where there is no thread or
/// no memory for one: the work has not begun then.
template <class Work>
std::optional<std::future<std::invoke_result_t<Work>>> InBackground(Work work) {
  const SignalsBlocked blocked;
  try {
    return std::async(std::launch::async, std::move(work));
  } catch (const std::system_error&) {
    return std::nullopt;
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

}  // namespace core
