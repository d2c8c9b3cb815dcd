// Uncompressed samples of any depth and mode, and facsimile.
#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "core/samples/decoders.h"
#include "media/codecs/facsimile.h"
#include "media/shuffle.h"

namespace core {

// A single stream that is decoded row by row.
struct FacsimileRun {
  std::unique_ptr<media::FacsimileRows> rows;
};

namespace {

// The bits of a byte, the highest one first, as bytes.
void SpreadBits(uint8_t bits, uint8_t* to) {
  for (uint32_t i = 0; i < 8; ++i) to[i] = bits >> (7 - i) & 1;
}

// How a block's samples of some bands lie: one row behind the other, which hold a pixel's samples side by
// side or the bands one behind the other.
struct RowLayout {
  uint64_t first;        ///< sample of the block's first row
  uint64_t perRow;       ///< samples from a row to the next
  uint32_t perPixel;     ///< samples from a pixel to the next
  uint64_t perBand;      ///< samples from a band to the next
  uint32_t band, bands;  ///< that stand in a row
};
std::vector<RowLayout> LayoutsOf(const SampleSource& source, uint32_t bands) {
  const auto width = static_cast<uint64_t>(source.blocks.width);
  const std::string_view mode = source.part.Text("IMODE");
  if (mode == "P") return {{0, width * bands, bands, 1, 0, bands}};
  if (mode == "R") return {{0, width * bands, 1, width, 0, bands}};
  std::vector<RowLayout> layouts;
  for (uint32_t band = 0; band < (mode == "S" ? 1 : bands); ++band)
    layouts.push_back({band * source.blocks.PlaneSamples(), width, 1, 0, band, 1});
  return layouts;
}

// One block: of all bands, or of IMODE S of one. Rows are read as far as they are wanted, several at once
// where most of each is.
class BlockReader {
 public:
  BlockReader(const SampleSource& source, SampleTarget& target)
      : source_(source), target_(target), bits_(target.Image().bits) {}

