// Memory. Each block carries its size in front of it.
#include <cstdlib>

#include "hostkit/kernel/internal.h"
#include "hostkit/kernel/large_pages.h"

namespace {

struct alignas(16) BlockHeader {
  size_t bytes;
};

BlockHeader* HeaderOf(void* block) { return static_cast<BlockHeader*>(block) - 1; }

}  // namespace

void* ORB_CALL KernelAllocate(size_t count, size_t elementSize, uint32_t line, const char16_t* file) {
  if (elementSize != 0 && count > (PTRDIFF_MAX - sizeof(BlockHeader)) / elementSize) return nullptr;
  return KernelReallocate(nullptr, count * elementSize, line, file);
}

void* ORB_CALL KernelReallocate(void* block, size_t bytes, uint32_t line, const char16_t* file) {
  if (HostkitShouldFail(kFaultAllocation) || bytes > PTRDIFF_MAX - sizeof(BlockHeader)) return nullptr;
  const size_t oldBytes = block != nullptr ? HeaderOf(block)->bytes : 0;
  auto* header = static_cast<BlockHeader*>(std::calloc(1, sizeof(BlockHeader) + bytes));
  if (header == nullptr) return nullptr;
  hostkit::AskForLargePages(header, sizeof(BlockHeader) + bytes);
  header->bytes = bytes;
  if (block != nullptr) std::memcpy(header + 1, block, oldBytes < bytes ? oldBytes : bytes);
  KernelFree(block, line, file);
  hostkit::Track(hostkit::kKindMemory, header + 1, bytes, line, file);
  return header + 1;
}

void ORB_CALL KernelFree(void* block, uint32_t, const char16_t*) {
  if (block == nullptr) return;
  hostkit::Untrack(hostkit::kKindMemory, block);
  std::free(HeaderOf(block));
}

void ORB_CALL KernelCopyMemory(void* destination, const void* source, size_t bytes) {
  if (bytes != 0) std::memmove(destination, source, bytes);
}

void ORB_CALL KernelFillMemory(void* destination, uint8_t value, size_t bytes) {
  if (bytes != 0) std::memset(destination, value, bytes);
}
