#include "Common/Encode.h"

#include "Common/NtfHdr.h"

namespace {

constexpr char16_t kSourceFile[] = u"NitfFile";

constexpr uint64_t kMaxGraphicBytes = LargestOf(LengthFieldsOf(SegmentKind::Graphic).dataWidth);

Status FillSaveOptions(HostSaveOptions& options) {
  options = {};
  if (Status s = FromHost(FileFormatDefaultSaveOptions(&options, kSaveOptionsSize)); !Ok(s)) return s;
  options.size = kSaveOptionsSize;
  options.flags |= kSaveToMemory;
  return Status::Success;
}

// Has the host encode into global memory and keeps what it gave: -13 for more than `most` bytes.
template <class Save>
Status Encode(AppendedData& data, uint64_t most, Save save) {
  HostSaveOptions options;
  if (Status s = FillSaveOptions(options); !Ok(s)) return s;
  OwnedGlobal encoded;
  uint32_t count = 0;
  if (Status s = FromHost(save(&encoded.handle, &count, &options)); !Ok(s)) return s;
  if (Status s = encoded.Lock(ORB_HERE); !Ok(s)) return s;
  return count <= most ? data.Set(encoded.Bytes(), count, ORB_HERE) : Status::InvalidParameter;
}

}  // namespace

Status EncodePicture(const KernelBitmap& bitmap, uint32_t format, uint32_t bitsPerPixel, int32_t quality,
                     AppendedData& data) {
  const auto save = [&](HGLOBAL* memory, uint32_t* count, const HostSaveOptions* options) {
    return FileFormatSaveBitmapMemory(memory, &bitmap, format, bitsPerPixel, quality, count, options);
  };
  return Encode(data, UINT32_MAX, save);
}

Status EncodeDrawing(const VectorHandle& drawing, AppendedData& data) {
  const auto save = [&](HGLOBAL* memory, uint32_t* count, const HostSaveOptions* options) {
    return FileFormatSaveDrawingMemory(memory, &drawing, kFormatCgm, count, options);
  };
  return Encode(data, kMaxGraphicBytes, save);
}
