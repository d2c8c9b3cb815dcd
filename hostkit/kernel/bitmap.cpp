// Bitmap records: allocation, rows, palettes' entries.
#include <algorithm>
#include <cstdlib>

#include "hostkit/kernel/internal.h"
#include "hostkit/kernel/large_pages.h"
#include "hostkit/kernel/row_threads.h"
#include "media/work.h"

namespace {

constexpr uint32_t kMaxDepth = 64;
constexpr uint32_t kMaxWidth = INT32_MAX / 4;  // a row converted to 24 bits stays countable
constexpr uint32_t kMaxPaletteDepth = 16;
constexpr const char16_t* kFile = u"bitmap";

uint32_t PaletteEntries(uint32_t bitsPerPixel) { return bitsPerPixel <= 8 ? 1u << bitsPerPixel : 0; }

void FillGreyRamp(KernelColour* colours, uint32_t bitsPerPixel) {
  const uint32_t count = PaletteEntries(bitsPerPixel);
  for (uint32_t i = 0; i < count; ++i) {
    const auto grey = static_cast<uint8_t>(i * 255 / (count - 1));
    colours[i] = {grey, grey, grey, 0};
  }
}

bool IsAccessed(const KernelBitmap& bitmap) { return (bitmap.flags & kBitmapAccessed) != 0; }
bool HasRow(const KernelBitmap* bitmap, uint32_t row) {
  return hostkit::IsAllocated(bitmap) && IsAccessed(*bitmap) && row < bitmap->height;
}

// What an allocation may ask for: pixels to keep (1) or to work on (2).
bool IsAllowed(uint32_t memoryKind, uint32_t colourOrder, uint32_t viewPerspective) {
  return (memoryKind == 1 || memoryKind == 2) && colourOrder <= kOrderGrey &&
         (viewPerspective == kViewTopLeft || viewPerspective == kViewBottomLeft);
}

// A palette of more than 8 bits stands apart from the rows.
bool HasOwnPalette(const KernelBitmap& bitmap) { return bitmap.bitsPerPixel > 8 && bitmap.palette != 0; }

// Bytes of the pixel rows, 0 when the geometry is refused.
uint64_t RowsSize(uint32_t width, uint32_t height, uint32_t bitsPerPixel, uint64_t* bytesPerLine) {
  if (width == 0 || height == 0 || bitsPerPixel == 0 || bitsPerPixel > kMaxDepth) return 0;
  if (width > kMaxWidth) return 0;
  if (!media::AllowsPixels(static_cast<uint64_t>(width) * height)) return 0;
  *bytesPerLine = (static_cast<uint64_t>(width) * bitsPerPixel + 31) / 32 * 4;
  if (*bytesPerLine > INT32_MAX || *bytesPerLine * height > INT32_MAX) return 0;
  return *bytesPerLine * height;
}

}  // namespace

int32_t ORB_CALL KernelInitialiseBitmap(KernelBitmap* bitmap, uint32_t recordSize, uint32_t width,
                                        uint32_t height, uint32_t bitsPerPixel) {
  if (bitmap == nullptr || recordSize != kBitmapRecordSize) return kHostInvalid;
  *bitmap = {};
  bitmap->size = recordSize;
  bitmap->width = width;
  bitmap->height = height;
  bitmap->bitsPerPixel = bitsPerPixel;
  return kHostOk;
}

