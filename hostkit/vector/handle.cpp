// The vector library's calls.
#include <algorithm>
#include <cmath>
#include <new>

#include "hostkit/kernel/internal.h"
#include "hostkit/vector/handle.h"
#include "media/drawing/outline.h"

using hostkit::DrawingOf;
using hostkit::HeldDrawing;

namespace {

constexpr const char16_t* kFile = u"vector";

int32_t Guarded(auto work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}

void Translate(HeldDrawing& drawing, double dx, double dy) {
  using media::ObjectKind;
  for (media::Layer& layer : drawing.layers) {
    for (media::Object& object : layer.objects) {
      const bool arc = object.kind == ObjectKind::ArcCentre || object.kind == ObjectKind::ArcCentreClose;
      const bool elliptical =
          object.kind == ObjectKind::EllipticalArc || object.kind == ObjectKind::EllipticalArcClose;
      const size_t moved = arc ? 1 : elliptical ? 3 : object.points.size();
      for (size_t i = 0; i < std::min(moved, object.points.size()); ++i) {
        object.points[i] = {object.points[i].x + dx, object.points[i].y + dy};
      }
      media::Attributes attributes = *object.attributes;
      for (media::Point* p : {&attributes.clipBox.first, &attributes.clipBox.second})
        *p = {p->x + dx, p->y + dy};
      object.attributes = std::make_shared<const media::Attributes>(attributes);
    }
  }
}

}  // namespace

void hostkit::GiveDrawing(VectorHandle* handle, HeldDrawing drawing) {
  auto* owned = new HeldDrawing(std::move(drawing));
  VectorFree(handle);
  Track(kKindMemory, owned, sizeof *owned, __LINE__, kFile);
  handle->drawing = owned;
}

int32_t ORB_CALL VectorInitialise(VectorHandle* handle) {
  if (handle == nullptr || handle->flags != kVectorHandleFlags) return kHostInvalid;
  handle->drawing = nullptr;
  return kHostOk;
}

int32_t ORB_CALL VectorIsEmpty(const VectorHandle* handle) { return DrawingOf(handle) == nullptr; }

int32_t ORB_CALL VectorFree(VectorHandle* handle) {
  HeldDrawing* drawing = DrawingOf(handle);
  if (drawing == nullptr) return kHostOk;
  hostkit::Untrack(hostkit::kKindMemory, drawing);
  delete drawing;
  handle->drawing = nullptr;
  return kHostOk;
}

int32_t ORB_CALL VectorCopy(VectorHandle* destination, const VectorHandle* source, uint32_t) {
  const HeldDrawing* drawing = DrawingOf(source);
  if (destination == nullptr || drawing == nullptr) return kHostInvalid;
  if (HostkitShouldFail(kFaultAllocation)) return kHostNoMemory;
  return Guarded([&] {
    hostkit::GiveDrawing(destination, *drawing);
    return kHostOk;
  });
}

int32_t ORB_CALL VectorSetBackground(VectorHandle* handle, COLORREF colour) {
  if (HeldDrawing* drawing = DrawingOf(handle)) drawing->behind = colour;
  return kHostOk;
}

int32_t ORB_CALL VectorSetPaintMode(VectorHandle* handle, uint32_t mode) {
  return handle != nullptr && mode == 1 ? kHostOk : kHostInvalid;
}

int32_t ORB_CALL VectorGetExtent(const VectorHandle* handle, VectorPoint* least, VectorPoint* greatest) {
  const HeldDrawing* drawing = DrawingOf(handle);
  if (drawing == nullptr || least == nullptr || greatest == nullptr) return kHostInvalid;
  return Guarded([&] {
    media::Point low, high;
    media::FindExtent(*drawing, media::TextBox::Full, low, high);
    // Drawings of whole units stay so where their holder moves them by their extent.
    if (drawing->wholeUnits) {
      low = {std::floor(low.x), std::floor(low.y)};
      high = {std::ceil(high.x), std::ceil(high.y)};
    }
    *least = {low.x, low.y, 0};
    *greatest = {high.x, high.y, 0};
    return kHostOk;
  });
}

int32_t ORB_CALL VectorAddLayer(VectorHandle* handle, const VectorLayer* layer) {
  if (handle == nullptr || layer == nullptr) return kHostInvalid;
  if (HostkitShouldFail(kFaultAllocation)) return kHostNoMemory;
  return Guarded([&] {
    size_t length = 0;
    while (length < kVectorLayerNameLength && layer->name[length] != 0) ++length;
    if (DrawingOf(handle) == nullptr) hostkit::GiveDrawing(handle, {});
    DrawingOf(handle)->layers.push_back({std::u16string(layer->name, length), {}});
    return kHostOk;
  });
}

int32_t ORB_CALL VectorSetTranslation(VectorHandle* handle, const VectorTranslation* translation,
                                      const void*, uint32_t) {
  HeldDrawing* drawing = DrawingOf(handle);
  if (drawing == nullptr || translation == nullptr) return kHostInvalid;
  drawing->translation = *translation;
  return kHostOk;
}

int32_t ORB_CALL VectorApplyTranslation(VectorHandle* handle) {
  HeldDrawing* drawing = DrawingOf(handle);
  if (drawing == nullptr) return kHostInvalid;
  return Guarded([&] {
    Translate(*drawing, drawing->translation.x, drawing->translation.y);
    drawing->translation = {};
    return kHostOk;
  });
}

int32_t ORB_CALL VectorResetTranslation(VectorHandle* handle, const void*, uint32_t) {
  HeldDrawing* drawing = DrawingOf(handle);
  if (drawing == nullptr) return kHostInvalid;
  drawing->translation = {};
  return kHostOk;
}

int32_t ORB_CALL VectorSetViewRectangle(VectorHandle* handle, const RECT* rectangle) {
  HeldDrawing* drawing = DrawingOf(handle);
  if (drawing == nullptr || rectangle == nullptr) return kHostInvalid;
  return Guarded([&] {
    const double top = rectangle->top, bottom = rectangle->bottom;
    media::SetExtent(*drawing, {{static_cast<double>(rectangle->left), -bottom},
                                {static_cast<double>(rectangle->right), -top}});
    return kHostOk;
  });
}

int32_t ORB_CALL VectorResetOrigin(VectorHandle* handle, const void*, uint32_t) {
  return DrawingOf(handle) != nullptr ? kHostOk : kHostInvalid;
}
int32_t ORB_CALL VectorResetRotation(VectorHandle* handle, uint32_t) {
  return DrawingOf(handle) != nullptr ? kHostOk : kHostInvalid;
}
int32_t ORB_CALL VectorResetScale(VectorHandle* handle, uint32_t) {
  return DrawingOf(handle) != nullptr ? kHostOk : kHostInvalid;
}
