#include "core/format/jpeg_stream.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "core/format/blocks.h"

namespace core {
namespace {

constexpr uint8_t kSoi = 0xD8, kEoi = 0xD9, kSos = 0xDA, kDqt = 0xDB, kDri = 0xDD, kDht = 0xC4,
                  kDac = 0xCC, kJpg = 0xC8, kApp6 = 0xE6;

class Walker {
 public:
  // The stream that begins at `start` of the bytes and ends before `end`.
  Walker(const PartBytes& bytes, uint64_t start, uint64_t end)
      : bytes_(bytes), start_(start), size_(end - start) {}

  JpegStream Walk() {
    while (at_ < size_ && Byte(at_) == 0xFF && at_ + 1 < size_ && Byte(at_ + 1) == 0xFF) ++at_;
    stream_.fill = at_;
    stream_.begins = NextMarker() == kSoi;
    if (!stream_.begins) return stream_;
    for (uint8_t marker = NextMarker(); marker != 0; marker = NextMarker()) {
      if (marker == kEoi) {
        stream_.ends = true;
        break;
      }
      if (!TakeSegment(marker)) break;
    }
    stream_.size = at_;
    return stream_;
  }

 private:
  uint8_t Byte(uint64_t at) const { return bytes_.At(start_ + at); }
  uint32_t Word(uint64_t at) const { return static_cast<uint32_t>(Byte(at) << 8 | Byte(at + 1)); }

  // The code of the marker here, behind any fill; 0 when there is none.
  uint8_t NextMarker() {
    if (at_ + 1 >= size_ || Byte(at_) != 0xFF) return 0;
    while (at_ + 1 < size_ && Byte(at_ + 1) == 0xFF) ++at_;
    if (at_ + 1 >= size_) return 0;
    at_ += 2;
    return Byte(at_ - 1);
  }

  bool TakeSegment(uint8_t marker) {
    if (at_ + 2 > size_) return false;
    const uint32_t length = Word(at_);
    if (length < 2 || length > size_ - at_) return false;
    const std::string segment = bytes_.Piece(start_ + at_ + 2, length - 2);
    const std::string_view body = segment;
    const bool isFrame =
        marker >= 0xC0 && marker <= 0xCF && marker != kDht && marker != kJpg && marker != kDac;
    if (isFrame) TakeFrame(marker, body);
    if (marker == kDqt) TakeTables(body, quantised_, 64, 128);
    if (marker == kDht) TakeCodes(body);
    if (marker == kDri && body.size() >= 2) stream_.interval = Word(at_ + 2);
    if (marker == kApp6 && body.substr(0, 4) == "NITF") stream_.hasApplication = true;
    at_ += length;
    if (marker == kSos) {
      CheckTables(body);
      TakeScan();
    }
    return true;
  }

  void TakeFrame(uint8_t marker, std::string_view body) {
    if (body.size() < 6 || stream_.hasFrame) return;
    const uint64_t at = at_ + 2;
    stream_.hasFrame = true;
    stream_.frame = marker;
    stream_.precision = Byte(at);
    stream_.height = Word(at + 1);
    stream_.width = Word(at + 3);
    stream_.components = Byte(at + 5);
    for (size_t i = 0; i < stream_.components && 6 + 3 * i + 2 < body.size(); ++i) {
      const uint8_t factors = static_cast<uint8_t>(body[6 + 3 * i + 1]);
      stream_.maxAcross = std::max<uint32_t>(stream_.maxAcross, factors >> 4);
      stream_.maxDown = std::max<uint32_t>(stream_.maxDown, factors & 15);
      tableOf_[static_cast<uint8_t>(body[6 + 3 * i])] = static_cast<uint8_t>(body[6 + 3 * i + 2]) & 3;
    }
  }

  // Quantisation tables of 8 or 16 bits an entry.
  static void TakeTables(std::string_view body, bool (&defined)[4], size_t narrow, size_t wide) {
    while (!body.empty()) {
      const auto head = static_cast<uint8_t>(body[0]);
      defined[head & 3] = true;
      body.remove_prefix(std::min(body.size(), 1 + (head >> 4 != 0 ? wide : narrow)));
    }
  }

  void TakeCodes(std::string_view body) {
    constexpr size_t kCounts = 17;
    while (body.size() >= kCounts) {
      const auto head = static_cast<uint8_t>(body[0]);
      codes_[head >> 4 & 1][head & 3] = true;
      size_t values = 0;
      for (size_t i = 1; i < kCounts; ++i) values += static_cast<uint8_t>(body[i]);
      body.remove_prefix(std::min(body.size(), kCounts + values));
    }
  }

