#include "media/library.h"

#include <dlfcn.h>

#include <cstddef>
#include <memory>
#include <new>

namespace media {

void* LoadLibrary(const char* soname) {
  // What libraries throw while they are set up ends the program: the memory is there, or nothing is
  // begun.
  constexpr size_t kTaken = 64 << 20;
  {
    const std::unique_ptr<volatile char[]> taken(new (std::nothrow) volatile char[kTaken]);
    if (taken == nullptr) return nullptr;
    taken[0] = 0;
  }
  return dlopen(soname, RTLD_NOW | RTLD_LOCAL);
}

void* FunctionOf(void* library, const char* name) {
  return library == nullptr ? nullptr : dlsym(library, name);
}

}  // namespace media
