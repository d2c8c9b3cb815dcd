#include "hostkit/kernel/read_windows.h"

#include <algorithm>

#include "hostkit/kernel/system_file.h"

namespace hostkit {
namespace {

constexpr size_t kLeast = 16 * 1024, kMost = 128 * 1024;
constexpr size_t kDirect = 64 * 1024;  // what is worth a call of its own

}  // namespace

int64_t ReadWindows::Read(int fd, int64_t position, uint8_t* buffer, size_t wanted) {
  Window* window = Find(position);
  if (window == nullptr) {
    if (wanted >= kDirect) return ReadAt(fd, buffer, wanted, position);
    if (!Fill(fd, position, wanted)) return -1;
    window = Find(position);
    if (window == nullptr) return 0;
  }
  const auto into = static_cast<size_t>(position - window->start);
  const size_t moved = std::min(wanted, window->held - into);
  std::memcpy(buffer, window->bytes.data() + into, moved);
  return static_cast<int64_t>(moved);
}

void ReadWindows::Forget() {
  for (Window& window : windows_) window.held = 0;
}

ReadWindows::Window* ReadWindows::Find(int64_t position) {
  for (size_t i = 0; i < windows_.size(); ++i) {
    const size_t n = (last_ + i) % windows_.size();
    if (!windows_[n].Holds(position)) continue;
    last_ = n;
    windows_[n].used = fills_;
    return &windows_[n];
  }
  return nullptr;
}

// The window unused for the longest time is filled. A step backwards takes what lies in front of the
// position, so that a scan from the end of a file costs no more than one from its start.
bool ReadWindows::Fill(int fd, int64_t position, size_t wanted) {
  size_t oldest = 0, size = std::max(kLeast, wanted);
  bool backwards = false;
  for (size_t n = 0; n < windows_.size(); ++n) {
    const Window& window = windows_[n];
    if (window.used < windows_[oldest].used) oldest = n;
    if (window.held == 0) continue;
    const int64_t gap = window.start - position;
    const bool isInFront = gap > 0 && gap <= static_cast<int64_t>(wanted);
    backwards = backwards || isInFront;
    if (isInFront || window.End() == position)
      size = std::max(size, std::min(2 * window.bytes.size(), kMost));
  }
  Window& window = windows_[last_ = oldest];
  window.used = ++fills_;
  window.held = 0;
  window.bytes.resize(size);
  window.start =
      backwards ? std::max<int64_t>(0, position - static_cast<int64_t>(size - wanted)) : position;
  // The system may give less than it was asked for, also in front of the position.
  while (window.held < size) {
    const int64_t got = ReadAt(fd, window.bytes.data() + window.held, size - window.held, window.End());
    if (got < 0) return window.Holds(position);
    if (got == 0) break;
    window.held += static_cast<size_t>(got);
  }
  return true;
}

}  // namespace hostkit
