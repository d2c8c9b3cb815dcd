#include "core/samples/samples.h"

#include <algorithm>

#include "core/format/words.h"
#include "core/samples/decoders.h"

namespace core {
namespace {

struct Reader {
  std::string_view compressions;
  SampleFault (*read)(const SampleSource& source, SampleTarget& target);
};
constexpr Reader kReaders[] = {{"NC|NM", ReadPlain},
                               {"C1|M1", ReadFacsimile},
                               {"C3|M3|C5|M5|I1", ReadJpeg},
                               {"C8|M8", ReadJpeg2000},
                               {"C4|M4", ReadVectorQuantised}};

// What stands where nothing is stored: the pad pixel code, or zero.
void TakeNoData(const SurveyedPart& part, SampleImage& image) {
  const SurveyedMask& mask = part.mask;
  if (!part.IsMasked() || !mask.complete) return;
  const bool misses = std::find(mask.blocks.begin(), mask.blocks.end(), kNoRecord) != mask.blocks.end();
  if (mask.padBits == 0 && !misses) return;
  uint64_t code = BigNumber(std::string_view(mask.padCode).substr(0, 8));
  if (mask.padBits % 8 != 0) code >>= 8 - mask.padBits % 8;
  image.noData = code;
}

// Lookup tables of one, two or more: grey, or red, green and blue.
void TakePalette(const SurveyedPart& part, SampleImage& image) {
  const std::string_view first = part.Text("LUTD1.1");
  if (part.Bands() != 1 || first.empty()) return;
  const bool isColour = part.Has("LUTD1.3");
  const std::string_view green = isColour ? part.Text("LUTD1.2") : first,
                         blue = isColour ? part.Text("LUTD1.3") : first;
  for (size_t i = 0; i < first.size(); ++i) {
    for (const std::string_view table : {first, green, blue})
      image.palette.push_back(static_cast<uint8_t>(table[i]));
  }
}

}  // namespace

SampleFault DescribeSamples(const SurveyedPart& part, SampleImage& image) {
  // Memory that there is serves the next samples.
  std::vector<uint8_t> kept = std::move(image.samples);
  kept.clear();
  image = {};
  image.samples = std::move(kept);
  const int64_t bits = part.Number("NBPP"), significant = part.Number("ABPP");
  const std::string_view type = part.Trimmed("PVTYPE");
  if (bits < 1 || bits > 64)
    return {media::Outcome::Unsupported, "samples of " + Quoted(part.Text("NBPP")) + " bits", "NBPP"};
  if ((type == "R" && bits != 32 && bits != 64) || (type == "C" && bits != 64))
    return {media::Outcome::Unsupported,
            "samples " + Quoted(type) + " of " + std::to_string(bits) + " bits"};
  image.bits = static_cast<uint32_t>(bits);
  image.significantBits = static_cast<uint32_t>(std::clamp<int64_t>(significant, 1, bits));
  image.sampleBytes = bits <= 8 ? 1 : bits <= 16 ? 2 : bits <= 32 ? 4 : 8;
  image.bands = static_cast<uint32_t>(part.Bands());
  image.kind = type == "SI"  ? SampleKind::Signed
               : type == "R" ? SampleKind::Real
               : type == "C" ? SampleKind::Complex
                             : SampleKind::Unsigned;
  image.representation = part.Trimmed("IREP");
  TakePalette(part, image);
  TakeNoData(part, image);
  return {};
}

std::optional<uint64_t> SampleSource::OffsetOf(uint64_t number, uint64_t blockBytes) const {
  const SurveyedMask& mask = part.mask;
  const uint64_t start = part.IsMasked() ? mask.dataOffset : 0;
  if (mask.blocks.empty()) return start + number * blockBytes;
  if (number >= mask.blocks.size() || mask.blocks[static_cast<size_t>(number)] == kNoRecord)
    return std::nullopt;
  return start + mask.blocks[static_cast<size_t>(number)];
}

SharedBlocks SampleSource::BlocksByOffset() const {
  SharedBlocks places;
  const auto count = static_cast<uint64_t>(blocks.Count());
  for (uint64_t block = 0; block < count; ++block) {
    const auto offset = OffsetOf(block, 0);
    if (offset && *offset < part.dataLength) places[*offset].push_back(block);
  }
  return places;
}

SampleFault ReadSamples(const Survey& survey, const SurveyedPart& part, const SampleRequest& request,
                        SampleImage& image, StreamCache* cache) {
  constexpr uint32_t kMostReduce = 16;
  const SampleSource source = {survey, part, Blocks(part), cache};
  if (!part.complete) return {media::Outcome::ShortData, "the subheader is not whole"};
  if (!source.blocks.Known())
    return {media::Outcome::BadData, "the size of the image is not known", "NROWS"};
  if (!source.blocks.Cover(part))
    return {media::Outcome::BadData, "the blocks are not those of the image", "NBPR"};
  if (part.mask.unread)
    return {media::Outcome::Unsupported, "the mask tables of the file take more than is kept"};
  if (part.IsMasked() && !part.mask.complete)
    return {media::Outcome::ShortData, "the mask table is not whole"};
  if (request.reduce > kMostReduce)
    return {media::Outcome::Unsupported, "no picture is as small as that"};
  if (SampleFault fault = DescribeSamples(part, image); fault.Met()) return fault;
  SampleTarget target(request, image);
  for (const Reader& reader : kReaders) {
    if (IsOneOf(part.Text("IC"), reader.compressions)) return reader.read(source, target);
  }
  return {media::Outcome::Unsupported, "IC is " + Quoted(part.Text("IC")), "IC"};
}

uint64_t SamplesAskedFor(const SurveyedPart& part, const SampleRequest& request) {
  constexpr uint64_t kMost = uint64_t{1} << 40;
  constexpr int64_t kMostBands = 16;
  const auto side = [&](const char* field, uint64_t begin, uint64_t count) {
    const auto all = static_cast<uint64_t>(std::clamp<int64_t>(part.Number(field), 0, INT32_MAX));
    const uint64_t left = all - std::min(all, begin);
    return count == 0 ? left : std::min(left, count);
  };
  const bool inWindows = IsOneOf(part.Text("IC"), "NC|NM|C8|M8");
  const uint64_t rows = inWindows ? side("NROWS", request.row, request.rows) : side("NROWS", 0, 0);
  const uint64_t columns =
      inWindows ? side("NCOLS", request.column, request.columns) : side("NCOLS", 0, 0);
  const auto bands = static_cast<uint64_t>(std::clamp<int64_t>(part.Bands(), 1, kMostBands));
  return std::min(rows * columns, kMost) * bands;
}

}  // namespace core
