#include "core/samples/samples.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "core/format/words.h"
#include "core/samples/decoders.h"
#include "media/work.h"

namespace core {
namespace {

struct Reader {
  std::string_view compressions;
  bool reduces;
  SampleFault (*read)(const SampleSource& source, SampleImage& image);
};
constexpr Reader kReaders[] = {{"NC|NM", false, ReadPlain},
                               {"C1|M1", false, ReadFacsimile},
                               {"C3|M3|C5|M5|I1", true, ReadJpeg},
                               {"C8|M8", true, ReadJpeg2000},
                               {"C4|M4", false, ReadVectorQuantised}};

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

SampleFault Describe(const SurveyedPart& part, SampleImage& image) {
  const int64_t bits = part.Number("NBPP"), significant = part.Number("ABPP");
  const std::string_view type = part.Trimmed("PVTYPE");
  if (!IsOneOf(part.Text("NBPP"), "01|08|12|16|32|64"))
    return {media::Outcome::Unsupported, "samples of " + Quoted(part.Text("NBPP")) + " bits"};
  if ((type == "R" && bits < 32) || (type == "C" && bits != 64))
    return {media::Outcome::Unsupported,
            "samples " + Quoted(type) + " of " + std::to_string(bits) + " bits"};
  image.bits = static_cast<uint32_t>(bits);
  image.significantBits = static_cast<uint32_t>(std::clamp<int64_t>(significant, 1, bits));
  image.sampleBytes = bits <= 8 ? 1 : bits <= 16 ? 2 : static_cast<uint32_t>(bits / 8);
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

}  // namespace

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

SampleFault ReadSamples(const Survey& survey, const SurveyedPart& part, uint32_t reduce,
                        SampleImage& image) {
  constexpr uint32_t kMostReduce = 16;
  const SampleSource source = {survey, part, Blocks(part), reduce};
  if (!part.complete) return {media::Outcome::ShortData, "the subheader is not whole"};
  if (!source.blocks.Known()) return {media::Outcome::BadData, "the size of the image is not known"};
  if (!source.blocks.Cover(part))
    return {media::Outcome::BadData, "the blocks are not those of the image"};
  if (part.IsMasked() && !part.mask.complete)
    return {media::Outcome::ShortData, "the mask table is not whole"};
  if (SampleFault fault = Describe(part, image); fault.Met()) return fault;
  for (const Reader& reader : kReaders) {
    if (!IsOneOf(part.Text("IC"), reader.compressions)) continue;
    if (reduce > kMostReduce || (reduce != 0 && !reader.reduces))
      return {media::Outcome::Unsupported,
              "IC " + Quoted(part.Text("IC")) + " has no smaller picture in it"};
    return reader.read(source, image);
  }
  return {media::Outcome::Unsupported, "IC is " + Quoted(part.Text("IC"))};
}

}  // namespace core
