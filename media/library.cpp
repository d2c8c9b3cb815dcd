#include "media/library.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>
#include <memory>
#include <new>

namespace media {

namespace {

// The file that this code is in: a library, or the program. Empty where it is not known.
std::filesystem::path OwnFile() {
  Dl_info found;
  link_map* map = nullptr;
  if (dladdr1(reinterpret_cast<const void*>(&LoadLibrary), &found, reinterpret_cast<void**>(&map),
              RTLD_DL_LINKMAP) == 0)
    return {};
  const bool isProgram = map == nullptr || map->l_name[0] == 0;
  std::error_code error;
  std::filesystem::path path =
      std::filesystem::canonical(isProgram ? "/proc/self/exe" : map->l_name, error);
  return error ? std::filesystem::path() : path;
}

}  // namespace

void* LoadLibrary(const char* soname, size_t setUpBytes) {
  // What libraries throw while they are set up ends the program: the memory is there, or nothing is
  // begun.
  {
    const std::unique_ptr<volatile char[]> taken(new (std::nothrow) volatile char[setUpBytes]);
    if (taken == nullptr) return nullptr;
    taken[0] = 0;
  }
  return dlopen(soname, RTLD_NOW | RTLD_LOCAL);
}

void* LoadPlugin(const char* name) {
  const std::filesystem::path own = OwnFile();
  if (own.empty()) return nullptr;
  for (const char* folder : {".", ORBNTF_LIBRARIES_FROM_PROGRAMS}) {
    const std::filesystem::path path = own.parent_path() / folder / ORBNTF_PLUGINS / name;
    std::error_code error;
    if (std::filesystem::exists(path, error)) return LoadLibrary(path.c_str());
  }
  return nullptr;
}

void* FunctionOf(void* library, const char* name) {
  return library == nullptr ? nullptr : dlsym(library, name);
}

}  // namespace media
