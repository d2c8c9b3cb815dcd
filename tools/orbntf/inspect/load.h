// Content for new segments: pictures into samples and host bitmaps, metafiles into drawings.
#pragma once

#include <string>

#include "core/pictures/load.h"
#include "host/fileformat.h"
#include "tools/orbntf/core_names.h"

namespace tool {

/// Loads a picture of a form that the core or the host knows. A host status; ReadError when the file
/// cannot be read.
int32_t LoadInput(const std::string& path, Picture& picture);

/// A host bitmap freed with its owner.
class Bitmap {
 public:
  Bitmap() { KernelInitialiseBitmap(&record, kBitmapRecordSize, 0, 0, 0); }
  ~Bitmap() { KernelFreeBitmap(&record); }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;
  /// Takes a picture of 8 bits. A host status.
  int32_t Take(const Picture& picture);
  KernelBitmap record;
};

/// A drawing freed with its owner.
class DrawingHolder {
 public:
  DrawingHolder() {
    handle.flags = kVectorHandleFlags;
    VectorInitialise(&handle);
    handle.flags2 = kVectorHandleFlags2;
  }
  ~DrawingHolder() { VectorFree(&handle); }
  DrawingHolder(const DrawingHolder&) = delete;
  DrawingHolder& operator=(const DrawingHolder&) = delete;
  /// Loads a CGM file. A host status; ReadError when the file cannot be read.
  int32_t Load(const std::string& path);
  VectorHandle handle{};
};

}  // namespace tool