  SampleFault Read(uint64_t block, uint64_t offset, uint32_t firstBand) {
    const Blocks& blocks = source_.blocks;
    const auto across = static_cast<uint64_t>(blocks.across), width = static_cast<uint64_t>(blocks.width),
               height = static_cast<uint64_t>(blocks.height);
    const uint64_t left = block % across * width, top = block / across * height;
    if (!target_.Wants(left, top, width, height)) return {};
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
      if (!ReadRows(offset, y, rows, firstBand))
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

  bool ReadRows(uint64_t offset, uint32_t y, uint32_t rows, uint32_t firstBand) {
    std::vector<RowLayout> layouts = LayoutsOf(source_, target_.Bands());
    pieces_.resize(layouts.size());
    for (size_t i = 0; i < layouts.size(); ++i) {
      layouts[i].band += firstBand;
      if (IsWanted(layouts[i]) && !pieces_[i].Read(*this, layouts[i], offset, y, rows)) return false;
    }
    for (uint32_t row = 0; row < rows; ++row) {
      if (PutAsColour(layouts, y + row, row)) continue;
      for (size_t i = 0; i < layouts.size(); ++i) {
        if (IsWanted(layouts[i])) PutRow(layouts[i], pieces_[i], y + row, row);
      }
    }
    return true;
  }

  bool IsWanted(const RowLayout& layout) const {
    for (uint32_t band = layout.band; band < layout.band + layout.bands; ++band) {
      if (target_.WantsBand(band)) return true;
    }
    return false;
  }

  // Bytes of some rows, from the first sample that is wanted to the last one.
  struct Piece {
    std::string bytes;
    uint64_t firstBit = 0;  ///< of the first row's first sample in the bytes
    uint64_t rowBits = 0;

    bool Read(const BlockReader& reader, const RowLayout& layout, uint64_t offset, uint32_t y,
              uint32_t rows) {
      const uint64_t bits = reader.bits_, wanted = reader.end_ - reader.first_;
      const uint64_t begin = layout.first + uint64_t{y - reader.top_} * layout.perRow +
                             uint64_t{reader.first_ - reader.left_} * layout.perPixel;
      const uint64_t last = (rows - 1) * layout.perRow + (wanted - 1) * layout.perPixel +
                            (layout.bands - 1) * layout.perBand + 1;
      const uint64_t at = offset + begin * bits / 8, length = reader.source_.part.dataLength;
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
  bool PutAsColour(const std::vector<RowLayout>& layouts, uint32_t y, uint32_t row) {
    if (bits_ != 8 || target_.Image().bands != 3 || target_.Bands() != 3 || source_.blocks.sequential)
      return false;
    uint8_t* to = target_.Run(first_, y, 0);
    if (to == nullptr || to + 1 != target_.Run(first_, y, 1) || to + 2 != target_.Run(first_, y, 2))
      return false;
    const uint8_t* bands[3];
    for (uint32_t band = 0; band < 3; ++band) {
      const size_t piece = layouts.size() == 1 ? 0 : band;
      bands[band] = reinterpret_cast<const uint8_t*>(pieces_[piece].bytes.data()) +
                    row * layouts[piece].perRow + (layouts.size() == 1 ? band * layouts[0].perBand : 0);
    }
    if (layouts[0].perPixel == 3) {
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
      for (uint32_t x = first_; x < end_; ++x, from += step, to += toStep) {
        uint16_t number;
        std::memcpy(&number, from, sizeof number);
        number = static_cast<uint16_t>(number << 8 | number >> 8);
        std::memcpy(to, &number, sizeof number);
      }
      return;
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
    for (; x < end_; ++x, bit += uint64_t{perPixel} * bits_, to += toStep) {
      const auto value = static_cast<uint16_t>(Sample(BitsAt(bytes, bit, bits_)));
      isByte ? static_cast<void>(*to = static_cast<uint8_t>(value))
             : static_cast<void>(std::memcpy(to, &value, sizeof value));
    }
  }

  // Signed samples keep their sign where they take more bits than they have.
  uint64_t Sample(uint64_t bits) const {
    const bool negative = target_.Image().kind == SampleKind::Signed && (bits >> (bits_ - 1) & 1) != 0;
    return negative && bits_ < 64 ? bits | ~uint64_t{0} << bits_ : bits;
  }

  const SampleSource& source_;
  SampleTarget& target_;
  uint32_t bits_;
  uint32_t left_ = 0, top_ = 0, first_ = 0, end_ = 0;  // of the block, and of what is wanted of it
  std::vector<Piece> pieces_;
};

// Puts a row of a decoded block to its place.
void PutRow(std::span<const uint8_t> row, const media::FacsimileForm& form, uint64_t block, uint32_t y,
            int64_t across, SampleTarget& target) {
  const auto inRow = static_cast<uint64_t>(across);
  const auto left = static_cast<uint32_t>(block % inRow * form.width),
             top = static_cast<uint32_t>(block / inRow * form.height);
  uint8_t* to =
      target.WantsRow(top + y) && left == target.Left() ? target.Run(left, top + y, 0) : nullptr;
  uint32_t x = 0;
  const uint32_t end = std::min(form.width, target.Right() - std::min(target.Right(), left));
  for (; to != nullptr && x + 8 <= end; x += 8, to += 8) SpreadBits(row[x / 8], to);
  for (; x < end; ++x) target.Put(left + x, top + y, 0, row[x / 8] >> (7 - x % 8) & 1u);
}

// Whether any of the blocks that a place has the data of is wanted.
bool IsWanted(const std::vector<uint64_t>& numbers, const media::FacsimileForm& form, int64_t across,
              const SampleTarget& target) {
  const auto inRow = static_cast<uint64_t>(across);
  return std::any_of(numbers.begin(), numbers.end(), [&](uint64_t block) {
    return target.Wants(block % inRow * form.width, block / inRow * form.height, form.width, form.height);
  });
}

// Decodes the stream of one or several equal blocks, as far as rows are wanted: all of it with the
// image's last row.
SampleFault ReadFacsimileBlocks(const SampleSource& source, media::FacsimileRows& rows,
                                const media::FacsimileForm& form, const std::vector<uint64_t>& blocks,
                                SampleTarget& target) {
  const bool isAlone = source.blocks.Count() == 1;
  const bool isWhole = !isAlone || target.Bottom() >= static_cast<uint64_t>(source.part.Number("NROWS"));
  const uint32_t end = isWhole ? form.height : std::min(form.height, target.Bottom());
  std::span<const uint8_t> row;
  while (rows.Position() < end && rows.Next(row)) {
    for (const uint64_t block : blocks)
      PutRow(row, form, block, rows.Position() - 1, source.blocks.across, target);
  }
  if (rows.Position() == 0) return {media::Outcome::BadData, "no row decodes"};
  if (rows.Position() < end)
    return {media::Outcome::BadData,
            "of " + std::to_string(form.height) + " rows " + std::to_string(rows.Position()) + " decode"};
  return {};
}

// Opens the stream of blocks, or goes on with it where it was left above what is wanted.
SampleFault OpenFacsimile(const SampleSource& source, const media::FacsimileForm& form, uint64_t begin,
                          uint64_t end, const SampleTarget& target, std::shared_ptr<FacsimileRun>& run) {
  const bool isKept = source.cache != nullptr && source.blocks.Count() == 1;
  if (isKept && source.cache->facsimile != nullptr &&
      source.cache->facsimile->rows->Position() <= target.Top()) {
    run = source.cache->facsimile;
    return {};
  }
  run = std::make_shared<FacsimileRun>();
  const std::string data = source.survey.file.At(source.part.dataOffset + begin, end - begin);
  const media::Outcome outcome = media::FacsimileRows::Open(
      {reinterpret_cast<const uint8_t*>(data.data()), data.size()}, form, run->rows);
  if (outcome == media::Outcome::BadData) return {outcome, "no row decodes"};
  if (outcome != media::Outcome::Ok) return FaultOf(outcome, "the facsimile");
  if (isKept) source.cache->facsimile = run;
  return {};
}

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
  const uint32_t planes = blocks.sequential ? target.Bands() : 1;
  BlockReader reader(source, target);
  for (uint32_t plane = 0; plane < planes; ++plane) {
    if (blocks.sequential && !target.WantsBand(plane)) continue;
    for (uint64_t block = 0; block < count; ++block) {
      const auto offset = source.OffsetOf(plane * count + block, blocks.BlockBytes());
      if (!offset) continue;
      if (SampleFault fault = reader.Read(block, *offset, plane); fault.Met()) return fault;
    }
  }
  return {};
}

SampleFault ReadFacsimile(const SampleSource& source, SampleTarget& target) {
  constexpr int64_t kMostSide = 1 << 20;
  const Blocks& blocks = source.blocks;
  if (target.Image().bits != 1 || target.Bands() != 1 || blocks.width > kMostSide ||
      blocks.height > kMostSide)
    return {media::Outcome::Unsupported, "a facsimile of " + std::to_string(blocks.width) + " x " +
                                             std::to_string(blocks.height) + " samples"};
  if (SampleFault fault = target.Make(static_cast<uint64_t>(source.part.Number("NCOLS")),
                                      static_cast<uint64_t>(source.part.Number("NROWS")), false);
      fault.Met())
    return fault;
  const media::FacsimileForm form = {static_cast<uint32_t>(blocks.width),
                                     static_cast<uint32_t>(blocks.height),
                                     source.part.Trimmed("COMRAT") != "1D"};
  const auto count = static_cast<uint64_t>(blocks.Count());
  if (count > 1 && source.part.mask.blocks.empty())
    return {media::Outcome::Unsupported, "a facsimile of several blocks without their records"};
  const SharedBlocks places = source.BlocksByOffset();
  for (auto place = places.begin(); place != places.end(); ++place) {
    const auto next = std::next(place);
    if (!target.GoesOn(place->first, source.part.dataLength)) return Stopped();
    if (!IsWanted(place->second, form, blocks.across, target)) continue;
    const uint64_t end = next != places.end() ? next->first : source.part.dataLength;
    std::shared_ptr<FacsimileRun> run;
    if (SampleFault fault = OpenFacsimile(source, form, place->first, end, target, run); fault.Met())
      return fault;
    if (SampleFault fault = ReadFacsimileBlocks(source, *run->rows, form, place->second, target);
        fault.Met())
      return fault;
  }
  return {};
}

}  // namespace core
