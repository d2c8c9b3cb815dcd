#include "core/pictures/geotiff_library.h"

#include "media/library.h"

namespace core {

namespace {

// What a file's keys are like is told by what is made of them.
// NOLINTNEXTLINE(cert-dcl50-cpp): the library's own form.
void Drop(GTIF*, int, const char*, ...) {}

}  // namespace

const GeotiffLibrary* GeotiffLibrary::Get() {
  static GeotiffLibrary functions{};
  static const bool isThere = [] {
    void* library = media::LoadLibrary(GEOTIFF_SONAME);
    return media::Resolve(library, "GTIFNewEx", functions.create) &&
           media::Resolve(library, "GTIFFree", functions.free) &&
           media::Resolve(library, "GTIFKeySet", functions.set) &&
           media::Resolve(library, "GTIFKeyGetSHORT", functions.get) &&
           media::Resolve(library, "GTIFWriteKeys", functions.write) &&
           media::Resolve(library, "XTIFFInitialize", functions.initialize);
  }();
  return isThere ? &functions : nullptr;
}

GeoKeys KeysOf(TIFF* tiff) {
  const GeotiffLibrary* library = GeotiffLibrary::Get();
  return library == nullptr ? GeoKeys(nullptr, nullptr)
                            : GeoKeys(library->create(tiff, &Drop, nullptr), library->free);
}

}  // namespace core
