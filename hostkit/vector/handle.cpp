#include "host/vector.h"

#include "hostkit/hostkit.h"

int32_t ORB_CALL VectorInitialise(VectorHandle* handle) {
  handle->drawing = nullptr;
  return kHostOk;
}
int32_t ORB_CALL VectorIsEmpty(const VectorHandle* handle) { return handle->drawing == nullptr; }
int32_t ORB_CALL VectorFree(VectorHandle*) { return kHostOk; }
int32_t ORB_CALL VectorSetBackground(VectorHandle*, COLORREF) { return kHostOk; }
int32_t ORB_CALL VectorSetPaintMode(VectorHandle*, uint32_t) { return kHostOk; }
int32_t ORB_CALL VectorPaint(HDC, const VectorHandle*, int32_t, int32_t, int32_t, int32_t, const RECT*,
                             const RECT*, uint32_t) {
  return kHostOk;
}
int32_t ORB_CALL VectorAddLayer(VectorHandle*, const VectorLayer*) { return kHostOk; }
