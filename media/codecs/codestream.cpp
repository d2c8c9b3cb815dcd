#include "media/codecs/codestream.h"

#include <algorithm>

namespace media {
namespace {

constexpr uint8_t kStart[] = {0xFF, 0x4F, 0xFF, 0x51};

enum Marker : uint32_t {
  kCodingStyle = 0xFF52,
  kComponentStyle = 0xFF53,
  kStartOfTilePart = 0xFF90,
  kStartOfData = 0xFF93
};

uint32_t StepsBetween(uint32_t low, uint32_t high, uint32_t step) {
  const auto up = [step](uint32_t v) { return v / step + (v % step != 0 ? 1 : 0); };
  return up(high) - up(low);
}

// The finest division of a tile that any coding style asks for, as powers of two.
struct Division {
  uint32_t precinctX = 15, precinctY = 15;
  uint32_t block = 12;  // width times height
  uint32_t levels = 0;

  // Takes in the parameters behind the progression of a style segment: levels, code-block width and
  // height, style, transform, and precinct sizes where there are any.
  void Add(Bytes style, bool ownPrecincts) {
    if (style.size() < 5) return;
    levels = std::max<uint32_t>(levels, std::min<uint32_t>(style[0], 32));
    block = std::min(block, (style[1] & 15u) + (style[2] & 15u) + 4);
    for (size_t i = 5; ownPrecincts && i < style.size(); ++i) {
      precinctX = std::min<uint32_t>(precinctX, style[i] & 15);
      precinctY = std::min<uint32_t>(precinctY, style[i] >> 4);
    }
  }
};

// Takes in the coding styles of one header, from `at` to its end; returns where that is.
uint64_t AddStyles(SourceBytes& stream, uint64_t at, uint32_t components, Division& division) {
  const size_t indexBytes = components < 257 ? 1 : 2;
  while (const uint8_t* segment = stream.Get(at, 4)) {
    const uint32_t marker = Big16(segment);
    if (marker == kStartOfTilePart || marker == kStartOfData || marker < 0xFF00) return at;
    const size_t length = Big16(segment + 2);
    const uint8_t* parameters = length < 2 ? nullptr : stream.Get(at + 4, length - 2);
    if (parameters == nullptr) break;
    const Bytes body(parameters, length - 2);
    if (marker == kCodingStyle && body.size() > 5) division.Add(body.subspan(5), (body[0] & 1) != 0);
    if (marker == kComponentStyle && body.size() > indexBytes + 1) {
      division.Add(body.subspan(indexBytes + 1), (body[indexBytes] & 1) != 0);
    }
    at += 2 + length;
  }
  return stream.Size();
}

Division FindDivision(const Source& source, uint32_t components) {
  Division division;
  SourceBytes stream(source);
  uint64_t at = AddStyles(stream, stream.Find(kStart, 0) + 2, components, division);
  for (const uint8_t* part = stream.Get(at, 12); part != nullptr && Big16(part) == kStartOfTilePart;
       part = stream.Get(at, 12)) {
    const uint64_t length = Big32(part + 6);
    AddStyles(stream, at + 12, components, division);
    if (length < 12 || length > stream.Size() - at) break;
    at += length;
  }
  return division;
}

}  // namespace

bool FindCodestreamSize(const Source& source, CodestreamSize& size) {
  constexpr size_t kFixed = 43, kMostComponents = 0x4000;
  SourceBytes stream(source);
  const uint64_t at = stream.Find(kStart, 0);
  const auto there =
      static_cast<size_t>(std::min<uint64_t>(stream.Size() - at, kFixed + 3 * kMostComponents));
  const uint8_t* start = there < kFixed ? nullptr : stream.Get(at, there);
  if (start == nullptr) return false;
  const uint8_t* p = start + 8;  // behind marker, length and capabilities
  size = {};
  size.right = Big32(p);
  size.bottom = Big32(p + 4);
  size.left = Big32(p + 8);
  size.top = Big32(p + 12);
  size.tileWidth = Big32(p + 16);
  size.tileHeight = Big32(p + 20);
  const uint32_t tileLeft = Big32(p + 24), tileTop = Big32(p + 28);
  size.components = Big16(p + 32);
  size.precision = (p[34] & 0x7Fu) + 1;
  if (size.right <= size.left || size.bottom <= size.top || size.tileWidth == 0 || size.tileHeight == 0 ||
      tileLeft > size.left || tileTop > size.top || size.components == 0 ||
      there - 42 < 3 * size_t{size.components}) {
    return false;
  }
  size.stepX = size.stepY = 255;
  for (uint32_t c = 0; c < size.components; ++c) {
    const uint32_t stepX = p[35 + 3 * size_t{c}], stepY = p[36 + 3 * size_t{c}];
    size.stepX = std::min(size.stepX, stepX);
    size.mostStepX = std::max(size.mostStepX, stepX);
    size.stepY = std::min(size.stepY, stepY);
    size.mostStepY = std::max(size.mostStepY, stepY);
  }
  if (size.stepX == 0 || size.stepY == 0) return false;
  const auto tilesOver = [](uint64_t span, uint32_t tile) { return (span + tile - 1) / tile; };
  size.tiles = tilesOver(uint64_t{size.right} - tileLeft, size.tileWidth) *
               tilesOver(uint64_t{size.bottom} - tileTop, size.tileHeight);
  size.width = StepsBetween(size.left, size.right, size.stepX);
  size.height = StepsBetween(size.top, size.bottom, size.stepY);
  return size.width != 0 && size.height != 0;
}

uint64_t CodestreamTableBytes(const Source& stream, const CodestreamSize& size) {
  constexpr uint64_t kTile = 9000, kTileComponent = 1200, kPrecinct = 1000, kBlock = 250;
  constexpr uint64_t kMost = uint64_t{1} << 40;
  const Division division = FindDivision(stream, size.components);
  const uint64_t width = std::min<uint64_t>(size.tileWidth, size.right - size.left) / size.stepX + 1;
  const uint64_t height = std::min<uint64_t>(size.tileHeight, size.bottom - size.top) / size.stepY + 1;
  uint64_t precincts = 0;
  for (uint32_t level = 0; level <= division.levels; ++level) {
    precincts +=
        ((width >> level >> division.precinctX) + 1) * ((height >> level >> division.precinctY) + 1);
  }
  const uint64_t blocks = precincts + (2 * width * height >> division.block);
  const uint64_t perComponent = std::min(kPrecinct * precincts + kBlock * blocks, kMost);
  return std::min(size.tiles, kMost >> 16) * (kTile + kTileComponent * size.components) +
         perComponent * size.components;
}

CodestreamWorth WeighCodestream(const Source& stream, const CodestreamSize& size, uint64_t pixels) {
  constexpr uint64_t kMaxSamplesPerByte = 65536;
  constexpr uint64_t kTableBytes = 48 << 20, kTableBytesPerByte = 16, kTableBytesPerSample = 2;
  if (pixels > kMostSamplesAtOnce / size.components) return CodestreamWorth::TooManySamples;
  const uint64_t all = uint64_t{size.width} * size.height;
  if (all > UINT64_MAX / size.components || all * size.components / kMaxSamplesPerByte > stream.Size())
    return CodestreamWorth::TooFewBytes;
  const uint64_t most =
      kTableBytes + kTableBytesPerByte * stream.Size() +
      kTableBytesPerSample * std::min<uint64_t>(all * size.components, kMostSamplesAtOnce);
  return CodestreamTableBytes(stream, size) > most ? CodestreamWorth::TooManyTables
                                                   : CodestreamWorth::Fine;
}

}  // namespace media
