#include "fuzz/support.h"

namespace {

using fuzz::Require;

void Start(VectorHandle& handle) {
  handle = {};
  handle.flags = kVectorHandleFlags;
  VectorInitialise(&handle);
  handle.flags2 = kVectorHandleFlags2;
}

int32_t Decode(const void* bytes, size_t count, VectorHandle& handle) {
  HostLoadOptions options;
  FileFormatDefaultLoadOptions(&options, kLoadOptionsSize);
  options.flags |= kLoadFlagsAlways;
  return FileFormatLoadDrawingMemory(bytes, &handle, static_cast<uint32_t>(count), &options, 0);
}

void Paint(const VectorHandle& drawing, int32_t side) {
  KernelBitmap canvas = {};
  if (KernelAllocateBitmap(&canvas, kBitmapRecordSize, 1, static_cast<uint32_t>(side),
                           static_cast<uint32_t>(side), 24, kOrderBgr, nullptr, kViewBottomLeft, nullptr,
                           0) != kHostOk) {
    return;
  }
  const HDC dc = KernelCreateBitmapDc(&canvas);
  const RECT whole = {0, 0, side, side};
  const int32_t status = VectorPaint(dc, &drawing, side, side, 0, 0, &whole, nullptr, 0);
  Require(status == kHostOk || status == kHostOverBudget || status == kHostNoMemory, "a known status");
  KernelDeleteBitmapDc(dc);
  KernelFreeBitmap(&canvas);
}

// What was encoded decodes.
void EncodeAndDecode(const VectorHandle& drawing) {
  HGLOBAL memory = nullptr;
  uint32_t bytes = 0;
  HostSaveOptions options;
  FileFormatDefaultSaveOptions(&options, kSaveOptionsSize);
  options.flags |= kSaveToMemory;
  if (FileFormatSaveDrawingMemory(&memory, &drawing, kFormatCgm, &bytes, &options) != kHostOk) return;
  VectorHandle again;
  Start(again);
  Require(Decode(GlobalLock(memory), bytes, again) == kHostOk, "what was encoded decodes");
  GlobalUnlock(memory);
  KernelFreeGlobal(memory, __LINE__, u"fuzz");
  VectorFree(&again);
}

}  // namespace

int fuzz::Drawing(const uint8_t* data, size_t size) {
  Begin(size);
  const int32_t side = 1 + Choices(data, size).Byte();
  VectorHandle drawing;
  Start(drawing);
  if (Decode(data, size, drawing) == kHostOk) {
    VectorPoint least, greatest;
    (void)VectorGetExtent(&drawing, &least, &greatest);
    Paint(drawing, side);
    EncodeAndDecode(drawing);
  }
  VectorFree(&drawing);
  RequireNothingHeld();
  return 0;
}
