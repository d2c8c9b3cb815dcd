// Painting a drawing into a device context's bitmap.
#include <algorithm>
#include <cmath>
#include <new>

#include "hostkit/kernel/gdi.h"
#include "hostkit/vector/handle.h"
#include "media/drawing/picture.h"
#include "media/drawing/reach.h"
#include "media/drawing/surface.h"

namespace hostkit {
namespace {

using media::DeviceMap;
using media::Drawing;
using media::Extent;
using media::Painting;
using media::Reach;
using media::SurfacePtr;

// Lays a painted surface over the canvas: untouched pixels stay as they are.
void Blend(const SurfacePtr& surface, KernelBitmap& canvas, uint32_t left, uint32_t top) {
  const auto width = static_cast<uint32_t>(cairo_image_surface_get_width(surface.get()));
  const auto height = static_cast<uint32_t>(cairo_image_surface_get_height(surface.get()));
  const auto stride = static_cast<size_t>(cairo_image_surface_get_stride(surface.get()));
  const uint8_t* bytes = cairo_image_surface_get_data(surface.get());
  NearestColour nearest(canvas);
  for (uint32_t y = 0; y < height; ++y) {
    uint8_t* row = PictureRow(canvas, top + y);
    for (uint32_t x = 0; x < width; ++x) {
      uint32_t pixel;
      std::memcpy(&pixel, bytes + y * stride + 4 * size_t{x}, 4);
      const uint32_t alpha = pixel >> 24;
      if (alpha == 0) continue;
      uint8_t bgr[3];
      RowToBgr(canvas, row, left + x, 1, bgr);
      for (uint32_t c = 0; c < 3; ++c) {
        const uint32_t painted = pixel >> (8 * c) & 255;
        bgr[c] = static_cast<uint8_t>(std::min(255u, painted + (bgr[c] * (255 - alpha) + 127) / 255));
      }
      BgrToRow(canvas, nearest, bgr, left + x, 1, row);
    }
  }
}

// Pixels of a canvas, from (left, top) to in front of (right, bottom).
struct PixelArea {
  int64_t left, top, right, bottom;
  double Count() const {
    return static_cast<double>(std::max<int64_t>(0, right - left)) *
           static_cast<double>(std::max<int64_t>(0, bottom - top));
  }
};

PixelArea WithinCanvas(const Extent& extent, const KernelBitmap& canvas) {
  const auto first = [](double low) { return static_cast<int64_t>(std::max(0.0, std::floor(low))); };
  const auto last = [](double high, uint32_t side) {
    return static_cast<int64_t>(std::min<double>(side, std::ceil(high)));
  };
  return {first(extent.left), first(extent.top), last(extent.right, canvas.width),
          last(extent.bottom, canvas.height)};
}

int32_t PaintPiece(KernelBitmap& canvas, const DeviceMap& whole, const Reach& reach,
                   const PixelArea& piece, Painting& painting) {
  constexpr double kPieceCost = 4;  // nanoseconds a pixel
  const auto left = static_cast<double>(piece.left), top = static_cast<double>(piece.top),
             right = static_cast<double>(piece.right), bottom = static_cast<double>(piece.bottom);
  const auto objects = reach.Within(left, top, right, bottom);
  if (objects.empty()) return kHostOk;
  if (!painting.limit.Take(kPieceCost * piece.Count())) return kHostOverBudget;
  const SurfacePtr surface = media::MakeSurface(static_cast<int>(piece.right - piece.left),
                                                static_cast<int>(piece.bottom - piece.top));
  const media::Outcome outcome = media::PaintOnSurface(
      surface.get(), whole, {left, top, right - left, bottom - top}, objects, painting);
  if (outcome != media::Outcome::Ok) return StatusOf(outcome);
  Blend(surface, canvas, static_cast<uint32_t>(piece.left), static_cast<uint32_t>(piece.top));
  return kHostOk;
}

// A drawing is painted piece by piece, those that nothing touches left out.
int32_t PaintOnto(KernelBitmap& canvas, const Drawing& drawing, const RECT& place, double width,
                  double height) {
  constexpr int64_t kPiece = 1024;
  const DeviceMap whole = DeviceMap::ForDrawing(drawing, std::min(place.left, place.right),
                                                std::min(place.top, place.bottom), width, height);
  if (!whole.IsUsable()) return kHostOk;
  const Reach reach(drawing, whole);
  const PixelArea reached = WithinCanvas(reach.Whole(), canvas);
  Painting painting(drawing, media::PaintLimit(reached.Count(), static_cast<double>(drawing.bytes)));
  for (int64_t y = reached.top; y < reached.bottom; y += kPiece) {
    for (int64_t x = reached.left; x < reached.right; x += kPiece) {
      const PixelArea piece = {x, y, std::min(x + kPiece, reached.right),
                               std::min(y + kPiece, reached.bottom)};
      const int32_t status = PaintPiece(canvas, whole, reach, piece, painting);
      if (status != kHostOk) return status;
    }
  }
  return kHostOk;
}

}  // namespace
}  // namespace hostkit

int32_t ORB_CALL VectorPaint(HDC dc, const VectorHandle* handle, int32_t width, int32_t height,
                             int32_t sourceX, int32_t sourceY, const RECT* destination, const RECT* clip,
                             uint32_t flags) {
  const hostkit::Drawing* drawing = hostkit::DrawingOf(handle);
  if (dc == nullptr || drawing == nullptr || destination == nullptr) return kHostInvalid;
  if (sourceX != 0 || sourceY != 0 || clip != nullptr || flags != 0) return kHostInvalid;
  if (HostkitShouldFail(kFaultCodec)) return kHostNoMemory;
  try {
    return hostkit::PaintOnto(*hostkit::Context(dc)->bitmap, *drawing, *destination,
                              std::abs(static_cast<double>(width)),
                              std::abs(static_cast<double>(height)));
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}
