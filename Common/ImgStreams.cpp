#include "Common/ImgStreams.h"

#include <algorithm>

namespace {

constexpr uint8_t kStartOfImage[] = {0xFF, 0xD8, 0xFF};
constexpr uint32_t kMarkerBytes = sizeof kStartOfImage;
constexpr uint32_t kScanChunk = 1024;

// The first start of an image in [begin, end), or end. Entropy-coded bytes are rarely 0xFF.
const uint8_t* FindMarker(const uint8_t* begin, const uint8_t* end) {
  while (end - begin >= static_cast<ptrdiff_t>(kMarkerBytes)) {
    const auto room = static_cast<size_t>(end - begin) - (kMarkerBytes - 1);
    const auto* found = static_cast<const uint8_t*>(std::memchr(begin, kStartOfImage[0], room));
    if (found == nullptr) return end;
    if (std::memcmp(found, kStartOfImage, kMarkerBytes) == 0) return found;
    begin = found + 1;
  }
  return end;
}

}  // namespace

Status StreamFinder::FindNext(StreamPlace& place) {
  uint8_t chunk[kScanChunk];
  constexpr int64_t kStep = kScanChunk - kMarkerBytes;
  const int64_t start = position_ + source_.header.mask.IMDATOFF;
  // Chunks that lie wholly where an earlier search found nothing are passed over.
  const int64_t clean = std::max<int64_t>(0, cleanEnd_ - start - kScanChunk);
  for (int64_t scanned = clean / kStep * kStep; scanned < remaining_; scanned += kStep) {
    if (Status s = source_.ReadAt(start + scanned, chunk, kScanChunk); !Ok(s)) return s;
    const uint8_t* found = FindMarker(chunk + 1, std::end(chunk));
    if (found == std::end(chunk)) {
      cleanEnd_ = start + scanned + kScanChunk;
      continue;
    }
    place = {start, scanned + (found - chunk)};
    return place.length < remaining_ ? Status::Success : Status::ShortRead;
  }
  return Status::ShortRead;
}

Status StreamFinder::FindLast(StreamPlace& place) {
  if (!soughtLast_) {
    last_ = {};
    lastStatus_ = SearchLast(last_);
    soughtLast_ = true;
  }
  place = last_;
  return lastStatus_;
}

Status StreamFinder::FindRecorded(uint64_t n, uint64_t recordCount, StreamPlace& place) {
  const MaskTable& mask = source_.header.mask;
  for (uint64_t next = n + 1; next < recordCount; ++next) {
    if (!mask.HasBlock(next)) continue;
    place.offset = int64_t{mask.BlockRecord(n)} + mask.IMDATOFF;
    place.length = int64_t{mask.BlockRecord(next)} - mask.BlockRecord(n);
    return Status::Success;
  }
  return FindLast(place);
}

Status StreamFinder::SearchLast(StreamPlace& place) const {
  uint8_t chunk[kScanChunk];
  for (int64_t end = source_.length; end > 0; end -= kScanChunk) {
    const int64_t start = std::max<int64_t>(0, end - kScanChunk);
    const auto bytes = static_cast<uint32_t>(end - start);
    if (Status s = source_.ReadAt(start, chunk, bytes); !Ok(s)) return s;
    const uint8_t* found = std::find_end(chunk, chunk + bytes, kStartOfImage, std::end(kStartOfImage));
    if (found == chunk + bytes) continue;
    place.offset = start + (found - chunk);
    place.length = source_.length - place.offset;
    return Status::Success;
  }
  return Status::ShortRead;
}
