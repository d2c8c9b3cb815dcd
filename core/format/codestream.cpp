#include "core/format/codestream.h"

#include <algorithm>

#include "core/format/words.h"

namespace core {
namespace {

constexpr uint32_t kSoc = 0xFF4F, kSiz = 0xFF51, kCod = 0xFF52, kTlm = 0xFF55, kPlm = 0xFF57,
                   kPlt = 0xFF58, kQcd = 0xFF5C, kSot = 0xFF90, kSod = 0xFF93, kEoc = 0xFFD9;

// Goes over the markers of a codestream, which is read as it is asked for.
class CodestreamWalk {
 public:
  CodestreamWalk(const PartBytes& bytes, uint64_t start, Codestream& stream)
      : bytes_(bytes), at_(start), stream_(stream) {}

  void Run() {
    if (!TakeSize()) return;
    if (!TakeMainHeader()) return;
    TakeParts();
  }

 private:
  uint64_t Number(uint64_t at, size_t count) const {
    return at <= bytes_.Size() && count <= bytes_.Size() - at ? BigNumber(bytes_.Piece(at, count)) : 0;
  }
  void Fail(uint64_t at, const std::string& words) {
    if (stream_.parts.words.empty()) stream_.parts = {at, words};
  }

  bool TakeSize() {
    constexpr uint64_t kLeast = 46;
    stream_.begins =
        Number(at_, 2) == kSoc && Number(at_ + 2, 2) == kSiz && bytes_.Size() - at_ >= kLeast;
    if (!stream_.begins) return false;
    const uint64_t grid = at_ + 8;
    const auto side = [&](uint64_t n) { return Number(grid + 4 * n, 4); };
    const uint64_t right = side(0), bottom = side(1), left = side(2), top = side(3);
    stream_.width = right - std::min(right, left);
    stream_.height = bottom - std::min(bottom, top);
    stream_.tileWidth = side(4);
    stream_.tileHeight = side(5);
    stream_.beginsElsewhere = side(6) != left || side(7) != top;
    const auto tiles = [](uint64_t end, uint64_t first, uint64_t size) {
      return size != 0 && end > first ? (end - first + size - 1) / size : 0;
    };
    stream_.tilesAcross = tiles(right, side(6), stream_.tileWidth);
    stream_.tilesDown = tiles(bottom, side(7), stream_.tileHeight);
    stream_.components = Number(at_ + 40, 2);
    const std::string depths = bytes_.Piece(at_ + 42, 3 * stream_.components);
    uint64_t across = 0, down = 0;  // points of the grid to a pixel of the finest component
    for (size_t i = 0; 3 * i + 2 < depths.size(); ++i) {
      const uint64_t depth = (static_cast<uint8_t>(depths[3 * i]) & 0x7Fu) + 1;
      stream_.least = i == 0 ? depth : std::min(stream_.least, depth);
      stream_.most = std::max(stream_.most, depth);
      across = std::min<uint64_t>(i == 0 ? 255 : across, static_cast<uint8_t>(depths[3 * i + 1]));
      down = std::min<uint64_t>(i == 0 ? 255 : down, static_cast<uint8_t>(depths[3 * i + 2]));
    }
    TakePixels(std::max<uint64_t>(1, across), std::max<uint64_t>(1, down), left, top);
    at_ += 2;
    return true;
  }

  // From points of the reference grid to pixels.
  void TakePixels(uint64_t across, uint64_t down, uint64_t left, uint64_t top) {
    const auto pixels = [](uint64_t first, uint64_t count, uint64_t step) {
      return (first + count + step - 1) / step - (first + step - 1) / step;
    };
    stream_.width = pixels(left, stream_.width, across);
    stream_.height = pixels(top, stream_.height, down);
    stream_.tileWidth /= across;
    stream_.tileHeight /= down;
  }

  // Up to the first tile part; false where there is none.
  bool TakeMainHeader() {
    for (;;) {
      const auto marker = static_cast<uint32_t>(Number(at_, 2));
      if (marker == kSot || marker == kEoc) return marker == kSot;
      const uint64_t length = Number(at_ + 2, 2);
      if (marker < 0xFF00 || length < 2 || length + 2 > bytes_.Size() - at_) {
        Fail(at_, "its main header does not end");
        return false;
      }
      if (marker == kCod) TakeStyle();
      stream_.hasQuantisation = stream_.hasQuantisation || marker == kQcd;
      stream_.hasLengths = stream_.hasLengths || marker == kTlm || marker == kPlm;
      at_ += 2 + length;
    }
  }