  // Progressive scans refine: of those only the quantisation is asked.
  void CheckTables(std::string_view body) {
    if (body.empty() || !stream_.hasFrame || stream_.frame >= 0xC9) return;
    const size_t components = static_cast<uint8_t>(body[0]);
    const bool sequential = stream_.frame == 0xC0 || stream_.frame == 0xC1;
    for (size_t i = 0; i < components && 2 + 2 * i < body.size(); ++i) {
      const auto selectors = static_cast<uint8_t>(body[2 + 2 * i]);
      if ((sequential || stream_.IsLossless()) && !codes_[0][selectors >> 4 & 3])
        stream_.missing = "Huffman";
      if (sequential && !codes_[1][selectors & 3]) stream_.missing = "Huffman";
      if (!stream_.IsLossless() && !quantised_[tableOf_[static_cast<uint8_t>(body[1 + 2 * i])]])
        stream_.missing = "quantisation";
    }
  }

  // Codes up to the next marker that is no restart.
  void TakeScan() {
    stream_.hasScan = true;
    ++stream_.scans;
    uint8_t next = 0xD0;
    while (at_ + 1 < size_) {
      const uint64_t found = bytes_.Find(0xFF, start_ + at_) - start_;
      if (found + 1 >= size_) {
        at_ = size_;
        return;
      }
      const uint8_t code = Byte(found + 1);
      if (code == 0 || code == 0xFF || (code >= 0xD0 && code <= 0xD7)) {
        if (code >= 0xD0 && code <= 0xD7) {
          ++stream_.restarts;
          stream_.restartsInOrder = stream_.restartsInOrder && code == next;
          next = static_cast<uint8_t>(0xD0 | ((code + 1) & 7));
        }
        at_ = found + (code == 0xFF ? 1 : 2);
        continue;
      }
      at_ = found;
      return;
    }
  }

  const PartBytes& bytes_;
  uint64_t start_, size_;
  uint64_t at_ = 0;
  JpegStream stream_;
  bool quantised_[4] = {};
  bool codes_[2][4] = {};
  uint8_t tableOf_[256] = {};
};

}  // namespace

uint64_t JpegStream::Units() const {
  const uint32_t side = IsLossless() ? 1 : 8;
  const bool single = components == 1;
  const uint32_t across = side * (single ? 1 : maxAcross), down = side * (single ? 1 : maxDown);
  return uint64_t{(width + across - 1) / across} * ((height + down - 1) / down);
}

namespace {

JpegStream WalkJpeg(const PartBytes& data, uint64_t start, uint64_t end) {
  return Walker(data, start, end).Walk();
}

// A stream for every record. Each place is walked once, up to the next one: records may be many, and may
// all say the same.
std::vector<FoundJpeg> FindRecorded(const std::vector<uint32_t>& records, const PartBytes& data,
                                    uint64_t start) {
  std::map<uint32_t, JpegStream> places;
  for (const uint32_t record : records) {
    if (record != kNoRecord && record < data.Size() - start) places.emplace(record, JpegStream());
  }
  for (auto place = places.begin(); place != places.end(); ++place) {
    const auto next = std::next(place);
    const uint64_t end = next != places.end() ? start + next->first : data.Size();
    place->second = WalkJpeg(data, start + place->first, end);
  }
  std::vector<FoundJpeg> streams;
  for (size_t n = 0; n < records.size(); ++n) {
    const auto place = places.find(records[n]);
    if (place != places.end()) streams.push_back({n, start + records[n], place->second});
  }
  return streams;
}

}  // namespace

std::vector<FoundJpeg> FindJpegStreams(const FileBytes& file, const SurveyedPart& part) {
  const PartBytes data(file, part.dataOffset, part.dataLength);
  const uint64_t start = std::min<uint64_t>(part.IsMasked() ? part.mask.dataOffset : 0, data.Size());
  if (!part.mask.blocks.empty()) return FindRecorded(part.mask.blocks, data, start);
  const Blocks blocks(part);
  const uint64_t wanted =
      blocks.Known() ? static_cast<uint64_t>(blocks.Count() * (blocks.sequential ? blocks.bands : 1)) : 1;
  std::vector<FoundJpeg> streams;
  // One more tells that there are too many.
  for (uint64_t at = start; at < data.Size() && streams.size() <= wanted;) {
    const JpegStream stream = WalkJpeg(data, at, data.Size());
    streams.push_back({streams.size(), at, stream});
    if (stream.size == 0 || !stream.ends) break;
    at += stream.size;
    // Fill behind the last one is no stream.
    if (data.SkipFill(at) == data.Size()) break;
  }
  return streams;
}

}  // namespace core
