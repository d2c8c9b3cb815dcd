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

}  // namespace

Status EncodePicture(const KernelBitmap& bitmap, uint32_t format, uint32_t bitsPerPixel, int32_t quality,
                     AppendedData& data) {
  HostSaveOptions options;
  if (Status s = FillSaveOptions(options); !Ok(s)) return s;
  OwnedGlobal encoded;
  uint32_t count = 0;
  if (Status s = FromHost(FileFormatSaveBitmapMemory(&encoded.handle, &bitmap, format, bitsPerPixel,
                                                     quality, &count, &options));
      !Ok(s)) {
    return s;
  }
  if (Status s = encoded.Lock(ORB_HERE); !Ok(s)) return s;
  return data.Set(encoded.Bytes(), count, ORB_HERE);
}

Status EncodeDrawing(const VectorHandle& drawing, AppendedData& data) {
  HostSaveOptions options;
  if (Status s = FillSaveOptions(options); !Ok(s)) return s;
  OwnedGlobal encoded;
  uint32_t count = 0;
  if (Status s =
          FromHost(FileFormatSaveDrawingMemory(&encoded.handle, &drawing, kFormatCgm, &count, &options));
      !Ok(s)) {
    return s;
  }
  if (Status s = encoded.Lock(ORB_HERE); !Ok(s)) return s;
  if (count > kMaxGraphicBytes) return Status::InvalidParameter;
  return data.Set(encoded.Bytes(), count, ORB_HERE);
}
