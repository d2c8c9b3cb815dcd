// What is held of a file that is being read.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace hostkit {

/// Pieces of a file in memory: several, so that bands that lie far apart are read side by side. The piece
/// behind one that was read to its end is larger, up to a limit.
class ReadWindows {
 public:
  /// Reads some bytes at a position, as many as are at hand without another call of the system; 0 at the
  /// end of the file, -1 on failure. `wanted` is not 0. Throws std::bad_alloc.
  int64_t Read(int fd, int64_t position, uint8_t* buffer, size_t wanted);
  /// The file changes.
  void Forget();

 private:
  struct Window {
    std::vector<uint8_t> bytes;
    size_t held = 0;
    int64_t start = 0;
    uint64_t used = 0;  // when, counted in fills
    int64_t End() const { return start + static_cast<int64_t>(held); }
    bool Holds(int64_t position) const { return position >= start && position < End(); }
  };
  Window* Find(int64_t position);
  bool Fill(int fd, int64_t position, size_t wanted);

  std::array<Window, 8> windows_;
  size_t last_ = 0;
  uint64_t fills_ = 0;
};

}  // namespace hostkit
