// The controls of the work limit that programs of the host have.
#include "hostkit/hostkit.h"
#include "media/work.h"

void ORB_CALL HostkitSetMaxPixels(uint64_t pixels) { media::SetMaxPixels(pixels); }

void ORB_CALL HostkitLimitWork(uint64_t fileBytes, uint64_t canvasPixels, uint32_t percent) {
  media::CurrentWork() = media::WorthOf(fileBytes, canvasPixels, percent);
}

void ORB_CALL HostkitLiftWorkLimit() { media::CurrentWork() = {}; }

void ORB_CALL HostkitGiveWork(uint64_t nanoseconds, uint64_t samples) {
  media::CurrentWork() = {true, nanoseconds, samples};
}

void ORB_CALL HostkitWorkLeft(uint64_t* nanoseconds, uint64_t* samples) {
  *nanoseconds = media::CurrentWork().nanoseconds;
  *samples = media::CurrentWork().samples;
}
