#include "media/codecs/source.h"

#include <algorithm>
#include <cstring>

namespace media {

bool Source::Read(uint64_t at, uint8_t* to, size_t count) const {
  if (at > Size() || count > Size() - at) return false;
  if (count == 0) return true;
  if (reader_) return reader_(start_ + at, to, count);
  std::memcpy(to, memory_.data() + start_ + at, count);
  return true;
}

Source Source::From(uint64_t at) const {
  Source behind = *this;
  behind.start_ += std::min(at, Size());
  return behind;
}

const uint8_t* SourceBytes::Get(uint64_t at, size_t count) {
  constexpr size_t kWindow = 64 << 10;
  const Bytes memory = source_.Memory();
  if (at > Size() || count > Size() - at) return nullptr;
  if (!memory.empty()) return memory.data() + at;
  if (at < first_ || at + count > first_ + window_.size()) {
    window_.resize(static_cast<size_t>(std::min<uint64_t>(std::max(kWindow, count), Size() - at)));
    first_ = at;
    if (!source_.Read(at, window_.data(), window_.size())) {
      window_.clear();
      return nullptr;
    }
  }
  return window_.data() + (at - first_);
}

uint64_t SourceBytes::Find(Bytes wanted, uint64_t from) {
  constexpr size_t kStep = 64 << 10;
  while (from < Size() && wanted.size() <= Size() - from) {
    const auto count = static_cast<size_t>(std::min<uint64_t>(kStep, Size() - from));
    const uint8_t* bytes = Get(from, count);
    if (bytes == nullptr) break;
    const uint8_t* found = std::search(bytes, bytes + count, wanted.begin(), wanted.end());
    if (found != bytes + count) return from + static_cast<uint64_t>(found - bytes);
    from += count == Size() - from ? count : count - (wanted.size() - 1);
  }
  return Size();
}

}  // namespace media
