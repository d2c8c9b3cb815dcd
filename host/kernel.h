// The host toolkit's kernel library: memory with source tagging, leak tracking, files, bitmaps,
// palettes, device contexts and narrow-to-wide text. Operations return 1 for success unless said
// otherwise.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/windows.h"
#include "orbntf/host.h"

// ---------------------------------------------------------------- memory

/// Allocates `count` x `elementSize` zeroed bytes, tagged with the caller's line and wide source file
/// name (static text). Returns null when memory is out or the product overflows.
ORB_HOST_API void* ORB_CALL KernelAllocate(size_t count, size_t elementSize, uint32_t line,
                                           const char16_t* file);
/// Resizes a block (null allocates); bytes beyond the old size are zero. Returns null, the old block
/// untouched, when memory is out.
ORB_HOST_API void* ORB_CALL KernelReallocate(void* block, size_t bytes, uint32_t line,
                                             const char16_t* file);
/// Releases a block of KernelAllocate or KernelReallocate; null is ignored.
ORB_HOST_API void ORB_CALL KernelFree(void* block, uint32_t line, const char16_t* file);
ORB_HOST_API void ORB_CALL KernelCopyMemory(void* destination, const void* source, size_t bytes);
ORB_HOST_API void ORB_CALL KernelFillMemory(void* destination, uint8_t value, size_t bytes);

/// What a tracked resource is.
enum KernelResourceKind : int32_t {
  kResourceHandle = 3,  ///< global memory handle or GDI object
  kResourceObject = 4,  ///< object from new
  kResourceArray = 5,   ///< array from new[]
};
/// Enters a resource into the leak tracker.
ORB_HOST_API void ORB_CALL KernelTrackResource(int32_t kind, const void* resource, uint32_t line,
                                               const char16_t* file);
/// Takes a resource out of the leak tracker.
ORB_HOST_API void ORB_CALL KernelUntrackResource(int32_t kind, const void* resource, uint32_t line,
                                                 const char16_t* file);
/// Frees a global memory handle and its entry in the leak tracker.
ORB_HOST_API int32_t ORB_CALL KernelFreeGlobal(HGLOBAL memory, uint32_t line, const char16_t* file);
/// Deletes a GDI object (a palette) and its entry in the leak tracker.
ORB_HOST_API int32_t ORB_CALL KernelDeleteObject(HPALETTE object, uint32_t line, const char16_t* file);

// ---------------------------------------------------------------- files

inline constexpr int32_t kNoFile = -1;
inline constexpr int32_t kOpenRead = 0x8000;    ///< read only, binary
inline constexpr int32_t kOpenCreate = 0x8302;  ///< read and write, create, truncate, binary
inline constexpr int32_t kPermissionRead = 0x100;
inline constexpr int32_t kPermissionWrite = 0x80;
enum KernelSeekOrigin : int32_t { kSeekStart = 0, kSeekCurrent = 1, kSeekEnd = 2 };

/// Opens a file by its wide path; returns its handle or -1.
ORB_HOST_API int32_t ORB_CALL KernelOpen(const char16_t* path, int32_t flags, int32_t permission);
/// Moves bytes; returns how many were moved. Fewer than asked is a failure.
ORB_HOST_API uint32_t ORB_CALL KernelRead(int32_t file, void* buffer, uint32_t count);
ORB_HOST_API uint32_t ORB_CALL KernelWrite(int32_t file, const void* buffer, uint32_t count);
/// Moves the position and returns it, -1 when it cannot be moved there. Costs no system call.
ORB_HOST_API int64_t ORB_CALL KernelSeek(int32_t file, int64_t offset, int32_t origin);
/// Closes a file. Anything but 1 says that bytes written earlier did not reach the disk.
ORB_HOST_API int32_t ORB_CALL KernelClose(int32_t file);

// ---------------------------------------------------------------- bitmaps

inline constexpr uint32_t kBitmapRecordSize = ORB_BITMAP_RECORD_SIZE;
inline constexpr uint32_t kBitmapAllocated = ORB_BITMAP_ALLOCATED;  ///< bit of KernelBitmap::flags
inline constexpr uint32_t kBitmapAccessed = ORB_BITMAP_ACCESSED;    ///< between access and release

/// Order of a pixel's colour bytes.
enum KernelColourOrder : uint32_t {
  kOrderRgb = ORB_ORDER_RGB,
  kOrderBgr = ORB_ORDER_BGR,
  kOrderGrey = ORB_ORDER_GREY,
  kOrderAsDecoded = ORB_ORDER_AS_DECODED,  ///< asks a decoder for its own order
};
/// Corner of the picture at which kernel row 0 begins.
enum KernelView : uint32_t { kViewTopLeft = ORB_VIEW_TOP_LEFT, kViewBottomLeft = ORB_VIEW_BOTTOM_LEFT };

