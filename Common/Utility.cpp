#include "Common/Utility.h"

#include <algorithm>
#include <cmath>

#include "Common/HandlGfx.h"

namespace {

constexpr uint32_t kFixedCanvasSide = 2048;
constexpr uint32_t kTextOnlySide = 2;

// Grows towards the right and bottom edges of the segments.
struct Extent {
  int64_t width = 0;
  int64_t height = 0;
  void Add(int64_t right, int64_t bottom) {
    width = std::max(width, right);
    height = std::max(height, bottom);
  }
};

Status AddImage(const ImageSubheader& image, const DisplayItem& item, Extent& extent) {
  const CheckedSize width = image.FullWidth(), height = image.FullHeight();
  if (!width.Within(kMaxSide) || !height.Within(kMaxSide)) return Status::OutOfMemory;
  extent.Add(int64_t{image.ILOC.Column()} + static_cast<int64_t>(width.Value()) + item.columnOffset,
             int64_t{image.ILOC.Row()} + static_cast<int64_t>(height.Value()) + item.rowOffset);
  return Status::Success;
}

Status AddGraphic(NitfFile& document, const DisplayItem& item, Extent& extent) {
  const GraphicSubheader& graphic = *document.graphics.At(item.index);
  OwnedDrawing drawing;
  if (Status s = LoadSegmentDrawing(document, item.index, drawing.handle); !Ok(s)) return s;
  if (!graphic.HasForm('C')) {
    extent.Add(int64_t{graphic.SBND2.second} + item.columnOffset,
               int64_t{graphic.SBND2.first} + item.rowOffset);
    return Status::Success;
  }
  const RECT bounds = GraphicRectangle(graphic, item.rowOffset, item.columnOffset);
  extent.Add(std::abs(int64_t{bounds.right}), std::abs(int64_t{bounds.bottom}));
  return Status::Success;
}

}  // namespace

Status MeasureComposite(NitfFile& document, const DisplayList& list, uint32_t& width, uint32_t& height) {
  if (document.fixedCanvas) {
    width = height = kFixedCanvasSide;
    return Status::Success;
  }
  if (list.Count() == 0 && document.TextCount() != 0) {
    width = height = kTextOnlySide;
    return Status::Success;
  }
  Extent extent;
  for (const DisplayItem& item : list.Items()) {
    const Status status = item.kind == SegmentKind::Image
                              ? AddImage(*document.images.At(item.index), item, extent)
                              : AddGraphic(document, item, extent);
    if (!Ok(status)) return status;
  }
  if (extent.width > INT32_MAX || extent.height > INT32_MAX) return Status::OutOfMemory;
  width = static_cast<uint32_t>(extent.width);
  height = static_cast<uint32_t>(extent.height);
  if (width == 0 && height == 0) width = height = kFixedCanvasSide;
  return Status::Success;
}

int32_t ORB_CALL GetActual_Width_Height(NitfHandle document, uint32_t* width, uint32_t* height) {
  if (document == nullptr) return ToCaller(Status::NullHandle);
  if (width == nullptr || height == nullptr) return ToCaller(Status::InvalidParameter);
  DisplayList list;
  if (Status s = BuildDisplayList(*document, list); !Ok(s)) return ToCaller(s);
  return ToCaller(MeasureComposite(*document, list, *width, *height));
}
