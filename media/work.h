// The work that a thread may do before more is refused.
#pragma once

#include <cstdint>

namespace media {

/// What is left of a thread's work: nanoseconds of an ordinary core, and samples that JPEG 2000 decoders
/// make. Without a limit nothing is counted.
struct WorkLeft {
  bool limited = false;
  uint64_t nanoseconds = 0, samples = 0;
};

/// What a file of some bytes and pictures of some pixels are worth, or so many percent of that.
WorkLeft WorthOf(uint64_t fileBytes, uint64_t pixels, uint32_t percent = 100);

/// What is left of the calling thread's work, to be read, given and taken away.
WorkLeft& CurrentWork();
/// Adds what as many more pixels are worth, where there is a limit.
void AllowPixels(uint64_t pixels);

/// One limit for all that a command does with a file, while it lasts; within another one it is a part of
/// that one.
class WorkLimit {
 public:
  explicit WorkLimit(uint64_t fileBytes);
  ~WorkLimit();
  WorkLimit(const WorkLimit&) = delete;
  WorkLimit& operator=(const WorkLimit&) = delete;

 private:
  bool isOutermost_;
};

/// Takes an estimate of work from what is left; false when there is less.
bool Spend(uint64_t nanoseconds);
/// The same for samples that a JPEG 2000 decoder has to make.
bool SpendSamples(uint64_t samples);

/// Refuses pictures of more pixels than this, those that codecs work on included; 0 lifts the limit.
void SetMaxPixels(uint64_t pixels);
/// The limit; 0 for none.
uint64_t MaxPixels();
/// Whether a picture of as many pixels may be made at all.
bool AllowsPixels(uint64_t pixels);

}  // namespace media
