// Content for new segments: pictures into host bitmaps, metafiles into drawings.
#pragma once

#include <string>

#include "host/fileformat.h"

namespace tool {

/// A host bitmap freed with its owner.
class Bitmap {
 public:
  Bitmap() { KernelInitialiseBitmap(&record, kBitmapRecordSize, 0, 0, 0); }
  ~Bitmap() { KernelFreeBitmap(&record); }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;
  /// Loads a PNG or JPEG file. A host status.
  int32_t Load(const std::string& path);
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
  /// Loads a CGM file. A host status.
  int32_t Load(const std::string& path);
  VectorHandle handle{};
};

}  // namespace tool
