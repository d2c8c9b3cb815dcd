// The functions of libgeotiff, which is loaded when they are first asked for.
#pragma once

#include <geotiff.h>
#include <geotiffio.h>
#include <xtiffio.h>

#include <memory>

namespace core {

struct GeotiffLibrary {
  decltype(&::GTIFNewEx) create;
  decltype(&::GTIFFree) free;
  decltype(&::GTIFKeySet) set;
  decltype(&::GTIFKeyGetSHORT) get;
  decltype(&::GTIFWriteKeys) write;
  decltype(&::XTIFFInitialize) initialize;

  /// Null where it cannot be loaded.
  static const GeotiffLibrary* Get();
};

/// The keys of an open file; null where the library or the file does not give them.
using GeoKeys = std::unique_ptr<GTIF, decltype(&::GTIFFree)>;
GeoKeys KeysOf(TIFF* tiff);

}  // namespace core
