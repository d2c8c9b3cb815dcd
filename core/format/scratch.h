// Files for what does not fit into memory.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "core/format/bytes.h"

namespace core {

/// What is written does not reach its place.
class WriteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// By errno.
[[noreturn]] void FailToWrite();

/// A file without a name, for what does not fit into memory.
class ScratchFile {
 public:
  /// In a folder, or where that cannot be, in the system's one. WriteError.
  explicit ScratchFile(const std::string& folder);
  /// Writes at a place, also beyond the end. WriteError.
  void Write(uint64_t at, const void* bytes, size_t count);
  /// What was written at a place; zeros where nothing was. WriteError.
  void ReadBack(uint64_t at, void* bytes, size_t count);
  /// Makes it so long that the last bytes are zeros.
  void Extend(uint64_t size);
  uint64_t Size() const { return size_; }
  /// A descriptor of its own for what was written, which the caller closes. WriteError.
  int Open();
  /// What was written, for reading as long as this lives.
  const FileBytes& Bytes();

 private:
  void Flush();
  Descriptor descriptor_;
  uint64_t size_ = 0;
  std::string waiting_;  // bytes of one place that are written together
  uint64_t waitingAt_ = 0;
  std::unique_ptr<FileBytes> bytes_;
};

}  // namespace core