int32_t ORB_CALL KernelAllocateBitmap(KernelBitmap* bitmap, uint32_t recordSize, uint32_t memoryKind,
                                      uint32_t width, uint32_t height, uint32_t bitsPerPixel,
                                      uint32_t colourOrder, HPALETTE palette, uint32_t viewPerspective,
                                      const void* data, uint32_t size) {
  if (bitmap == nullptr || recordSize != kBitmapRecordSize ||
      !IsAllowed(memoryKind, colourOrder, viewPerspective)) {
    return kHostInvalid;
  }
  uint64_t bytesPerLine = 0;
  const uint64_t bytes = RowsSize(width, height, bitsPerPixel, &bytesPerLine);
  if (bytes == 0 || HostkitShouldFail(kFaultAllocation)) return kHostNoMemory;
  // The palette stands behind the rows, so that a bitmap is one block.
  const size_t paletteBytes = PaletteEntries(bitsPerPixel) * sizeof(KernelColour);
  auto* block = static_cast<uint8_t*>(std::calloc(1, static_cast<size_t>(bytes) + paletteBytes));
  if (block == nullptr) return kHostNoMemory;
  hostkit::AskForLargePages(block, static_cast<size_t>(bytes));
  *bitmap = {};
  bitmap->size = recordSize;
  bitmap->memoryKind = memoryKind;
  bitmap->width = width;
  bitmap->height = height;
  bitmap->bitsPerPixel = bitsPerPixel;
  bitmap->bytesPerLine = static_cast<uint32_t>(bytesPerLine);
  bitmap->colourOrder = colourOrder;
  bitmap->viewPerspective = viewPerspective;
  bitmap->flags = kBitmapAllocated;
  bitmap->pixels = reinterpret_cast<uintptr_t>(block);
  bitmap->byteCount = bytes;
  if (paletteBytes != 0) {
    bitmap->palette = reinterpret_cast<uintptr_t>(block + bytes);
    bitmap->colourCount = PaletteEntries(bitsPerPixel);
    FillGreyRamp(hostkit::Palette(*bitmap), bitsPerPixel);
  }
  if (palette != nullptr) KernelSetPalette(bitmap, palette);
  if (data != nullptr) KernelSetBitmapData(bitmap, data, size);
  hostkit::Track(hostkit::kKindBitmap, block, bytes + paletteBytes, 0, kFile);
  return kHostOk;
}

int32_t ORB_CALL KernelFreeBitmap(KernelBitmap* bitmap) {
  if (!hostkit::IsAllocated(bitmap)) return kHostOk;
  if (HasOwnPalette(*bitmap)) {
    hostkit::Untrack(hostkit::kKindBitmap, hostkit::Palette(*bitmap));
    std::free(hostkit::Palette(*bitmap));
  }
  hostkit::Untrack(hostkit::kKindBitmap, hostkit::Pixels(*bitmap));
  std::free(hostkit::Pixels(*bitmap));
  bitmap->flags &= ~(kBitmapAllocated | kBitmapAccessed);
  bitmap->pixels = bitmap->palette = bitmap->byteCount = 0;
  bitmap->colourCount = 0;
  return kHostOk;
}

int32_t hostkit::TakePalette(KernelBitmap& bitmap, const KernelColour* colours, uint32_t count) {
  const uint32_t depth = bitmap.bitsPerPixel;
  if (depth > 8 && depth <= kMaxPaletteDepth && bitmap.palette == 0) {
    const uint32_t entries = std::min(count, 1u << depth);
    const size_t bytes = entries * sizeof(KernelColour);
    void* block = HostkitShouldFail(kFaultAllocation) ? nullptr : std::calloc(1, bytes);
    if (block == nullptr) return kHostNoMemory;
    Track(kKindBitmap, block, bytes, 0, kFile);
    bitmap.palette = reinterpret_cast<uintptr_t>(block);
    bitmap.colourCount = entries;
  }
  return KernelPutColours(&bitmap, 0, count, colours);
}

int32_t ORB_CALL KernelFillBitmap(KernelBitmap* bitmap, COLORREF colour) {
  if (!hostkit::IsAllocated(bitmap)) return kHostInvalid;
  if (!media::Spend(hostkit::PixelCount(*bitmap))) return kHostOverBudget;
  const uint8_t bgr[3] = {static_cast<uint8_t>(colour >> 16), static_cast<uint8_t>(colour >> 8),
                          static_cast<uint8_t>(colour)};
  hostkit::NearestColour nearest(*bitmap);
  uint8_t* first = hostkit::Row(*bitmap, 0);
  for (uint32_t x = 0; x < bitmap->width; ++x) hostkit::BgrToRow(*bitmap, nearest, bgr, x, 1, first);
  hostkit::ForRows(bitmap->height, bitmap->byteCount, [&](uint32_t row, uint32_t end) {
    for (row = std::max(row, 1u); row < end; ++row)
      std::memcpy(hostkit::Row(*bitmap, row), first, bitmap->bytesPerLine);
  });
  return kHostOk;
}

