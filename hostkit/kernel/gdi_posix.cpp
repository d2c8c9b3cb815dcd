// Palette handles, global memory and device contexts where Windows has none to offer.
#include <new>

#include "hostkit/kernel/gdi.h"

namespace {

constexpr const char16_t* kFile = u"gdi";

struct GlobalBlock {
  size_t bytes;
};

}  // namespace

// A handle is a block with its size in front, which GlobalLock skips.
HGLOBAL hostkit::CopyToGlobal(const std::string& bytes) {
  if (HostkitShouldFail(kFaultAllocation)) return nullptr;
  auto* block =
      static_cast<GlobalBlock*>(::operator new(sizeof(GlobalBlock) + bytes.size(), std::nothrow));
  if (block == nullptr) return nullptr;
  block->bytes = bytes.size();
  std::memcpy(block + 1, bytes.data(), bytes.size());
  return block;
}

int32_t ORB_CALL KernelFreeGlobal(HGLOBAL memory, uint32_t, const char16_t*) {
  hostkit::Untrack(kResourceHandle, memory);
  ::operator delete(memory);
  return kHostOk;
}

HPALETTE ORB_CALL KernelCreatePalette(const KernelColour* colours, uint32_t count) {
  if (colours == nullptr || count == 0 || HostkitShouldFail(kFaultAllocation)) return nullptr;
  std::unique_ptr<KernelColour[]> entries(new (std::nothrow) KernelColour[count]);
  if (entries == nullptr) return nullptr;
  std::memcpy(entries.get(), colours, count * sizeof(KernelColour));
  return reinterpret_cast<HPALETTE>(new (std::nothrow) hostkit::PaletteObject{count, std::move(entries)});
}

int32_t ORB_CALL KernelDeleteObject(HPALETTE object, uint32_t, const char16_t*) {
  hostkit::Untrack(kResourceHandle, object);
  delete reinterpret_cast<hostkit::PaletteObject*>(object);
  return kHostOk;
}

int32_t ORB_CALL KernelSetPalette(KernelBitmap* bitmap, HPALETTE palette) {
  if (!hostkit::IsAllocated(bitmap) || palette == nullptr) return kHostInvalid;
  const auto* object = reinterpret_cast<const hostkit::PaletteObject*>(palette);
  return hostkit::TakePalette(*bitmap, object->entries.get(), object->count);
}

HDC ORB_CALL KernelCreateBitmapDc(KernelBitmap* bitmap) {
  if (!hostkit::IsAllocated(bitmap) || HostkitShouldFail(kFaultAllocation)) return nullptr;
  auto* context = new (std::nothrow) hostkit::DeviceContext{bitmap, nullptr};
  hostkit::Track(hostkit::kKindBitmap, context, sizeof *context, __LINE__, kFile);
  return reinterpret_cast<HDC>(context);
}

int32_t ORB_CALL KernelDeleteBitmapDc(HDC dc) {
  hostkit::Untrack(hostkit::kKindBitmap, dc);
  delete hostkit::Context(dc);
  return kHostOk;
}
