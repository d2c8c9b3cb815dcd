#include "core/pictures/geotiff_library.h"

#include "core/format/library.h"

namespace core {

const GeotiffLibrary* GeotiffLibrary::Get() {
  static GeotiffLibrary functions{};
  static const bool isThere = [] {
    void* library = LoadLibrary(GEOTIFF_SONAME);
    return Resolve(library, "GTIFNew", functions.create) &&
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
  return library == nullptr ? GeoKeys(nullptr, nullptr) : GeoKeys(library->create(tiff), library->free);
}

}  // namespace core
