// operator new of the fault tests' program: its own, the module's and the host libraries'.
#include <cstdlib>
#include <new>

#include "tests/faults/injector.h"

void* operator new(size_t bytes) {
  void* block = faults::AllocationFails() ? nullptr : std::malloc(bytes != 0 ? bytes : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new(size_t bytes, const std::nothrow_t&) noexcept {
  return faults::AllocationFails() ? nullptr : std::malloc(bytes != 0 ? bytes : 1);
}
void* operator new[](size_t bytes) { return ::operator new(bytes); }
void* operator new[](size_t bytes, const std::nothrow_t& tag) noexcept {
  return ::operator new(bytes, tag);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, size_t) noexcept { std::free(block); }
void operator delete[](void* block, size_t) noexcept { std::free(block); }
