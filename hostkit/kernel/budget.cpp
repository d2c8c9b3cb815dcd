#include "hostkit/kernel/budget.h"

#include <algorithm>
#include <atomic>

#include "hostkit/hostkit.h"

namespace {

// What is left, and whether there is a limit at all.
struct Allowance {
  bool limited = false;
  uint64_t left = 0;

  bool Take(uint64_t amount) {
    if (!limited) return true;
    const bool enough = amount <= left;
    left -= std::min(amount, left);
    return enough;
  }
};
thread_local Allowance work, samples;

std::atomic<uint64_t> maxPixels{0};

// Nanoseconds and samples that there are to begin with, and that bytes and pixels are worth.
constexpr uint64_t kBase = 1'500'000'000, kPerByte = 1000, kPerPixel = 40;
constexpr uint64_t kSamples = 1 << 24, kSamplesPerByte = 1024, kSamplesPerPixel = 16;
constexpr uint64_t kMost = uint64_t{1} << 54;  // keeps the sums countable

}  // namespace

bool hostkit::Spend(uint64_t nanoseconds) { return work.Take(nanoseconds); }
bool hostkit::SpendSamples(uint64_t count) { return samples.Take(count); }
bool hostkit::AllowsPixels(uint64_t pixels) {
  const uint64_t limit = maxPixels;
  return limit == 0 || pixels <= limit;
}

void ORB_CALL HostkitSetMaxPixels(uint64_t pixels) { maxPixels = pixels; }

void ORB_CALL HostkitLimitWork(uint64_t fileBytes, uint64_t canvasPixels, uint32_t percent) {
  const uint64_t bytes = std::min(fileBytes, kMost / kSamplesPerByte);
  const uint64_t pixels = std::min(canvasPixels, kMost / kSamplesPerByte);
  work = {true, (kBase + kPerByte * bytes + kPerPixel * pixels) / 100 * percent};
  samples = {true, (kSamples + kSamplesPerByte * bytes + kSamplesPerPixel * pixels) / 100 * percent};
}

void ORB_CALL HostkitAllowPixels(uint64_t pixels) {
  const uint64_t more = std::min(pixels, kMost / kSamplesPerByte);
  work.left = std::min(kMost * kPerByte / 1024, work.left) + kPerPixel * more;
  samples.left = std::min(kMost, samples.left) + kSamplesPerPixel * more;
}

int32_t ORB_CALL HostkitSpendWork(uint64_t nanoseconds) {
  return work.Take(nanoseconds) ? kHostOk : kHostOverBudget;
}

void ORB_CALL HostkitLiftWorkLimit() { work = samples = {}; }
