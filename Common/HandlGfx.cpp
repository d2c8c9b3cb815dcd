#include "Common/HandlGfx.h"

#include <algorithm>
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

// Makes the view of a drawing its objects with some room around them, and `place` where that view stands
// with the drawing's origin at SLOC.
Status PutAtOrigin(VectorHandle& drawing, const GraphicSubheader& graphic, int32_t rowOffset,
                   int32_t columnOffset, RECT& place) {
  constexpr double kRoom = 256;
  if (VectorIsEmpty(&drawing) != 0) return Status::Success;
  VectorPoint least = {}, greatest = {};
  if (Status s = FromHost(VectorGetExtent(&drawing, &least, &greatest)); !Ok(s)) return s;
  const auto side = [](double value) {
    constexpr double kFarthest = 1 << 20;
    return static_cast<int32_t>(std::clamp(std::floor(value), -kFarthest, kFarthest));
  };
  const int32_t left = side(least.x - kRoom), top = side(-greatest.y - kRoom);
  const int32_t right = side(greatest.x + kRoom), bottom = side(-least.y + kRoom);
  RECT view;
  (void)SetRect(&view, left, top, right, bottom);
  if (Status s = FromHost(VectorSetViewRectangle(&drawing, &view)); !Ok(s)) return s;
  const int32_t row = graphic.SLOC.Row() + rowOffset, column = graphic.SLOC.Column() + columnOffset;
  (void)SetRect(&place, column + left, row + top, column + right, row + bottom);
  return Status::Success;
}

Status PaintDrawing(HDC dc, NitfFile& document, GraphicSubheader& graphic, int32_t rowOffset,
                    int32_t columnOffset) {
  VectorHandle& drawing = graphic.drawing.handle;
  RECT place = GraphicRectangle(document.header.rules, graphic, rowOffset, columnOffset);
  if (document.header.rules.drawingsAtOrigin) {
    if (Status s = PutAtOrigin(drawing, graphic, rowOffset, columnOffset, place); !Ok(s)) return s;
  }
  (void)VectorSetPaintMode(&drawing, 1);
  (void)VectorSetBackground(&drawing, document.background);
  return FromHost(VectorPaint(dc, &drawing, place.right - place.left, std::abs(place.bottom - place.top),
                              0, 0, &place, nullptr, 0));
}

}  // namespace

RECT GraphicRectangle(const DisplayRules& rules, const GraphicSubheader& graphic, int32_t rowOffset,
                      int32_t columnOffset) {
  RECT place;
  if (rules.drawingsAtOrigin) {
    (void)SetRect(&place, graphic.SBND1.Column() + columnOffset, graphic.SBND1.Row() + rowOffset,
                  graphic.SBND2.Column() + columnOffset, graphic.SBND2.Row() + rowOffset);
    return place;
  }
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
