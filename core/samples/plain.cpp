// Uncompressed samples of any depth and mode, and facsimile.
#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "core/samples/decoders.h"
#include "media/codecs/facsimile.h"

namespace core {
namespace {

// A row of samples of a block: where it begins, in samples, and how many it has for each pixel.
struct RowPlace {
  uint64_t first;
  uint32_t perPixel;
};
RowPlace PlaceOfRow(const SampleSource& source, uint64_t y, uint64_t band) {
  const auto width = static_cast<uint64_t>(source.blocks.width),
             bands = static_cast<uint64_t>(source.blocks.bands);
  const std::string_view mode = source.part.Text("IMODE");
  if (mode == "P") return {y * width * bands, static_cast<uint32_t>(bands)};
  if (mode == "R") return {(y * bands + band) * width, 1};
  if (mode == "S") return {y * width, 1};
  return {band * source.blocks.PlaneSamples() + y * width, 1};
}

// One block: of all bands, or of IMODE S of one. The rows are read one by one, as far as they are wanted:
// blocks may be large.
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
    first_ = std::max(left_, target_.Left());
    end_ = static_cast<uint32_t>(std::min<uint64_t>(left + width, target_.Right()));
    const auto bottom = static_cast<uint32_t>(std::min<uint64_t>(top + height, target_.Bottom()));
    const bool byPixel = source_.part.Text("IMODE") == "P";
    const uint32_t planes = byPixel || blocks.sequential ? 1 : target_.Bands();
    for (uint32_t y = std::max(static_cast<uint32_t>(top), target_.Top()); y < bottom; ++y) {
      if (!target_.WantsRow(y)) continue;
      if (!target_.GoesOn(y - target_.Top(), target_.Bottom() - target_.Top())) return Stopped();
      for (uint32_t plane = 0; plane < planes; ++plane) {
        if (!byPixel && !target_.WantsBand(firstBand + plane)) continue;
        if (!ReadRow(offset, PlaceOfRow(source_, y - top, plane), y, firstBand + plane))
          return {media::Outcome::ShortData, "the data ends in block " + std::to_string(block)};
      }
    }
    return {};
  }

 private:
  bool ReadRow(uint64_t offset, const RowPlace& place, uint32_t y, uint32_t firstBand) {
    const uint64_t firstBit = (place.first + uint64_t{first_ - left_} * place.perPixel) * bits_;
    const uint64_t count = uint64_t{end_ - first_} * place.perPixel * bits_;
    const uint64_t at = offset + firstBit / 8, bytes = (firstBit % 8 + count + 7) / 8;
    const uint64_t length = source_.part.dataLength;
    if (at > length || bytes > length - at) return false;
    const std::string row = source_.survey.file.At(source_.part.dataOffset + at, bytes);
    if (row.size() < bytes) return false;
    for (uint32_t band = 0; band < place.perPixel; ++band) {
      if (!target_.WantsBand(firstBand + band)) continue;
      uint8_t* to = IsWholeBytes() ? target_.Run(first_, y, firstBand + band) : nullptr;
      if (to != nullptr) {
        CopyRun(row.data() + size_t{band} * bits_ / 8, size_t{place.perPixel} * bits_ / 8, to);
        continue;
      }
      uint64_t bit = firstBit % 8 + uint64_t{band} * bits_;
      for (uint32_t x = first_; x < end_; ++x, bit += uint64_t{place.perPixel} * bits_)
        target_.Put(x, y, firstBand + band, Sample(BitsAt(row, bit, bits_)));
    }
    return true;
  }

  // Whether samples take as many bytes as they are kept in.
  bool IsWholeBytes() const { return bits_ == 8 * target_.Image().sampleBytes; }

  // Big-endian numbers in host order. A complex number is two.
  void CopyRun(const char* from, size_t step, uint8_t* to) const {
    const SampleImage& image = target_.Image();
    const uint32_t numbers = image.kind == SampleKind::Complex ? 2 : 1;
    const uint32_t bytes = image.sampleBytes / numbers;
    constexpr bool kTurns = std::endian::native == std::endian::little;
    for (uint32_t x = first_; x < end_; ++x, from += step, to += image.PixelBytes()) {
      if (image.sampleBytes == 1) {
        *to = static_cast<uint8_t>(*from);
        continue;
      }
      std::memcpy(to, from, image.sampleBytes);
      for (uint32_t n = 0; kTurns && n < numbers; ++n) std::reverse(to + n * bytes, to + (n + 1) * bytes);
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
  uint32_t left_ = 0, first_ = 0, end_ = 0;  // of the block, and of what is wanted of it
};

// Puts a row of a decoded block to its place.
void PutRow(std::span<const uint8_t> row, const media::FacsimileForm& form, uint64_t block, uint32_t y,
            int64_t across, SampleTarget& target) {
  const auto inRow = static_cast<uint64_t>(across);
  const auto left = static_cast<uint32_t>(block % inRow * form.width),
             top = static_cast<uint32_t>(block / inRow * form.height);
  for (uint32_t x = 0; x < form.width; ++x)
    target.Put(left + x, top + y, 0, row[x / 8] >> (7 - x % 8) & 1u);
}

// Whether any of the blocks that a place has the data of is wanted.
bool IsWanted(const std::vector<uint64_t>& numbers, const media::FacsimileForm& form, int64_t across,
              const SampleTarget& target) {
  const auto inRow = static_cast<uint64_t>(across);
  return std::any_of(numbers.begin(), numbers.end(), [&](uint64_t block) {
    return target.Wants(block % inRow * form.width, block / inRow * form.height, form.width, form.height);
  });
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
    const std::string data =
        source.survey.file.At(source.part.dataOffset + place->first, end - place->first);
    const media::Outcome outcome =
        media::DecodeFacsimile({reinterpret_cast<const uint8_t*>(data.data()), data.size()}, form,
                               [&](uint32_t y, std::span<const uint8_t> row) {
                                 for (const uint64_t block : place->second)
                                   PutRow(row, form, block, y, blocks.across, target);
                                 return media::Outcome::Ok;
                               });
    if (outcome == media::Outcome::BadData) return {media::Outcome::BadData, "no row decodes"};
    if (outcome != media::Outcome::Ok) return FaultOf(outcome, "the facsimile");
  }
  return {};
}

}  // namespace core