int32_t ORB_CALL KernelAccessBitmap(KernelBitmap* bitmap) {
  if (!hostkit::IsAllocated(bitmap) || IsAccessed(*bitmap)) return kHostInvalid;
  bitmap->flags |= kBitmapAccessed;
  return kHostOk;
}

int32_t ORB_CALL KernelReleaseBitmap(KernelBitmap* bitmap) {
  if (!hostkit::IsAllocated(bitmap) || !IsAccessed(*bitmap)) return kHostInvalid;
  bitmap->flags &= ~kBitmapAccessed;
  return kHostOk;
}

int32_t ORB_CALL KernelGetRow(KernelBitmap* bitmap, void* buffer, uint32_t row, uint32_t bytes) {
  if (!HasRow(bitmap, row) || buffer == nullptr) return kHostInvalid;
  std::memcpy(buffer, hostkit::Row(*bitmap, row), std::min(bytes, bitmap->bytesPerLine));
  return kHostOk;
}

int32_t ORB_CALL KernelPutRow(KernelBitmap* bitmap, const void* buffer, uint32_t row, uint32_t bytes) {
  if (!HasRow(bitmap, row) || buffer == nullptr) return kHostInvalid;
  std::memcpy(hostkit::Row(*bitmap, row), buffer, std::min(bytes, bitmap->bytesPerLine));
  return kHostOk;
}

int32_t ORB_CALL KernelGetColours(const KernelBitmap* bitmap, uint32_t first, uint32_t count,
                                  KernelColour* colours) {
  if (!hostkit::IsAllocated(bitmap) || colours == nullptr) return kHostInvalid;
  for (uint32_t i = 0; i < count && first < bitmap->colourCount; ++i, ++first) {
    colours[i] = hostkit::Palette(*bitmap)[first];
  }
  return kHostOk;
}

int32_t ORB_CALL KernelPutColours(KernelBitmap* bitmap, uint32_t first, uint32_t count,
                                  const KernelColour* colours) {
  if (!hostkit::IsAllocated(bitmap) || colours == nullptr) return kHostInvalid;
  for (uint32_t i = 0; i < count && first < bitmap->colourCount; ++i, ++first) {
    hostkit::Palette(*bitmap)[first] = colours[i];
  }
  return kHostOk;
}

KernelColour* ORB_CALL KernelMakePaletteTable(uint32_t bitsPerPixel, uint32_t line,
                                              const char16_t* file) {
  auto* colours = static_cast<KernelColour*>(KernelAllocate(256, sizeof(KernelColour), line, file));
  if (colours != nullptr && bitsPerPixel >= 1 && bitsPerPixel <= 8) FillGreyRamp(colours, bitsPerPixel);
  return colours;
}

int32_t ORB_CALL KernelPrepareScratchBitmap(KernelBitmap* bitmap) {
  if (!hostkit::IsAllocated(bitmap)) return kHostInvalid;
  (void)media::Spend(bitmap->byteCount / 8);
  std::memset(hostkit::Pixels(*bitmap), 0, static_cast<size_t>(bitmap->byteCount));
  return kHostOk;
}

int32_t ORB_CALL KernelSetBitmapData(KernelBitmap* bitmap, const void* buffer, uint32_t bytes) {
  if (!hostkit::IsAllocated(bitmap) || buffer == nullptr) return kHostInvalid;
  std::memcpy(hostkit::Pixels(*bitmap), buffer,
              std::min<size_t>(bytes, static_cast<size_t>(bitmap->byteCount)));
  return kHostOk;
}
