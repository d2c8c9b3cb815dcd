#include "hostkit/kernel/large_pages.h"

#include <cstdint>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

void hostkit::AskForLargePages([[maybe_unused]] void* block, [[maybe_unused]] size_t bytes) {
#if defined(MADV_HUGEPAGE)
  constexpr uintptr_t kPage = 2 << 20;
  const auto begin = reinterpret_cast<uintptr_t>(block);
  const uintptr_t first = (begin + kPage - 1) / kPage * kPage, end = (begin + bytes) / kPage * kPage;
  if (block == nullptr || end <= first) return;
  (void)madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);  // an advice, no more
#endif
}
