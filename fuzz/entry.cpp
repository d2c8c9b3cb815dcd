// libFuzzer's way into one target.
#include "fuzz/targets.h"

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(const uint8_t* data,
                                                                             size_t size) {
  return fuzz::FUZZ_TARGET(data, size);
}