/// One palette entry, as Windows lays it out.
struct KernelColour {
  uint8_t blue, green, red, reserved;
};

static_assert(sizeof(KernelBitmap) == kBitmapRecordSize && offsetof(KernelBitmap, width) == 12 &&
              offsetof(KernelBitmap, height) == 16 && offsetof(KernelBitmap, bitsPerPixel) == 20 &&
              offsetof(KernelBitmap, bytesPerLine) == 24 && offsetof(KernelBitmap, colourOrder) == 28 &&
              offsetof(KernelBitmap, viewPerspective) == 32 && offsetof(KernelBitmap, flags) == 36 &&
              offsetof(KernelBitmap, colourCount) == 40 && offsetof(KernelBitmap, pixels) == 48 &&
              offsetof(KernelBitmap, palette) == 56 && offsetof(KernelBitmap, byteCount) == 64);

// Making and freeing a bitmap's pixels: see orbntf/host.h.

/// Fills every pixel with the colour, or its nearest palette entry.
ORB_HOST_API int32_t ORB_CALL KernelFillBitmap(KernelBitmap* bitmap, COLORREF colour);
/// Row access goes between KernelAccessBitmap and KernelReleaseBitmap.
ORB_HOST_API int32_t ORB_CALL KernelAccessBitmap(KernelBitmap* bitmap);
ORB_HOST_API int32_t ORB_CALL KernelGetRow(KernelBitmap* bitmap, void* buffer, uint32_t row,
                                           uint32_t bytes);
ORB_HOST_API int32_t ORB_CALL KernelPutRow(KernelBitmap* bitmap, const void* buffer, uint32_t row,
                                           uint32_t bytes);
ORB_HOST_API int32_t ORB_CALL KernelReleaseBitmap(KernelBitmap* bitmap);
/// Copy palette entries out of and into a bitmap; entries beyond the palette are left alone.
ORB_HOST_API int32_t ORB_CALL KernelGetColours(const KernelBitmap* bitmap, uint32_t first, uint32_t count,
                                               KernelColour* colours);
ORB_HOST_API int32_t ORB_CALL KernelPutColours(KernelBitmap* bitmap, uint32_t first, uint32_t count,
                                               const KernelColour* colours);
/// Makes the default colour table of a depth: 256 entries, the grey ramp first; freed with KernelFree.
ORB_HOST_API KernelColour* ORB_CALL KernelMakePaletteTable(uint32_t bitsPerPixel, uint32_t line,
                                                           const char16_t* file);
/// Makes a palette handle; null when memory is out. Freed with KernelDeleteObject.
ORB_HOST_API HPALETTE ORB_CALL KernelCreatePalette(const KernelColour* colours, uint32_t count);
/// Gives a bitmap a copy of a palette's entries.
ORB_HOST_API int32_t ORB_CALL KernelSetPalette(KernelBitmap* bitmap, HPALETTE palette);
/// Opens a device context that paints on a bitmap; null on failure. The bitmap has what was painted once
/// the context is deleted.
ORB_HOST_API HDC ORB_CALL KernelCreateBitmapDc(KernelBitmap* bitmap);
ORB_HOST_API int32_t ORB_CALL KernelDeleteBitmapDc(HDC dc);
/// Clears a readers' scratch bitmap for its next block.
ORB_HOST_API int32_t ORB_CALL KernelPrepareScratchBitmap(KernelBitmap* bitmap);
/// Copies rows in one piece into a bitmap; `bytes` are cut to what it holds.
ORB_HOST_API int32_t ORB_CALL KernelSetBitmapData(KernelBitmap* bitmap, const void* buffer,
                                                  uint32_t bytes);

// ---------------------------------------------------------------- text

/// Converts a narrow string (UTF-8) to UTF-16. Construct, Convert, take Value, destroy.
class Orb_A2W {
 public:
  Orb_A2W() = default;
  ~Orb_A2W() { Release(); }
  Orb_A2W(const Orb_A2W&) = delete;
  Orb_A2W& operator=(const Orb_A2W&) = delete;

  /// Returns non-zero when the string was converted; null gives 0.
  int32_t Convert(const char* narrow);
  const char16_t* Value() const { return text_; }

 private:
  void Release();
  char16_t* text_ = nullptr;
};
/// The work behind Orb_A2W: a block freed with KernelFree, null on failure.
ORB_HOST_API char16_t* ORB_CALL KernelWiden(const char* narrow);

inline int32_t Orb_A2W::Convert(const char* narrow) {
  Release();
  text_ = KernelWiden(narrow);
  return text_ != nullptr;
}
inline void Orb_A2W::Release() {
  KernelFree(text_, __LINE__, u"kernel");
  text_ = nullptr;
}
