// Content for new segments: pictures into samples and host bitmaps, metafiles into drawings.
#pragma once

#include <string>
#include <vector>

#include "host/fileformat.h"

namespace tool {

/// A picture's samples, rows from the top, one or three to a pixel; those of 16 bits are big-endian.
struct Picture {
  uint32_t width = 0, height = 0, channels = 1, bits = 8;
  bool lostAlpha = false;  ///< blended with white, or left out of deep TIFF samples
  std::string refusal;  ///< why a file that is known is not loaded, where more than the status is known
  std::string whyNotLossless;  ///< what of the file the samples leave out; empty for nothing
  std::vector<uint8_t> samples;

  /// Loads a PNG, JPEG, TIFF, PPM or PGM file, or whatever else the host decodes. A host status;
  /// ReadError when the file cannot be read.
  int32_t Load(const std::string& path);
  int32_t LoadBytes(const std::string& bytes);
};

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

/// Samples of a file that begins like one of a kind; kHostNotRecognised for another.
int32_t LoadPng(const std::string& bytes, Picture& picture);
int32_t LoadTiff(const std::string& bytes, Picture& picture);
int32_t LoadNetpbm(const std::string& bytes, Picture& picture);
/// Whether the host would take a bitmap of this size; what is more is not even decoded.
bool IsTakeable(const Picture& picture);

}  // namespace tool
