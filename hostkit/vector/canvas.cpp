// Painting a drawing into a device context's bitmap.
#include <algorithm>
#include <cmath>
#include <new>

#include "hostkit/kernel/gdi.h"
#include "hostkit/vector/handle.h"
#include "media/drawing/pieces.h"

namespace hostkit {
namespace {

using media::DeviceMap;
using media::Drawing;
using media::SurfacePtr;

// Lays a painted surface over the canvas: untouched pixels stay as they are.
void Blend(const SurfacePtr& surface, KernelBitmap& canvas, uint32_t left, uint32_t top) {
  const auto width = static_cast<uint32_t>(media::Cairo().image_surface_get_width(surface.get()));
  const auto height = static_cast<uint32_t>(media::Cairo().image_surface_get_height(surface.get()));
  const auto stride = static_cast<size_t>(media::Cairo().image_surface_get_stride(surface.get()));
  const uint8_t* bytes = media::Cairo().image_surface_get_data(surface.get());
  NearestColour nearest(canvas);
  for (uint32_t y = 0; y < height; ++y) {
    uint8_t* row = PictureRow(canvas, top + y);
    for (uint32_t x = 0; x < width; ++x) {
      uint32_t pixel;
      std::memcpy(&pixel, bytes + y * stride + 4 * size_t{x}, 4);
      if (pixel >> 24 == 0) continue;
      uint8_t bgr[3];
      RowToBgr(canvas, row, left + x, 1, bgr);
      for (uint32_t c = 0; c < 3; ++c) bgr[c] = media::BlendOver(pixel, 8 * c, bgr[c]);
      BgrToRow(canvas, nearest, bgr, left + x, 1, row);
    }
  }
}

// A drawing is painted piece by piece, those that nothing touches left out.
int32_t PaintOnto(KernelBitmap& canvas, const Drawing& drawing, const RECT& place, double width,
                  double height) {
  const DeviceMap whole = DeviceMap::ForDrawing(drawing, std::min(place.left, place.right),
                                                std::min(place.top, place.bottom), width, height);
  if (!whole.IsUsable()) return kHostOk;
  media::DrawingPieces pieces(drawing, whole, canvas.width, canvas.height);
  const media::PixelArea& reached = pieces.Reached();
  for (int64_t y = reached.top; y < reached.bottom; y = pieces.PieceAt(reached.left, y).bottom) {
    for (int64_t x = reached.left; x < reached.right; x = pieces.PieceAt(x, y).right) {
      SurfacePtr surface;
      const media::Outcome outcome = pieces.Paint(pieces.PieceAt(x, y), surface);
      if (outcome != media::Outcome::Ok) return StatusOf(outcome);
      if (surface != nullptr) Blend(surface, canvas, static_cast<uint32_t>(x), static_cast<uint32_t>(y));
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
    if (!media::HasCairo()) return kHostUnsupported;
    return hostkit::PaintOnto(*hostkit::Context(dc)->bitmap, *drawing, *destination,
                              std::abs(static_cast<double>(width)),
                              std::abs(static_cast<double>(height)));
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}
