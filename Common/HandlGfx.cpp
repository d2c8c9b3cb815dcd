#include "Common/HandlGfx.h"

#include <cmath>

namespace {

constexpr char16_t kSourceFile[] = u"HandlGfx";

Status DecodeCgm(const void* bytes, uint32_t count, VectorHandle& drawing) {
  HostLoadOptions options = {};
  if (Status s = FromHost(FileFormatDefaultLoadOptions(&options, kLoadOptionsSize)); !Ok(s)) return s;
  options.flags |= kLoadFlagsAlways;
  return FromHost(FileFormatLoadDrawingMemory(bytes, &drawing, count, &options, 0));
}

Status AddObjectLayer(VectorHandle& drawing) {
  VectorLayer layer = {};
  constexpr std::u16string_view kName = u"Object Layer";
  kName.copy(layer.name, kVectorLayerNameLength);
  return FromHost(VectorAddLayer(&drawing, &layer));
}

Status PaintDrawing(HDC dc, NitfFile& document, GraphicSubheader& graphic, int32_t rowOffset,
                    int32_t columnOffset) {
  VectorHandle& drawing = graphic.drawing.handle;
  const RECT place = GraphicRectangle(graphic, rowOffset, columnOffset);
  (void)VectorSetPaintMode(&drawing, 1);
  (void)VectorSetBackground(&drawing, document.background);
  return FromHost(VectorPaint(dc, &drawing, place.right - place.left, std::abs(place.bottom - place.top),
                              0, 0, &place, nullptr, 0));
}

}  // namespace

RECT GraphicRectangle(const GraphicSubheader& graphic, int32_t rowOffset, int32_t columnOffset) {
  RECT place;
  const int32_t rowBase = graphic.SLOC.Row() + rowOffset;
  const int32_t columnBase = graphic.SLOC.Column() + columnOffset;
  (void)SetRect(&place, graphic.SBND1.first + columnBase, graphic.SBND1.second + rowBase,
                graphic.SBND2.first + columnBase, graphic.SBND2.second + rowBase);
  return place;
}

Status LoadSegmentDrawing(NitfFile& document, uint32_t index, VectorHandle& drawing) {
  const GraphicSubheader* graphic = document.graphics.At(index);
  if (graphic == nullptr) return Status::InvalidParameter;
  const uint32_t length = document.DataLength(SegmentKind::Graphic, index);
  KernelBuffer<uint8_t> bytes;
  if (length != 0) {
    if (document.SeekToData(SegmentKind::Graphic, index) < 0) return Status::ShortRead;
    if (Status s = RequireRemaining(document.FileHandle(), length); !Ok(s)) return s;
    if (Status s = bytes.Allocate(length, ORB_HERE); !Ok(s)) return s;
    if (Status s = ReadExactly(document.FileHandle(), bytes.data(), length); !Ok(s)) return s;
  }
  return graphic->HasForm('C') ? DecodeCgm(bytes.data(), length, drawing) : Status::Success;
}

Status LoadGraphicDrawing(NitfFile& document, uint32_t index) {
  GraphicSubheader* graphic = document.graphics.At(index);
  if (graphic == nullptr) return Status::InvalidParameter;
  graphic->drawing.Restart();
  Status status = LoadSegmentDrawing(document, index, graphic->drawing.handle);
  if (Ok(status) && graphic->HasForm('O')) status = AddObjectLayer(graphic->drawing.handle);
  if (!Ok(status)) graphic->drawing.Free();
  return status;
}

Status DrawGraphicSegment(HDC dc, NitfFile& document, uint32_t index, int32_t rowOffset,
                          int32_t columnOffset) {
  if (Status s = LoadGraphicDrawing(document, index); !Ok(s)) return s;
  GraphicSubheader& graphic = *document.graphics.At(index);
  const Status status = graphic.HasForm('C')
                            ? PaintDrawing(dc, document, graphic, rowOffset, columnOffset)
                            : Status::Success;
  if (!graphic.handleGiven) graphic.drawing.Restart();
  return status;
}
