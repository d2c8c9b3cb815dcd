// Long work that may be asked to end.
#pragma once

#include <exception>
#include <functional>

namespace core {

/// The work was asked to end; nothing is wrong with any file.
class StoppedWork : public std::exception {
 public:
  const char* what() const noexcept override { return "stopped"; }
};

/// While it lasts, work of its thread asks now and then whether it goes on. One inside another takes its
/// place.
class Interruption {
 public:
  explicit Interruption(std::function<bool()> goesOn);
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  /// Asks, where that was last done some time ago. StoppedWork when the answer is no, and from then on.
  static void Ask();

 private:
  std::function<bool()> goesOn_;
  bool isStopped_ = false;
  Interruption* before_;
};

}  // namespace core
