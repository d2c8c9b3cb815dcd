#include "media/library.h"

#include <dlfcn.h>
#include <link.h>
#include <sys/auxv.h>

#include <filesystem>
#include <memory>

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
  // A name that is no path from the root may mean another file by now.
  if (!isProgram && map->l_name[0] != '/') return {};
  std::filesystem::path path =
      std::filesystem::canonical(isProgram ? "/proc/self/exe" : map->l_name, error);
  // Where there is no /proc, the name that the program was started by, if it is one from the root.
  const char* started = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  if (error && isProgram && started != nullptr && started[0] == '/')
    path = std::filesystem::canonical(started, error);
  return error ? std::filesystem::path() : path;
}

}  // namespace

void* LoadLibrary(const char* soname, size_t setUpBytes) {
  if (void* loaded = dlopen(soname, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD); loaded != nullptr)
    return loaded;
  // What libraries throw while they are set up ends the program: the memory is there, or nothing is
  // begun.
  {
    const std::unique_ptr<volatile char[]> taken(new volatile char[setUpBytes]);
    taken[0] = 0;
  }
  return dlopen(soname, RTLD_NOW | RTLD_LOCAL);
}

void* LoadPlugin(const char* name) {
  const std::filesystem::path own = OwnFile();
  if (own.empty()) return nullptr;
  for (const char* folder : {".", ORBNTF_LIBRARIES_FROM_PROGRAMS}) {
    for (const char* plugins : {ORBNTF_PLUGINS, ORBNTF_CORE_PLUGINS}) {
      const std::filesystem::path path = own.parent_path() / folder / plugins / name;
      std::error_code error;
      if (std::filesystem::exists(path, error)) return LoadLibrary(path.c_str());
    }
  }
  return nullptr;
}

void* FunctionOf(void* library, const char* name) {
  return library == nullptr ? nullptr : dlsym(library, name);
}

}  // namespace media
