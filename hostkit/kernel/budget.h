// The work that a thread may do before the stand-in refuses more.
#pragma once

#include <cstdint>

namespace hostkit {

/// Takes an estimate of work, in nanoseconds of an ordinary core, from what is left of the calling
/// thread's limit; false when there is less.
bool Spend(uint64_t nanoseconds);
/// The same for samples that a JPEG 2000 decoder has to make.
bool SpendSamples(uint64_t samples);

/// Whether a bitmap of as many pixels may be made at all (HostkitSetMaxPixels).
bool AllowsPixels(uint64_t pixels);

}  // namespace hostkit
