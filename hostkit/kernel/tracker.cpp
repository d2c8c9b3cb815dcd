// Leak tracker, byte counts and fault injection.
#include <atomic>
#include <mutex>
#include <new>
#include <unordered_map>

#include "hostkit/kernel/internal.h"

namespace {

struct Tracker {
  std::mutex mutex;
  std::unordered_multimap<const void*, HostkitLeak> entries;
  uint64_t held = 0;
  uint64_t peak = 0;
};
Tracker& TheTracker() {
  static hostkit::Immortal<Tracker> tracker;
  return tracker.Get();
}

struct Fault {
  std::atomic<uint64_t> calls{0};
  std::atomic<uint64_t> failAt{0};
};
Fault faults[kFaultKinds];

}  // namespace

namespace hostkit {

void Track(int32_t kind, const void* resource, uint64_t bytes, uint32_t line, const char16_t* file) {
  if (resource == nullptr) return;
  Tracker& tracker = TheTracker();
  std::lock_guard<std::mutex> lock(tracker.mutex);
  try {
    tracker.entries.emplace(resource, HostkitLeak{kind, line, file, bytes});
  } catch (const std::bad_alloc&) {
    return;  // there is no memory to note it; nothing else is lost
  }
  tracker.held += bytes;
  if (tracker.held > tracker.peak) tracker.peak = tracker.held;
}

void Untrack(int32_t kind, const void* resource) {
  Tracker& tracker = TheTracker();
  std::lock_guard<std::mutex> lock(tracker.mutex);
  auto [entry, end] = tracker.entries.equal_range(resource);
  for (; entry != end; ++entry) {
    if (entry->second.kind != kind) continue;
    tracker.held -= entry->second.bytes;
    tracker.entries.erase(entry);
    return;
  }
}

}  // namespace hostkit

void ORB_CALL KernelTrackResource(int32_t kind, const void* resource, uint32_t line,
                                  const char16_t* file) {
  hostkit::Track(kind, resource, 0, line, file);
}

void ORB_CALL KernelUntrackResource(int32_t kind, const void* resource, uint32_t, const char16_t*) {
  hostkit::Untrack(kind, resource);
}

uint32_t ORB_CALL HostkitOutstanding(HostkitLeak* leaks, uint32_t capacity) {
  Tracker& tracker = TheTracker();
  std::lock_guard<std::mutex> lock(tracker.mutex);
  uint32_t filled = 0;
  for (const auto& entry : tracker.entries) {
    if (leaks == nullptr || filled == capacity) break;
    leaks[filled++] = entry.second;
  }
  return static_cast<uint32_t>(tracker.entries.size());
}

uint64_t ORB_CALL HostkitBytesHeld() {
  Tracker& tracker = TheTracker();
  std::lock_guard<std::mutex> lock(tracker.mutex);
  return tracker.held;
}

uint64_t ORB_CALL HostkitPeakBytes(int32_t reset) {
  Tracker& tracker = TheTracker();
  std::lock_guard<std::mutex> lock(tracker.mutex);
  const uint64_t peak = tracker.peak;
  if (reset != 0) tracker.peak = tracker.held;
  return peak;
}

void ORB_CALL HostkitArmFault(int32_t kind, uint64_t n) {
  if (kind < 0 || kind >= kFaultKinds) return;
  faults[kind].calls = 0;
  faults[kind].failAt = n;
}

int32_t ORB_CALL HostkitShouldFail(int32_t kind) {
  if (kind < 0 || kind >= kFaultKinds) return 0;
  return ++faults[kind].calls == faults[kind].failAt;
}

uint64_t ORB_CALL HostkitFaultCalls(int32_t kind) {
  return kind < 0 || kind >= kFaultKinds ? 0 : faults[kind].calls.load();
}
