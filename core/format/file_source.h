// A part of a file that a decoder reads.
#pragma once

#include <exception>

#include "core/format/bytes.h"
#include "media/codecs/source.h"

namespace core {

/// Bytes of a file, which outlives this: few of them are held, many are read as a decoder goes on.
class FileSource {
 public:
  /// As much of the part as the file has. ReadError.
  FileSource(const FileBytes& file, uint64_t begin, uint64_t count);
  FileSource(const FileSource&) = delete;
  FileSource& operator=(const FileSource&) = delete;
  const media::Source& Get() const { return source_; }
  /// Throws what reading threw on the way, which no decoder lets through; nothing is read after that.
  void Check() const {
    if (error_ != nullptr) std::rethrow_exception(error_);
  }
  /// What decoding came to. The same.
  media::Outcome Checked(media::Outcome outcome) const {
    Check();
    return outcome;
  }

 private:
  media::Source Make(const FileBytes& file, uint64_t begin, uint64_t count);

  mutable std::exception_ptr error_;
  std::string held_;
  media::Source source_;
};

}  // namespace core
