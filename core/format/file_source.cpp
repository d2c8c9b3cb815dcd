#include "core/format/file_source.h"

#include <algorithm>

namespace core {

FileSource::FileSource(const FileBytes& file, uint64_t begin, uint64_t count)
    : source_(Make(file, begin, count)) {}

media::Source FileSource::Make(const FileBytes& file, uint64_t begin, uint64_t count) {
  constexpr uint64_t kHeldWhole = 1 << 20;
  begin = std::min(begin, file.Size());
  count = std::min(count, file.Size() - begin);
  if (count <= kHeldWhole) {
    held_ = file.At(begin, count);
    return media::Bytes(reinterpret_cast<const uint8_t*>(held_.data()), held_.size());
  }
  return {count, [this, &file, begin](uint64_t at, uint8_t* to, size_t bytes) {
            if (error_ != nullptr) return false;
            try {
              return file.Read(begin + at, to, bytes);
            } catch (...) {
              error_ = std::current_exception();
              return false;
            }
          }};
}

}  // namespace core
