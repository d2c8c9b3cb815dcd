#include "core/samples/image.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "media/shuffle.h"
#include "media/work.h"

namespace core {
namespace {

constexpr const char* kNotWorth = "more work or memory than the bytes of the file are worth";

SampleFault CheckSize(const SampleImage& image, uint64_t width, uint64_t height) {
  const bool isSane = width >= 1 && height >= 1 && width <= INT32_MAX && height <= INT32_MAX &&
                      width * height <= INT32_MAX / std::max<uint64_t>(1, image.PixelBytes());
  if (isSane && media::AllowsPixels(width * height)) return {};
  return {media::Outcome::NoMemory,
          "too many samples: " + std::to_string(width) + " x " + std::to_string(height)};
}

}  // namespace

SampleFault MakeSamples(SampleImage& image, uint64_t width, uint64_t height) {
  if (SampleFault fault = CheckSize(image, width, height); fault.Met()) return fault;
  constexpr uint64_t kSampleCost = 6;  // nanoseconds
  if (!media::Spend(kSampleCost * width * height * image.bands))
    return {media::Outcome::OverBudget, kNotWorth};
  image.width = static_cast<uint32_t>(width);
  image.height = static_cast<uint32_t>(height);
  image.samples.assign(image.PixelBytes() * image.width * image.height, 0);
  if (image.noData.value_or(0) == 0) return {};
  for (uint32_t band = 0; band < image.bands; ++band) PutSample(image, 0, 0, band, *image.noData);
  media::RepeatFront(image.samples.data(), image.PixelBytes(), image.samples.size());
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

uint64_t BitsAt(std::string_view bytes, uint64_t bit, uint32_t count) {
  uint64_t value = 0;
  if (count % 8 == 0 && bit % 8 == 0) {
    for (uint32_t i = 0; i < count / 8; ++i)
      value = value << 8 | static_cast<uint8_t>(bytes[static_cast<size_t>(bit / 8) + i]);
    return value;
  }
  constexpr uint32_t kInWord = 57;  // bits that eight bytes have from any bit of the first one on
  if (const auto first = static_cast<size_t>(bit / 8); count <= kInWord && first + 8 <= bytes.size()) {
    for (size_t i = 0; i < 8; ++i) value = value << 8 | static_cast<uint8_t>(bytes[first + i]);
    return value << bit % 8 >> (64 - count);
  }
  for (uint32_t i = 0; i < count; ++i, ++bit)
    value = value << 1 | (static_cast<uint8_t>(bytes[static_cast<size_t>(bit / 8)]) >> (7 - bit % 8) & 1);
  return value;
}

SampleFault FaultOf(media::Outcome outcome, const std::string& what) {
  switch (outcome) {
    case media::Outcome::Ok:
      return {};
    case media::Outcome::Stopped:
      return Stopped();
    case media::Outcome::OverBudget:
      return {media::Outcome::OverBudget, kNotWorth};
    case media::Outcome::NoMemory:
      return {media::Outcome::NoMemory, what + " has more samples than there is room for"};
    case media::Outcome::Unsupported:
      return {media::Outcome::Unsupported, what + " does not decode"};
    default:
      return {media::Outcome::BadData, what + " does not decode"};
  }
}

}  // namespace core
