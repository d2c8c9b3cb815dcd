// What the stand-in kernel's files share with each other and with the other stand-in libraries.
#pragma once

#include <array>
#include <cstring>
#include <new>
#include <string>

#include "host/kernel.h"
#include "hostkit/hostkit.h"
#include "media/outcome.h"

namespace hostkit {

/// Leak tracker kinds beyond KernelResourceKind.
inline constexpr int32_t kKindMemory = 0;
inline constexpr int32_t kKindFile = 1;
inline constexpr int32_t kKindBitmap = 2;

/// An object that is made without memory of its own and outlives every other: for what static objects may
/// still use when they end.
template <class T>
class Immortal {
 public:
  Immortal() { new (bytes_) T; }
  Immortal(const Immortal&) = delete;
  Immortal& operator=(const Immortal&) = delete;
  T& Get() { return *std::launder(reinterpret_cast<T*>(bytes_)); }

 private:
  alignas(T) unsigned char bytes_[sizeof(T)];
};

/// The host's status of what work came to.
constexpr int32_t StatusOf(media::Outcome outcome) { return static_cast<int32_t>(outcome); }

void Track(int32_t kind, const void* resource, uint64_t bytes, uint32_t line, const char16_t* file);
void Untrack(int32_t kind, const void* resource);

/// Global memory blocks, the handles that GlobalLock opens. Null when memory is out.
HGLOBAL CopyToGlobal(const std::string& bytes);

std::string ToUtf8(const char16_t* text);

inline uint8_t* Pixels(const KernelBitmap& bitmap) {
  return reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(bitmap.pixels));
}
inline KernelColour* Palette(const KernelBitmap& bitmap) {
  return reinterpret_cast<KernelColour*>(static_cast<uintptr_t>(bitmap.palette));
}
inline uint8_t* Row(const KernelBitmap& bitmap, uint32_t row) {
  return Pixels(bitmap) + static_cast<size_t>(row) * bitmap.bytesPerLine;
}
/// Row `y` counted from the top of the picture, whatever the bitmap's row order.
inline uint8_t* PictureRow(const KernelBitmap& bitmap, uint32_t y) {
  return Row(bitmap, bitmap.viewPerspective == kViewBottomLeft ? bitmap.height - 1 - y : y);
}
inline uint64_t PixelCount(const KernelBitmap& bitmap) { return uint64_t{bitmap.width} * bitmap.height; }
inline bool IsAllocated(const KernelBitmap* bitmap) {
  return bitmap != nullptr && (bitmap->flags & kBitmapAllocated) != 0;
}

/// Gives a bitmap a copy of `count` palette entries; one of 9 to 16 bits has none before. A host status.
int32_t TakePalette(KernelBitmap& bitmap, const KernelColour* colours, uint32_t count);

/// The luminance of a blue, green, red triple, as the host weighs colours.
inline uint8_t Luminance(const uint8_t* bgr) {
  return static_cast<uint8_t>((114u * bgr[0] + 587u * bgr[1] + 299u * bgr[2]) / 1000);
}

/// Pixels of any depth to and from blue, green, red triples; `first` and `count` are pixels of the row.
void RowToBgr(const KernelBitmap& bitmap, const uint8_t* row, uint32_t first, uint32_t count,
              uint8_t* bgr);
/// Finds nearest palette entries and remembers what it found.
class NearestColour {
 public:
  explicit NearestColour(const KernelBitmap& bitmap) : bitmap_(bitmap) {}
  uint8_t Find(uint8_t blue, uint8_t green, uint8_t red);

 private:
  struct Remembered {
    uint32_t colour = 0;
    uint8_t index = 0;
  };
  uint8_t Search(uint8_t blue, uint8_t green, uint8_t red) const;

  const KernelBitmap& bitmap_;
  std::array<Remembered, 512> remembered_ = {};
};
void BgrToRow(const KernelBitmap& bitmap, NearestColour& nearest, const uint8_t* bgr, uint32_t first,
              uint32_t count, uint8_t* row);
/// Copies pixels between rows of one depth, at any bit position.
void CopyPixels(uint32_t bitsPerPixel, const uint8_t* source, uint32_t sourceFirst, uint8_t* destination,
                uint32_t destinationFirst, uint32_t count);

}  // namespace hostkit
