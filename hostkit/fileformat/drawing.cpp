// The file-format library's calls on drawings.
#include <new>

#include "host/fileformat.h"
#include "hostkit/kernel/internal.h"
#include "hostkit/vector/handle.h"
#include "media/drawing/metafile.h"

int32_t ORB_CALL FileFormatLoadDrawingMemory(const void* bytes, VectorHandle* handle, uint32_t byteCount,
                                             const HostLoadOptions* options, uint32_t flags) {
  if (handle == nullptr || (bytes == nullptr && byteCount != 0)) return kHostInvalid;
  if (options == nullptr || options->size != kLoadOptionsSize || flags != 0 ||
      (options->flags & kLoadFlagsAlways) != kLoadFlagsAlways || handle->flags2 != kVectorHandleFlags2) {
    return kHostInvalid;
  }
  if (HostkitShouldFail(kFaultCodec)) return kHostBadData;
  if (HostkitShouldFail(kFaultAllocation)) return kHostNoMemory;
  try {
    hostkit::HeldDrawing drawing;
    const media::Outcome outcome =
        media::DecodeCgm(static_cast<const uint8_t*>(bytes), byteCount, drawing);
    if (outcome != media::Outcome::Ok) return hostkit::StatusOf(outcome);
    drawing.bytes = byteCount;
    hostkit::GiveDrawing(handle, std::move(drawing));
    return kHostOk;
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}

int32_t ORB_CALL FileFormatSaveDrawingMemory(HGLOBAL* memory, const VectorHandle* handle, uint32_t format,
                                             uint32_t* byteCount, const HostSaveOptions* options) {
  const hostkit::HeldDrawing* drawing = hostkit::DrawingOf(handle);
  if (memory == nullptr || byteCount == nullptr || drawing == nullptr) return kHostInvalid;
  if (options == nullptr || (options->flags & kSaveToMemory) == 0) return kHostInvalid;
  if (format != kFormatCgm) return kHostUnsupported;
  if (HostkitShouldFail(kFaultCodec)) return kHostUnsupported;
  try {
    const std::string encoded = media::EncodeCgm(*drawing);
    *memory = hostkit::CopyToGlobal(encoded);
    *byteCount = static_cast<uint32_t>(encoded.size());
    return *memory != nullptr ? kHostOk : kHostNoMemory;
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}