  void TakeStyle() {
    stream_.hasStyle = true;
    stream_.progression = static_cast<uint32_t>(Number(at_ + 5, 1));
    stream_.layers = Number(at_ + 6, 2);
    stream_.levels = Number(at_ + 9, 1);
    stream_.isReversible = Number(at_ + 13, 1) == 1;
  }

  // The heads of tile parts, each of which says how long it is.
  void TakeParts() {
    constexpr uint64_t kMostTiles = 65535, kMostParts = 1000000;
    std::vector<bool> seen(static_cast<size_t>(std::min(stream_.Tiles(), kMostTiles)));
    uint64_t parts = 0;
    for (; Number(at_, 2) == kSot && parts < kMostParts; ++parts) {
      const uint64_t tile = Number(at_ + 4, 2), length = Number(at_ + 6, 4);
      if (tile >= seen.size())
        return Fail(at_, "tile part " + std::to_string(parts) + " is of tile " + std::to_string(tile) +
                             ", of " + std::to_string(seen.size()));
      seen[static_cast<size_t>(tile)] = true;
      if (!TakePartHeader(parts)) return;
      if (length == 0) {
        at_ = bytes_.Size();
        break;
      }
      if (length < 14 || length > bytes_.Size() - at_)
        return Fail(at_, "tile part " + std::to_string(parts) + " reaches past the end");
      at_ += length;
    }
    stream_.tilesMissing = static_cast<uint64_t>(std::count(seen.begin(), seen.end(), false));
    if (at_ < bytes_.Size() && parts < kMostParts && Number(at_, 2) != kEoc)
      Fail(at_, "behind tile part " + std::to_string(parts == 0 ? 0 : parts - 1) +
                    " stands neither another one nor the end");
  }

  // What stands between a tile part's first marker and its data.
  bool TakePartHeader(uint64_t part) {
    for (uint64_t at = at_ + 12;;) {
      const auto marker = static_cast<uint32_t>(Number(at, 2));
      if (marker == kSod) return true;
      const uint64_t length = Number(at + 2, 2);
      if (marker < 0xFF00 || length < 2 || length + 2 > bytes_.Size() - at) {
        Fail(at, "the header of tile part " + std::to_string(part) + " does not end");
        return false;
      }
      stream_.hasLengths = stream_.hasLengths || marker == kPlt;
      at += 2 + length;
    }
  }

  const PartBytes& bytes_;
  uint64_t at_;
  Codestream& stream_;
};

// Fill may stand behind the end marker.
bool Ends(const PartBytes& bytes) {
  constexpr uint64_t kTail = 1024;
  const uint64_t tail = std::min(bytes.Size(), kTail);
  const std::string end = bytes.Piece(bytes.Size() - tail, tail);
  const size_t marker = end.rfind("\xFF\xD9");
  return marker != std::string::npos &&
         end.find_first_not_of(std::string_view("\xFF\0", 2), marker + 2) == std::string::npos;
}

}  // namespace

bool HasCodestream(const SurveyedPart& part) {
  return part.complete && IsOneOf(part.Text("IC"), "C8|M8");
}

Codestream ReadCodestream(const FileBytes& file, const SurveyedPart& part) {
  Codestream stream;
  if (!HasCodestream(part)) return stream;
  const PartBytes bytes(file, part.dataOffset, part.dataLength);
  uint64_t start = part.IsMasked() ? part.mask.dataOffset : 0;
  if (start >= bytes.Size()) return stream;
  constexpr uint64_t kSearched = 1 << 16;
  if (bytes.Piece(start + 4, 4) == "jP  ") {
    const size_t found = bytes.Piece(start, kSearched).find("\xFF\x4F\xFF\x51");
    stream.isWrapped = found != std::string::npos;
    if (stream.isWrapped) start += found;
  }
  CodestreamWalk(bytes, start, stream).Run();
  stream.ends = stream.begins && (stream.isWrapped || Ends(bytes));
  return stream;
}

}  // namespace core
