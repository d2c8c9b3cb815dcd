#include "core/pictures/geotiff_library.h"

#include "core/format/library.h"

namespace core {

namespace {

// What a file's keys are like is told by what is made of them.
// NOLINTNEXTLINE(cert-dcl50-cpp): the library's own form.
void Drop(GTIF*, int, const char*, ...) {}

}  // namespace

const GeotiffLibrary* GeotiffLibrary::Get() {
  static GeotiffLibrary functions{};
  static const bool isThere = [] {
    void* library = LoadLibrary(GEOTIFF_SONAME);
    return Resolve(library, "GTIFNewEx", functions.create) &&
           Resolve(library, "GTIFFree", functions.free) &&
           Resolve(library, "GTIFKeySet", functions.set) &&
           Resolve(library, "GTIFKeyGetSHORT", functions.get) &&
           Resolve(library, "GTIFWriteKeys", functions.write) &&
           Resolve(library, "XTIFFInitialize", functions.initialize);
  }();
  return isThere ? &functions : nullptr;
}

GeoKeys KeysOf(TIFF* tiff) {
  const GeotiffLibrary* library = GeotiffLibrary::Get();
  return library == nullptr ? GeoKeys(nullptr, nullptr)
                            : GeoKeys(library->create(tiff, &Drop, nullptr), library->free);
}

}  // namespace core
