// Decodes any bytes as a metafile, paints the drawing, encodes it and decodes what came of that.
#include <cstdlib>

#include "host/fileformat.h"
#include "hostkit/hostkit.h"

namespace {

void Paint(const VectorHandle& drawing) {
  constexpr uint32_t kSide = 64;
  KernelBitmap canvas = {};
  if (KernelAllocateBitmap(&canvas, kBitmapRecordSize, 1, kSide, kSide, 24, kOrderBgr, nullptr,
                           kViewBottomLeft, nullptr, 0) != 1) {
    return;
  }
  const HDC dc = KernelCreateBitmapDc(&canvas);
  const RECT whole = {0, 0, kSide, kSide};
  (void)VectorPaint(dc, &drawing, kSide, kSide, 0, 0, &whole, &whole, 0);
  KernelDeleteBitmapDc(dc);
  KernelFreeBitmap(&canvas);
}

// What was encoded decodes.
void EncodeAndDecode(const VectorHandle& drawing) {
  HGLOBAL memory = nullptr;
  uint32_t bytes = 0;
  if (FileFormatSaveDrawingMemory(&memory, &drawing, kFormatCgm, &bytes, nullptr) != 1) return;
  VectorHandle again = {};
  VectorInitialise(&again);
  if (FileFormatLoadDrawingMemory(GlobalLock(memory), &again, bytes, nullptr, 0) != 1) std::abort();
  GlobalUnlock(memory);
  KernelFreeGlobal(memory, __LINE__, u"fuzz");
  VectorFree(&again);
}

}  // namespace

extern "C" __attribute__((visibility("default"))) int LLVMFuzzerTestOneInput(const uint8_t* data,
                                                                             size_t size) {
  VectorHandle drawing = {};
  VectorInitialise(&drawing);
  if (FileFormatLoadDrawingMemory(data, &drawing, static_cast<uint32_t>(size), nullptr, 0) == 1) {
    VectorPoint least, greatest;
    (void)VectorGetExtent(&drawing, &least, &greatest);
    Paint(drawing);
    EncodeAndDecode(drawing);
  }
  VectorFree(&drawing);
  if (HostkitOutstanding(nullptr, 0) != 0) std::abort();
  return 0;
}
