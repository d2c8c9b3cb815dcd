#include "host/fileformat.h"
#include "hostkit/hostkit.h"

int32_t ORB_CALL FileFormatLoadDrawingMemory(const void*, VectorHandle*, uint32_t, const HostLoadOptions*,
                                             uint32_t) {
  return kHostOk;
}
