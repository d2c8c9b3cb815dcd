// Palettes, global memory and device contexts of Windows.
//
// A device context on a bitmap paints on a 24-bit DIB section that starts as a copy of the bitmap. What
// changed on it goes back to the bitmap when the context is deleted.
#include <cstring>
#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

#include "hostkit/kernel/internal.h"

namespace {

constexpr const char16_t* kFile = u"gdi";
constexpr uint32_t kPaletteVersion = 0x300;

struct Surface {
  KernelBitmap* bitmap;
  HBITMAP section;
  HGDIOBJ selectedBefore;
  uint8_t* bits;
  std::vector<uint8_t> row;  // taken early: what was painted is never lost for want of memory
  size_t Stride() const { return (3 * static_cast<size_t>(bitmap->width) + 3) & ~size_t{3}; }
};

std::mutex surfacesMutex;
std::unordered_map<HDC, Surface>& Surfaces() {
  static auto* surfaces = new std::unordered_map<HDC, Surface>;
  return *surfaces;
}

// GDI's palettes show the first colours of long ones; all of them are kept here.
constexpr uint32_t kGdiColours = 256;
std::unordered_map<HPALETTE, std::vector<KernelColour>>& LongPalettes() {
  static auto* palettes = new std::unordered_map<HPALETTE, std::vector<KernelColour>>;
  return *palettes;
}

void CopyIn(const Surface& surface) {
  const KernelBitmap& bitmap = *surface.bitmap;
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    hostkit::RowToBgr(bitmap, hostkit::PictureRow(bitmap, y), 0, bitmap.width,
                      surface.bits + y * surface.Stride());
  }
}

// Pixels that were not painted keep bits that 24-bit colour cannot hold.
void CopyChangesBack(Surface& surface) {
  const KernelBitmap& bitmap = *surface.bitmap;
  std::vector<uint8_t>& before = surface.row;
  hostkit::NearestColour nearest(bitmap);
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    uint8_t* row = hostkit::PictureRow(bitmap, y);
    const uint8_t* painted = surface.bits + y * surface.Stride();
    hostkit::RowToBgr(bitmap, row, 0, bitmap.width, before.data());
    if (std::memcmp(before.data(), painted, before.size()) == 0) continue;
    const auto differs = [&](uint32_t x) {
      return std::memcmp(&before[3 * size_t{x}], painted + 3 * size_t{x}, 3) != 0;
    };
    for (uint32_t x = 0; x < bitmap.width;) {
      const uint32_t first = x;
      while (x < bitmap.width && differs(x)) ++x;
      hostkit::BgrToRow(bitmap, nearest, painted + 3 * size_t{first}, first, x - first, row);
      while (x < bitmap.width && !differs(x)) ++x;
    }
  }
}

bool MakeSection(HDC dc, Surface& surface) {
  BITMAPINFO form = {};
  form.bmiHeader.biSize = sizeof form.bmiHeader;
  form.bmiHeader.biWidth = static_cast<LONG>(surface.bitmap->width);
  form.bmiHeader.biHeight = -static_cast<LONG>(surface.bitmap->height);  // top row first
  form.bmiHeader.biPlanes = 1;
  form.bmiHeader.biBitCount = 24;
  void* bits = nullptr;
  surface.section = CreateDIBSection(dc, &form, DIB_RGB_COLORS, &bits, nullptr, 0);
  surface.bits = static_cast<uint8_t*>(bits);
  return surface.section != nullptr;
}

void ReleaseSurface(HDC dc, const Surface& surface) {
  if (surface.section != nullptr) {
    SelectObject(dc, surface.selectedBefore);
    DeleteObject(surface.section);
  }
  DeleteDC(dc);
}

}  // namespace

HGLOBAL hostkit::CopyToGlobal(const std::string& bytes) {
  if (HostkitShouldFail(kFaultAllocation)) return nullptr;
  // A moveable block of no bytes has nothing to lock.
  const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, bytes.empty() ? 1 : bytes.size());
  if (memory == nullptr) return nullptr;
  if (void* to = GlobalLock(memory)) {
    std::memcpy(to, bytes.data(), bytes.size());
    GlobalUnlock(memory);
    return memory;
  }
  GlobalFree(memory);
  return nullptr;
}

