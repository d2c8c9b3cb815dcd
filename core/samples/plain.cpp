// Uncompressed samples of any depth and mode.
#include <algorithm>
#include <bit>
#include <cstring>

#include "core/samples/decoders.h"
#include "media/shuffle.h"

namespace core {

namespace {

// Words of the other byte order.
inline void TurnWords(const char* from, size_t step, uint8_t* to, size_t toStep, uint32_t count) {
  for (; count > 0; --count, from += step, to += toStep) {
    uint16_t number;
    std::memcpy(&number, from, sizeof number);
    number = static_cast<uint16_t>(number << 8 | number >> 8);
    std::memcpy(to, &number, sizeof number);
  }
}

// How a block's samples of some bands lie: one row behind the other, which hold a pixel's samples side by
// side or the bands one behind the other.
struct RowLayout {
  uint64_t offset;       ///< of the block's data, in bytes
  uint64_t first;        ///< sample of the block's first row
  uint64_t perRow;       ///< samples from a row to the next
  uint32_t perPixel;     ///< samples from a pixel to the next
  uint64_t perBand;      ///< samples from a band to the next
  uint32_t band, bands;  ///< that stand in a row
};
// Those of a block, as far as it is stored and wanted.
std::vector<RowLayout> LayoutsOf(const SampleSource& source, uint64_t block, const SampleTarget& target) {
  const Blocks& blocks = source.blocks;
  const auto width = static_cast<uint64_t>(blocks.width), count = static_cast<uint64_t>(blocks.Count());
  const uint32_t bands = target.Bands();
  std::vector<RowLayout> layouts;
  if (blocks.sequential) {
    for (uint32_t band = 0; band < bands; ++band) {
      if (!target.WantsBand(band)) continue;
      if (const auto offset = source.OffsetOf(band * count + block, blocks.BlockBytes()))
        layouts.push_back({*offset, 0, width, 1, 0, band, 1});
    }
    return layouts;
  }
  const auto offset = source.OffsetOf(block, blocks.BlockBytes());
  if (!offset) return layouts;
  const std::string_view mode = source.part.Text("IMODE");
  if (mode == "P") return {{*offset, 0, width * bands, bands, 1, 0, bands}};
  if (mode == "R") return {{*offset, 0, width * bands, 1, width, 0, bands}};
  for (uint32_t band = 0; band < bands; ++band) {
    if (target.WantsBand(band))
      layouts.push_back({*offset, band * blocks.PlaneSamples(), width, 1, 0, band, 1});
  }
  return layouts;
}

// One block of all bands. Rows are read as far as they are wanted, several at once where most of each is.
class BlockReader {
 public:
  BlockReader(const SampleSource& source, SampleTarget& target)
      : source_(source), target_(target), bits_(target.Image().bits) {}

  SampleFault Read(uint64_t block) {
    const Blocks& blocks = source_.blocks;
    const auto across = static_cast<uint64_t>(blocks.across), width = static_cast<uint64_t>(blocks.width),
               height = static_cast<uint64_t>(blocks.height);
    const uint64_t left = block % across * width, top = block / across * height;
    if (!target_.Wants(left, top, width, height)) return {};
    layouts_ = LayoutsOf(source_, block, target_);
    if (layouts_.empty()) return {};
    pieces_.resize(layouts_.size());
    left_ = static_cast<uint32_t>(left);
    top_ = static_cast<uint32_t>(top);
    first_ = std::max(left_, target_.Left());
    end_ = static_cast<uint32_t>(std::min<uint64_t>(left + width, target_.Right()));
    const auto bottom = static_cast<uint32_t>(std::min<uint64_t>(top + height, target_.Bottom()));
    for (uint32_t y = std::max(top_, target_.Top()); y < bottom;) {
      if (!target_.GoesOn(y - target_.Top(), target_.Bottom() - target_.Top())) return Stopped();
      if (!target_.WantsRow(y)) {
        ++y;
        continue;
      }
      const uint32_t rows = std::min(RowsAtOnce(), bottom - y);
      if (!ReadRows(y, rows))
        return {media::Outcome::ShortData, "the data ends in block " + std::to_string(block)};
      y += rows;
    }
    return {};
  }

 private:
  // Few where a row is long, one where most of it is not wanted or rows are left out.
  uint32_t RowsAtOnce() const {
    constexpr uint64_t kPiece = 256 << 10;
    const auto width = static_cast<uint64_t>(source_.blocks.width);
    if (target_.Skips() || uint64_t{end_ - first_} * 4 < width) return 1;
    const uint64_t rowBytes = width * target_.Bands() * bits_ / 8 + 1;
    return static_cast<uint32_t>(std::clamp<uint64_t>(kPiece / rowBytes, 1, 4096));
  }

