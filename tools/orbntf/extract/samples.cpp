#include "tools/orbntf/extract/samples.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "Common/Owning.h"
#include "hostkit/hostkit.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/check/rule.h"
#include "tools/orbntf/extract/decoders.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct Reader {
  std::string_view compressions;
  bool reduces;
  ExtractFault (*read)(const SampleSource& source, SampleImage& image);
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

ExtractFault Describe(const SurveyedPart& part, SampleImage& image) {
  const int64_t bits = part.Number("NBPP"), significant = part.Number("ABPP");
  const std::string_view type = part.Trimmed("PVTYPE");
  if (!IsOneOf(part.Text("NBPP"), "01|08|12|16|32|64"))
    return {ORB_UNSUPPORTED, "samples of " + Quoted(part.Text("NBPP")) + " bits"};
  if ((type == "R" && bits < 32) || (type == "C" && bits != 64))
    return {ORB_UNSUPPORTED, "samples " + Quoted(type) + " of " + std::to_string(bits) + " bits"};
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

ExtractFault CheckSize(const SampleImage& image, uint64_t width, uint64_t height) {
  // The host's limits are asked for a bitmap of the size.
  const bool isSane = width >= 1 && height >= 1 && width <= INT32_MAX && height <= INT32_MAX &&
                      width * height <= INT32_MAX / std::max<uint64_t>(1, image.PixelBytes());
  OwnedBitmap probe;
  if (isSane && Ok(probe.Allocate(static_cast<uint32_t>(width), static_cast<uint32_t>(height), 8,
                                  kOrderRgb, kViewTopLeft)))
    return {};
  return {ORB_OUT_OF_MEMORY,
          "too many samples: " + std::to_string(width) + " x " + std::to_string(height)};
}

ExtractFault MakeSamples(SampleImage& image, uint64_t width, uint64_t height) {
  if (ExtractFault fault = CheckSize(image, width, height); fault.Met()) return fault;
  constexpr uint64_t kSampleCost = 6;  // nanoseconds
  if (!media::Spend(kSampleCost * width * height * image.bands))
    return {kHostOverBudget, MeaningOf(kHostOverBudget)};
  image.width = static_cast<uint32_t>(width);
  image.height = static_cast<uint32_t>(height);
  image.samples.assign(image.PixelBytes() * image.width * image.height, 0);
  if (image.noData.value_or(0) == 0) return {};
  for (uint32_t y = 0; y < image.height; ++y) {
    for (uint32_t x = 0; x < image.width; ++x) {
      for (uint32_t band = 0; band < image.bands; ++band) PutSample(image, x, y, band, *image.noData);
    }
  }
  return {};
}

void PutSample(SampleImage& image, uint32_t x, uint32_t y, uint32_t band, uint64_t value) {
  uint8_t* to = image.Pixel(x, y) + size_t{band} * image.sampleBytes;
  const auto byte = static_cast<uint8_t>(value);
  const auto word = static_cast<uint16_t>(value);
  const auto longWord = static_cast<uint32_t>(value);
  switch (image.sampleBytes) {
    case 1:
      *to = byte;
      break;
    case 2:
      std::memcpy(to, &word, sizeof word);
      break;
    case 4:
      std::memcpy(to, &longWord, sizeof longWord);
      break;
    default: {
      // The real part of a complex number stands in front of the other one.
      const bool swaps = image.kind == SampleKind::Complex && std::endian::native == std::endian::little;
      const uint64_t parts = swaps ? value << 32 | value >> 32 : value;
      std::memcpy(to, &parts, sizeof parts);
    }
  }
}

void PlaceStream(const DecodedStream& stream, uint32_t left, uint32_t top, uint32_t firstBand,
                 SampleImage& image) {
  if (left >= image.width || top >= image.height || firstBand >= image.bands) return;
  const uint32_t columns = std::min(stream.width, image.width - left);
  const uint32_t rows = std::min(stream.height, image.height - top);
  const uint32_t bands = std::min(stream.components, image.bands - firstBand);
  for (uint32_t y = 0; y < rows; ++y) {
    const uint8_t* in = &stream.bytes[size_t{y} * stream.width * stream.components * stream.sampleBytes];
    for (uint32_t x = 0; x < columns; ++x, in += size_t{stream.components} * stream.sampleBytes) {
      for (uint32_t band = 0; band < bands; ++band) {
        uint16_t value = in[size_t{band} * stream.sampleBytes];
        if (stream.sampleBytes == 2) std::memcpy(&value, in + size_t{band} * 2, sizeof value);
        PutSample(image, left + x, top + y, firstBand + band, value);
      }
    }
  }
}

ExtractFault FaultOf(media::Outcome outcome, const std::string& what) {
  switch (outcome) {
    case media::Outcome::Ok:
      return {};
    case media::Outcome::OverBudget:
      return {kHostOverBudget, MeaningOf(kHostOverBudget)};
    case media::Outcome::NoMemory:
      return {ORB_OUT_OF_MEMORY, what + " has more samples than there is room for"};
    case media::Outcome::Unsupported:
      return {ORB_UNSUPPORTED, what + " does not decode"};
    default:
      return {ORB_BAD_STRUCTURE, what + " does not decode"};
  }
}

ExtractFault ReadSamples(const Survey& survey, const SurveyedPart& part, uint32_t reduce,
                         SampleImage& image) {
  constexpr uint32_t kMostReduce = 16;
  const SampleSource source = {survey, part, Blocks(part), reduce};
  if (!part.complete) return {ORB_SHORT_READ, "the subheader is not whole"};
  if (!source.blocks.Known()) return {ORB_BAD_STRUCTURE, "the size of the image is not known"};
  if (!source.blocks.Cover(part)) return {ORB_BAD_STRUCTURE, "the blocks are not those of the image"};
  if (part.IsMasked() && !part.mask.complete) return {ORB_SHORT_READ, "the mask table is not whole"};
  if (ExtractFault fault = Describe(part, image); fault.Met()) return fault;
  for (const Reader& reader : kReaders) {
    if (!IsOneOf(part.Text("IC"), reader.compressions)) continue;
    if (reduce > kMostReduce || (reduce != 0 && !reader.reduces))
      return {ORB_UNSUPPORTED, "IC " + Quoted(part.Text("IC")) + " has no smaller picture in it"};
    return reader.read(source, image);
  }
  return {ORB_UNSUPPORTED, "IC is " + Quoted(part.Text("IC"))};
}

}  // namespace tool
