#include "media/work.h"

#include <algorithm>
#include <atomic>

namespace media {
namespace {

// Nanoseconds and samples that there are to begin with, and that bytes and pixels are worth.
constexpr uint64_t kBase = 1'500'000'000, kPerByte = 1000, kPerPixel = 40;
constexpr uint64_t kSamples = 1 << 24, kSamplesPerByte = 1024, kSamplesPerPixel = 16;
constexpr uint64_t kMost = uint64_t{1} << 54;  // keeps the sums countable

thread_local WorkLeft current;
std::atomic<uint64_t> maxPixels{0};

bool Take(uint64_t amount, uint64_t& left) {
  if (!current.limited) return true;
  const bool enough = amount <= left;
  left -= std::min(amount, left);
  return enough;
}

}  // namespace

WorkLeft WorthOf(uint64_t fileBytes, uint64_t pixels, uint32_t percent) {
  const uint64_t bytes = std::min(fileBytes, kMost / kSamplesPerByte);
  const uint64_t counted = std::min(pixels, kMost / kSamplesPerByte);
  return {true, (kBase + kPerByte * bytes + kPerPixel * counted) / 100 * percent,
          (kSamples + kSamplesPerByte * bytes + kSamplesPerPixel * counted) / 100 * percent};
}

WorkLeft& CurrentWork() { return current; }

void AllowPixels(uint64_t pixels) {
  const uint64_t more = std::min(pixels, kMost / kSamplesPerByte);
  current.nanoseconds = std::min(kMost, current.nanoseconds) + kPerPixel * more;
  current.samples = std::min(kMost, current.samples) + kSamplesPerPixel * more;
}

WorkLimit::WorkLimit(uint64_t fileBytes) : isOutermost_(!current.limited) {
  if (isOutermost_) current = WorthOf(fileBytes, 0);
}

WorkLimit::~WorkLimit() {
  if (isOutermost_) current = {};
}

bool Spend(uint64_t nanoseconds) { return Take(nanoseconds, current.nanoseconds); }
bool SpendSamples(uint64_t samples) { return Take(samples, current.samples); }

void SetMaxPixels(uint64_t pixels) { maxPixels = pixels; }
uint64_t MaxPixels() { return maxPixels; }
bool AllowsPixels(uint64_t pixels) {
  const uint64_t limit = maxPixels;
  return limit == 0 || pixels <= limit;
}

}  // namespace media
