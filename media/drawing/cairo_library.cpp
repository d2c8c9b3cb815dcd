#include "media/drawing/cairo_library.h"

#include <new>

#include "media/library.h"

namespace media {
namespace {

// Empty where it is not there.
CairoLibrary Load() {
  CairoLibrary cairo;
  constexpr size_t kSetUp = 16 << 20;  // in C, whose failures are told
  void* library = LoadLibrary(CAIRO_SONAME, kSetUp);
  bool isThere = true;
#define MEDIA_CAIRO_RESOLVE(name) isThere = isThere && Resolve(library, "cairo_" #name, cairo.name);
  MEDIA_CAIRO_CALLS(MEDIA_CAIRO_RESOLVE)
#undef MEDIA_CAIRO_RESOLVE
  return isThere ? cairo : CairoLibrary();
}

const CairoLibrary& Loaded() {
  static const CairoLibrary cairo = Load();
  return cairo;
}

}  // namespace

bool HasCairo() { return Loaded().create != nullptr; }

const CairoLibrary& Cairo() {
  if (!HasCairo()) throw std::bad_alloc();
  return Loaded();
}

}  // namespace media