  bool ReadRows(uint32_t y, uint32_t rows) {
    for (size_t i = 0; i < layouts_.size(); ++i) {
      if (!pieces_[i].Read(*this, layouts_[i], y, rows)) return false;
    }
    for (uint32_t row = 0; row < rows; ++row) {
      if (PutAsColour(y + row, row)) continue;
      for (size_t i = 0; i < layouts_.size(); ++i) PutRow(layouts_[i], pieces_[i], y + row, row);
    }
    return true;
  }

  // Bytes of some rows, from the first sample that is wanted to the last one.
  struct Piece {
    std::string bytes;
    uint64_t firstBit = 0;  ///< of the first row's first sample in the bytes
    uint64_t rowBits = 0;

    bool Read(const BlockReader& reader, const RowLayout& layout, uint32_t y, uint32_t rows) {
      const uint64_t bits = reader.bits_, wanted = reader.end_ - reader.first_;
      const uint64_t begin = layout.first + uint64_t{y - reader.top_} * layout.perRow +
                             uint64_t{reader.first_ - reader.left_} * layout.perPixel;
      const uint64_t last = (rows - 1) * layout.perRow + (wanted - 1) * layout.perPixel +
                            (layout.bands - 1) * layout.perBand + 1;
      const uint64_t at = layout.offset + begin * bits / 8, length = reader.source_.part.dataLength;
      firstBit = begin * bits % 8;
      rowBits = layout.perRow * bits;
      const uint64_t count = (firstBit + last * bits + 7) / 8;
      if (at > length || count > length - at) return false;
      bytes.resize(static_cast<size_t>(count));
      return reader.source_.survey.file.Read(reader.source_.part.dataOffset + at, bytes.data(),
                                             bytes.size());
    }
  };

  // Three wanted bands of bytes, in their order: as they stand, or one of each in turn.
  bool PutAsColour(uint32_t y, uint32_t row) {
    const bool isOnePiece = layouts_.size() == 1;
    if (bits_ != 8 || target_.Image().bands != 3 || target_.Bands() != 3 ||
        (!isOnePiece && layouts_.size() != 3) || (isOnePiece && layouts_[0].bands != 3))
      return false;
    uint8_t* to = target_.Run(first_, y, 0);
    if (to == nullptr || to + 1 != target_.Run(first_, y, 1) || to + 2 != target_.Run(first_, y, 2))
      return false;
    const uint8_t* bands[3];
    for (uint32_t band = 0; band < 3; ++band) {
      const size_t piece = isOnePiece ? 0 : band;
      bands[band] = reinterpret_cast<const uint8_t*>(pieces_[piece].bytes.data()) +
                    row * layouts_[piece].perRow + (isOnePiece ? band * layouts_[0].perBand : 0);
    }
    if (layouts_[0].perPixel == 3) {
      std::memcpy(to, bands[0], size_t{3} * (end_ - first_));
    } else {
      media::Interleave(bands[0], bands[1], bands[2], end_ - first_, to);
    }
    return true;
  }

  void PutRow(const RowLayout& layout, const Piece& piece, uint32_t y, uint32_t row) {
    for (uint32_t i = 0; i < layout.bands; ++i) {
      const uint32_t band = layout.band + i;
      if (!target_.WantsBand(band)) continue;
      uint64_t bit = piece.firstBit + row * piece.rowBits + i * layout.perBand * bits_;
      uint8_t* to = IsWholeBytes() ? target_.Run(first_, y, band) : nullptr;
      if (to != nullptr) {
        CopyRun(piece.bytes.data() + bit / 8, size_t{layout.perPixel} * bits_ / 8, to);
        continue;
      }
      to = target_.Image().sampleBytes <= 2 ? target_.Run(first_, y, band) : nullptr;
      if (to != nullptr) {
        UnpackRun(piece.bytes, bit, layout.perPixel, to);
        continue;
      }
      for (uint32_t x = first_; x < end_; ++x, bit += uint64_t{layout.perPixel} * bits_)
        target_.Put(x, y, band, Sample(BitsAt(piece.bytes, bit, bits_)));
    }
  }

  // Whether samples take as many bytes as they are kept in.
  bool IsWholeBytes() const { return bits_ == 8 * target_.Image().sampleBytes; }

