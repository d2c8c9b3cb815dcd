// A build without the drawing library: drawings are read, changed and written, but not painted.
#include "host/vector.h"
#include "hostkit/hostkit.h"

int32_t ORB_CALL VectorPaint(HDC, const VectorHandle*, int32_t, int32_t, int32_t, int32_t, const RECT*,
                             const RECT*, uint32_t) {
  return kHostUnsupported;
}
