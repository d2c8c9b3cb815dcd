// Filter entry points and drawing exports.
#include <algorithm>

#include "Common/HandlGfx.h"
#include "Common/HandlImg.h"
#include "Common/Utility.h"

namespace {

constexpr char16_t kSourceFile[] = u"Ntf";

constexpr uint32_t kCanvasBitsPerPixel = 24;
constexpr uint64_t kLargeCanvas = 16 << 20;  // pixels

void TakeOptions(NitfFile& document, HostLoadOptions* options) {
  if (options == nullptr) return;
  options->flags |= kLoadFlagsAlways;
  document.TakeOptions(options->flags);
}

void FillFileInfo(HostFileInfo& info, uint32_t width, uint32_t height) {
  const uint64_t bytesPerLine = ((uint64_t{width} * kCanvasBitsPerPixel + 31) >> 3) & ~uint64_t{3};
  info.format = kFormatNitf;
  info.width = width;
  info.height = height;
  info.bitsPerPixel = kCanvasBitsPerPixel;
  info.pageNumber = 1;
  info.pageCount = 1;
  info.imageBytes = Saturate32(bytesPerLine * height);
}

Status ReportSize(HostInformationRecord& record) {
  NitfFile document;
  (void)KernelSeek(record.file, 0, kSeekStart);
  TakeOptions(document, record.options);
  if (Status s = document.ReadDocument(record.fileName); !Ok(s)) return s;
  DisplayList list;
  if (Status s = BuildDisplayList(document, list); !Ok(s)) return s;
  uint32_t width = 0, height = 0;
  if (Status s = MeasureComposite(document, list, width, height); !Ok(s)) return s;
  if (record.info != nullptr) FillFileInfo(*record.info, width, height);
  return Status::Success;
}

Status DrawObjects(HostLoadRecord* record, HDC dc, NitfFile& document, const DisplayList& list) {
  ImagePainter images(record, dc, document);
  for (const DisplayItem& item : list.Items()) {
    if (item.kind == SegmentKind::Image) {
      if (Status s = images.Draw(item.index, item.rowOffset, item.columnOffset); !Ok(s)) return s;
    } else {
      if (Status s = images.Finish(); !Ok(s)) return s;
      if (Status s = DrawGraphicSegment(dc, document, item.index, item.rowOffset, item.columnOffset);
          !Ok(s)) {
        return s;
      }
    }
  }
  return images.Finish();
}

// A small file that claims a large canvas is found out before its pixels are touched: the failure with
// which drawing would end, as far as the segments in front tell.
Status FindMissingData(NitfFile& document, const DisplayList& list) {
  for (const DisplayItem& item : list.Items()) {
    bool known = false;
    if (item.kind != SegmentKind::Image) return Status::Success;
    if (Status s = RequireImageData(document, item.index, known); !Ok(s)) return s;
    if (!known) return Status::Success;
  }
  return Status::Success;
}

// Draws the composite into a fresh canvas. `drawn` receives the drawing's own result: any above 0 leaves
// the canvas to be used.
Status RenderCanvas(HostLoadRecord* record, NitfFile& document, uint32_t bitsPerPixel,
                    OwnedBitmap& canvas, Status& drawn) {
  DisplayList list;
  if (Status s = BuildDisplayList(document, list); !Ok(s)) return s;
  uint32_t width = 0, height = 0;
  if (Status s = MeasureComposite(document, list, width, height); !Ok(s)) return s;
  if (Status s = canvas.Allocate(width, height, bitsPerPixel, kOrderBgr, kViewBottomLeft); !Ok(s))
    return s;
  const bool large = uint64_t{width} * height > kLargeCanvas;
  const Status missing = large ? FindMissingData(document, list) : Status::Success;
  if (Ok(missing)) {
    if (Status s = FromHost(KernelFillBitmap(&canvas.record, document.background)); !Ok(s)) return s;
  }
  const BitmapDc dc(canvas.record);
  if (dc.get() == nullptr) return Status::OutOfMemory;
  if (!Ok(missing)) return missing;
  drawn = DrawObjects(record, dc.get(), document, list);
  return ToCaller(drawn) < 1 ? drawn : Status::Success;
}

Status DeliverBitmap(void* context, KernelBitmap* hostBitmap, KernelBitmap& canvas,
                     HostRowCallback callback, void* userData) {
  KernelBuffer<uint8_t> row;
  if (Status s = row.Allocate(canvas.bytesPerLine, ORB_HERE); !Ok(s)) return s;
  RowAccess rows(canvas);
  Status status = rows.Result();
  for (uint32_t r = 0; r < canvas.height && Ok(status); ++r) {
    if (Status s = rows.Get(row.data(), canvas.height - 1 - r); !Ok(s)) return s;
    const uint32_t flags =
        kRowAlways | (r == 0 ? kRowFirst : 0) | (r + 1 == canvas.height ? kRowLast : 0);
    status =
        FromHost(callback(context, hostBitmap, row.data(), flags, static_cast<int32_t>(r), 1, userData));
  }
  return status;
}

Status LoadComposite(HostLoadRecord& record) {
  NitfFile document;
  if (record.loadMemory == nullptr || record.setLoadCallback == nullptr || record.required2224 == 0 ||
      record.rowCallback == nullptr) {
    return Status::BadStructure;
  }
  TakeOptions(document, record.options);
  if (Status s = document.ReadDocument(record.fileName); !Ok(s)) return s;
  OwnedBitmap canvas;
  const uint32_t depth = record.bitmap != nullptr ? record.bitmap->bitsPerPixel : kCanvasBitsPerPixel;
  Status drawn = Status::Success;
  if (Status s = RenderCanvas(&record, document, depth, canvas, drawn); !Ok(s)) return s;
  return DeliverBitmap(record.callbackContext, record.bitmap, canvas.record, record.rowCallback,
                       record.userData);
}

}  // namespace

int32_t ORB_CALL fltInfo(HostInformationRecord* record) {
  return ToCaller(record != nullptr ? ReportSize(*record) : Status::InvalidParameter);
}

int32_t ORB_CALL fltLoad(HostLoadRecord* record) {
  return ToCaller(record != nullptr ? LoadComposite(*record) : Status::InvalidParameter);
}

int32_t ORB_CALL fltSave(void*) { return ToCaller(Status::Unsupported); }

int32_t ORB_CALL Orb_NtfRenderBitmap(KernelBitmap* bitmap, NitfHandle document) {
  if (bitmap == nullptr) return ToCaller(Status::InvalidParameter);
  if (document == nullptr) return ToCaller(Status::NullHandle);
  if ((bitmap->flags & kBitmapAllocated) != 0) (void)KernelFreeBitmap(bitmap);
  OwnedBitmap canvas;
  Status drawn = Status::Success;
  const Status status = RenderCanvas(nullptr, *document, kCanvasBitsPerPixel, canvas, drawn);
  if (!Ok(status)) return ToCaller(status);
  canvas.MoveTo(*bitmap);
  return ToCaller(drawn);
}

int32_t ORB_CALL Orb_NitfDrawObjects(HostLoadRecord* record, HDC dc, KernelBitmap*, NitfHandle document) {
  if (document == nullptr) return ToCaller(Status::NullHandle);
  DisplayList list;
  if (Status s = BuildDisplayList(*document, list); !Ok(s)) return ToCaller(s);
  return ToCaller(DrawObjects(record, dc, *document, list));
}
