// What the targets share.
#pragma once

#include <string>

#include "fuzz/targets.h"
#include "host/fileformat.h"
#include "hostkit/hostkit.h"
#include "orbntf/orbntf.h"

namespace fuzz {

/// A file that lies in memory and has a path.
class MemoryFile {
 public:
  MemoryFile();
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  void Fill(const void* data, size_t size);
  std::string Contents() const;
  const std::string& Path() const { return path_; }
  const char16_t* Wide() const { return wide_.c_str(); }

 private:
  int descriptor_;
  std::string path_;
  std::u16string wide_;
};

/// Takes bytes off the end of an input, so that files keep their beginning where they are changed.
class Choices {
 public:
  Choices(const uint8_t* data, size_t& size) : data_(data), size_(size) {}
  /// The next byte, 0 when there is none left.
  uint8_t Byte() { return size_ != 0 ? data_[--size_] : 0; }
  uint32_t Number() {
    uint32_t number = 0;
    for (int i = 0; i < 4; ++i) number = number << 8 | Byte();
    return number;
  }
  bool Any() const { return size_ != 0; }

 private:
  const uint8_t* data_;
  size_t& size_;
};

/// Begins a run: no messages, and limits on work and pixels that let runs end soon.
void Begin(size_t size);
/// Ends the process when something is still held.
void RequireNothingHeld();
/// Ends the process unless `what` holds.
void Require(bool holds, const char* what);

/// Draws a document that the API has open; frees the picture.
int32_t Draw(NitfHandle document);

}  // namespace fuzz