int32_t ORB_CALL KernelFreeGlobal(HGLOBAL memory, uint32_t, const char16_t*) {
  hostkit::Untrack(kResourceHandle, memory);
  return memory == nullptr || GlobalFree(memory) == nullptr ? kHostOk : kHostInvalid;
}

HPALETTE ORB_CALL KernelCreatePalette(const KernelColour* colours, uint32_t count) {
  if (colours == nullptr || count == 0 || HostkitShouldFail(kFaultAllocation)) return nullptr;
  struct {
    WORD version, count;
    PALETTEENTRY entries[kGdiColours];
  } palette = {kPaletteVersion, static_cast<WORD>(count < kGdiColours ? count : kGdiColours), {}};
  for (uint32_t i = 0; i < palette.count; ++i) {
    palette.entries[i] = {colours[i].red, colours[i].green, colours[i].blue, 0};
  }
  const HPALETTE handle = CreatePalette(reinterpret_cast<const LOGPALETTE*>(&palette));
  if (handle == nullptr || count <= kGdiColours) return handle;
  try {
    std::lock_guard<std::mutex> lock(surfacesMutex);
    LongPalettes()[handle].assign(colours, colours + count);
    return handle;
  } catch (const std::bad_alloc&) {
    DeleteObject(handle);
    return nullptr;
  }
}

int32_t ORB_CALL KernelDeleteObject(HPALETTE object, uint32_t, const char16_t*) {
  hostkit::Untrack(kResourceHandle, object);
  {
    std::lock_guard<std::mutex> lock(surfacesMutex);
    LongPalettes().erase(object);
  }
  return object == nullptr || DeleteObject(object) ? kHostOk : kHostInvalid;
}

int32_t ORB_CALL KernelSetPalette(KernelBitmap* bitmap, HPALETTE palette) {
  if (!hostkit::IsAllocated(bitmap) || palette == nullptr) return kHostInvalid;
  {
    std::lock_guard<std::mutex> lock(surfacesMutex);
    const auto found = LongPalettes().find(palette);
    if (found != LongPalettes().end()) {
      const std::vector<KernelColour>& colours = found->second;
      return hostkit::TakePalette(*bitmap, colours.data(), static_cast<uint32_t>(colours.size()));
    }
  }
  PALETTEENTRY entries[kGdiColours];
  const UINT count = GetPaletteEntries(palette, 0, kGdiColours, entries);
  KernelColour colours[kGdiColours];
  for (UINT i = 0; i < count; ++i) {
    colours[i] = {entries[i].peBlue, entries[i].peGreen, entries[i].peRed, 0};
  }
  return count > 0 ? hostkit::TakePalette(*bitmap, colours, count) : kHostInvalid;
}

HDC ORB_CALL KernelCreateBitmapDc(KernelBitmap* bitmap) {
  if (!hostkit::IsAllocated(bitmap) || HostkitShouldFail(kFaultAllocation)) return nullptr;
  const HDC dc = CreateCompatibleDC(nullptr);
  if (dc == nullptr) return nullptr;
  Surface surface = {bitmap, nullptr, nullptr, nullptr, {}};
  try {
    surface.row.resize(3 * static_cast<size_t>(bitmap->width));
    if (MakeSection(dc, surface)) {
      surface.selectedBefore = SelectObject(dc, surface.section);
      CopyIn(surface);
      hostkit::Track(hostkit::kKindBitmap, dc, 0, __LINE__, kFile);
      std::lock_guard<std::mutex> lock(surfacesMutex);
      Surfaces()[dc] = std::move(surface);
      return dc;
    }
  } catch (const std::bad_alloc&) {
    hostkit::Untrack(hostkit::kKindBitmap, dc);
  }
  ReleaseSurface(dc, surface);
  return nullptr;
}

int32_t ORB_CALL KernelDeleteBitmapDc(HDC dc) {
  Surface surface;
  {
    std::lock_guard<std::mutex> lock(surfacesMutex);
    const auto found = Surfaces().find(dc);
    if (found == Surfaces().end()) return kHostInvalid;
    surface = std::move(found->second);
    Surfaces().erase(found);
  }
  hostkit::Untrack(hostkit::kKindBitmap, dc);
  GdiFlush();
  CopyChangesBack(surface);
  ReleaseSurface(dc, surface);
  return kHostOk;
}