  // Big-endian numbers in host order. A complex number is two.
  void CopyRun(const char* from, size_t step, uint8_t* to) const {
    const SampleImage& image = target_.Image();
    const uint32_t numbers = image.kind == SampleKind::Complex ? 2 : 1;
    const uint32_t bytes = image.sampleBytes / numbers;
    constexpr bool kTurns = std::endian::native == std::endian::little;
    const size_t toStep = image.PixelBytes();
    if (image.sampleBytes == 1 && step == 1 && toStep == 1)
      return static_cast<void>(std::memcpy(to, from, end_ - first_));
    if (image.sampleBytes == 2 && kTurns) {
      // The steps are numbers here, so that many samples are turned at once.
      if (step == 2 && toStep == 2) return TurnWords(from, 2, to, 2, end_ - first_);
      return TurnWords(from, step, to, toStep, end_ - first_);
    }
    for (uint32_t x = first_; x < end_; ++x, from += step, to += toStep) {
      if (image.sampleBytes == 1) {
        *to = static_cast<uint8_t>(*from);
        continue;
      }
      std::memcpy(to, from, image.sampleBytes);
      for (uint32_t n = 0; kTurns && n < numbers; ++n) std::reverse(to + n * bytes, to + (n + 1) * bytes);
    }
  }

  // Samples that begin anywhere in a byte.
  void UnpackRun(std::string_view bytes, uint64_t bit, uint32_t perPixel, uint8_t* to) const {
    const size_t toStep = target_.Image().PixelBytes();
    const bool isByte = target_.Image().sampleBytes == 1;
    uint32_t x = first_;
    // Whole bytes of bits.
    for (; bits_ == 1 && perPixel == 1 && toStep == 1 && bit % 8 == 0 && x + 8 <= end_;
         x += 8, bit += 8, to += 8)
      SpreadBits(static_cast<uint8_t>(bytes[static_cast<size_t>(bit / 8)]), to);
    if (bits_ == 12 && perPixel == 1 && toStep == 2 && bit % 8 == 0 && !IsSigned())
      x += SpreadTwelve(bytes.data() + bit / 8, end_ - x, bit, to);
    for (; x < end_; ++x, bit += uint64_t{perPixel} * bits_, to += toStep) {
      const auto value = static_cast<uint16_t>(Sample(BitsAt(bytes, bit, bits_)));
      isByte ? static_cast<void>(*to = static_cast<uint8_t>(value))
             : static_cast<void>(std::memcpy(to, &value, sizeof value));
    }
  }

  // Pairs of samples of twelve bits, as words. How many there were.
  static uint32_t SpreadTwelve(const char* from, uint32_t count, uint64_t& bit, uint8_t*& to) {
    const uint32_t pairs = count / 2;
    for (uint32_t i = 0; i < pairs; ++i, from += 3, to += 4) {
      const auto first = static_cast<uint8_t>(from[0]), middle = static_cast<uint8_t>(from[1]),
                 last = static_cast<uint8_t>(from[2]);
      const uint16_t words[2] = {static_cast<uint16_t>(first << 4 | middle >> 4),
                                 static_cast<uint16_t>((middle & 0xF) << 8 | last)};
      std::memcpy(to, words, sizeof words);
    }
    bit += uint64_t{pairs} * 24;
    return 2 * pairs;
  }

  bool IsSigned() const { return target_.Image().kind == SampleKind::Signed; }
  // Signed samples keep their sign where they take more bits than they have.
  uint64_t Sample(uint64_t bits) const {
    const bool negative = IsSigned() && (bits >> (bits_ - 1) & 1) != 0;
    return negative && bits_ < 64 ? bits | ~uint64_t{0} << bits_ : bits;
  }

  const SampleSource& source_;
  SampleTarget& target_;
  uint32_t bits_;
  uint32_t left_ = 0, top_ = 0, first_ = 0, end_ = 0;  // of the block, and of what is wanted of it
  std::vector<RowLayout> layouts_;
  std::vector<Piece> pieces_;  // of each layout
};

}  // namespace

SampleFault ReadPlain(const SampleSource& source, SampleTarget& target) {
  const Blocks& blocks = source.blocks;
  const auto count = static_cast<uint64_t>(blocks.Count());
  // What an unmasked image has to have is told before memory is taken for it.
  if (source.part.mask.blocks.empty() && blocks.Bytes() > source.part.dataLength)
    return {media::Outcome::ShortData, "the pixels take " + std::to_string(blocks.Bytes()) +
                                           " bytes, the data has " +
                                           std::to_string(source.part.dataLength)};
  if (SampleFault fault = target.Make(static_cast<uint64_t>(source.part.Number("NCOLS")),
                                      static_cast<uint64_t>(source.part.Number("NROWS")), false);
      fault.Met())
    return fault;
  BlockReader reader(source, target);
  for (uint64_t block = 0; block < count; ++block) {
    if (SampleFault fault = reader.Read(block); fault.Met()) return fault;
  }
  return {};
}

}  // namespace core
