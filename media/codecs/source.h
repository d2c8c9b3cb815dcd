// Where a decoder takes its stream from.
#pragma once

#include <vector>

#include "media/codecs/stream.h"

namespace media {

/// A stream's bytes: in memory, or read piece by piece as a decoder asks for them.
class Source {
 public:
  /// Copies `count` bytes from a place on, which are there by the stream's size. False where they cannot
  /// be read. It must not throw: what calls it may be a C library.
  using Reader = std::function<bool(uint64_t at, uint8_t* to, size_t count)>;

  /// Bytes that the caller keeps where they are.
  Source(Bytes bytes) : memory_(bytes), size_(bytes.size()) {}
  Source(uint64_t size, Reader reader) : size_(size), reader_(std::move(reader)) {}

  uint64_t Size() const { return size_ - start_; }
  /// Copies the bytes from a place on; false where they are not all there or cannot be read.
  bool Read(uint64_t at, uint8_t* to, size_t count) const;
  /// What is behind a place.
  Source From(uint64_t at) const;
  /// All of it where it is in memory already; else nothing.
  Bytes Memory() const { return memory_.subspan(static_cast<size_t>(memory_.empty() ? 0 : start_)); }

 private:
  Bytes memory_;
  uint64_t start_ = 0, size_;
  Reader reader_;
};

/// A window of a source, which follows what is looked at.
class SourceBytes {
 public:
  explicit SourceBytes(const Source& source) : source_(source) {}
  uint64_t Size() const { return source_.Size(); }
  /// As many bytes from a place on, until the next call; null where they are not all there or cannot be
  /// read.
  const uint8_t* Get(uint64_t at, size_t count);
  /// The first place of some bytes from a place on; Size() for none.
  uint64_t Find(Bytes wanted, uint64_t from);

 private:
  const Source& source_;
  std::vector<uint8_t> window_;
  uint64_t first_ = 0;
};

}  // namespace media
