// Painting a drawing into a device context's bitmap, and into picture files of its own.
#include <cairo-svg.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include "hostkit/kernel/gdi.h"
#include "hostkit/vector/handle.h"
#include "hostkit/vector/outline.h"
#include "hostkit/vector/paint.h"

namespace hostkit {
namespace {

using SurfacePtr = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using ContextPtr = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

bool Usable(cairo_surface_t* surface) { return cairo_surface_status(surface) == CAIRO_STATUS_SUCCESS; }

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

// The device pixels that a drawing may touch: the extent's rectangle, or its objects' where it has no
// frame. Lines are wider than their points, so there is a margin.
Box Reach(const Drawing& drawing, const DeviceMap& map) {
  constexpr double kMargin = 256;
  Point least, greatest;
  if (!FindExtent(drawing, TextBox::Full, least, greatest)) return {};
  const Point a = map.ToDevice(least), b = map.ToDevice(greatest);
  return {{std::min(a.x, b.x) - kMargin, std::min(a.y, b.y) - kMargin},
          {std::max(a.x, b.x) + kMargin, std::max(a.y, b.y) + kMargin}};
}

int32_t PaintOnto(KernelBitmap& canvas, const Drawing& drawing, const RECT& place, double width,
                  double height) {
  const double placeLeft = std::min(place.left, place.right),
               placeTop = std::min(place.top, place.bottom);
  const DeviceMap whole = DeviceMap::ForDrawing(drawing, placeLeft, placeTop, width, height);
  if (!whole.IsUsable()) return kHostOk;
  const Box reach = Reach(drawing, whole);
  const auto left = static_cast<int64_t>(std::max(0.0, std::floor(reach.first.x)));
  const auto top = static_cast<int64_t>(std::max(0.0, std::floor(reach.first.y)));
  const auto right = static_cast<int64_t>(std::min<double>(canvas.width, std::ceil(reach.second.x)));
  const auto bottom = static_cast<int64_t>(std::min<double>(canvas.height, std::ceil(reach.second.y)));
  // Cairo's surfaces reach 32767 pixels; a larger piece is painted in tiles.
  constexpr int64_t kTile = 8192;
  for (int64_t y = top; y < bottom; y += kTile) {
    for (int64_t x = left; x < right; x += kTile) {
      const SurfacePtr surface(
          cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(std::min(kTile, right - x)),
                                     static_cast<int>(std::min(kTile, bottom - y))),
          &cairo_surface_destroy);
      if (!Usable(surface.get())) return kHostNoMemory;
      const ContextPtr cairo(cairo_create(surface.get()), &cairo_destroy);
      PaintDrawing(cairo.get(), drawing, whole.Shifted(static_cast<double>(x), static_cast<double>(y)));
      if (cairo_status(cairo.get()) == CAIRO_STATUS_NO_MEMORY) return kHostNoMemory;
      cairo_surface_flush(surface.get());
      Blend(surface, canvas, static_cast<uint32_t>(x), static_cast<uint32_t>(y));
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

namespace hostkit {
namespace {

constexpr double kSmallestPicture = 64, kLargestPicture = 4096, kUsualPicture = 1024;

// Pixels of the longer side of a drawing's objects: those of its own units as far as that makes a
// picture.
double LongerSide(const Drawing& drawing, double span, int32_t wanted) {
  if (wanted > 0) return wanted;
  if (span >= kSmallestPicture && span <= kLargestPicture) return span;
  return drawing.wholeUnits ? std::clamp(span, kSmallestPicture, kLargestPicture) : kUsualPicture;
}

// A drawing painted into a recording, and the rectangle that its ink covers.
class Recording {
 public:
  Recording(const Drawing& drawing, int32_t longerSide)
      : surface_(cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, nullptr),
                 &cairo_surface_destroy) {
    Point least, greatest;
    if (!FindExtent(drawing, TextBox::Full, least, greatest)) return;
    const double spanX = greatest.x - least.x, spanY = greatest.y - least.y;
    const double span = std::max({spanX, spanY, 1e-300});
    const double scale = LongerSide(drawing, span, longerSide) / span;
    Box frame = {least, greatest};
    if (spanX == 0) frame.second.x += span;
    if (spanY == 0) frame.second.y += span;
    const DeviceMap map(frame, 0, 0, (frame.second.x - frame.first.x) * scale,
                        (frame.second.y - frame.first.y) * scale);
    const ContextPtr cairo(cairo_create(surface_.get()), &cairo_destroy);
    PaintDrawing(cairo.get(), drawing, map);
    double x = 0, y = 0, width = 0, height = 0;
    cairo_recording_surface_ink_extents(surface_.get(), &x, &y, &width, &height);
    left_ = std::floor(x) - kMargin;
    top_ = std::floor(y) - kMargin;
    width_ = std::clamp(std::ceil(x + width) + kMargin - left_, 1.0, kLargestSurface);
    height_ = std::clamp(std::ceil(y + height) + kMargin - top_, 1.0, kLargestSurface);
  }

  int Width() const { return static_cast<int>(width_); }
  int Height() const { return static_cast<int>(height_); }
  void Replay(cairo_surface_t* onto) const {
    const ContextPtr cairo(cairo_create(onto), &cairo_destroy);
    cairo_set_source_surface(cairo.get(), surface_.get(), -left_, -top_);
    cairo_paint(cairo.get());
  }

 private:
  static constexpr double kMargin = 1, kLargestSurface = 32767;
  SurfacePtr surface_;
  double left_ = 0, top_ = 0, width_ = 1, height_ = 1;
};

}  // namespace
}  // namespace hostkit

int32_t ORB_CALL HostkitSaveDrawing(const VectorHandle* handle, const char* path, int32_t form,
                                    int32_t longerSide) {
  using namespace hostkit;
  const Drawing* drawing = DrawingOf(handle);
  if (drawing == nullptr || path == nullptr || longerSide < 0) return kHostInvalid;
  try {
    const Recording recording(*drawing, longerSide);
    const int width = recording.Width(), height = recording.Height();
    const SurfacePtr surface(form == kDrawingSvg
                                 ? cairo_svg_surface_create(path, width, height)
                                 : cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height),
                             &cairo_surface_destroy);
    if (!Usable(surface.get())) return kHostNoMemory;
    recording.Replay(surface.get());
    if (form != kDrawingSvg && cairo_surface_write_to_png(surface.get(), path) != CAIRO_STATUS_SUCCESS) {
      return kHostCloseFailed;
    }
    cairo_surface_finish(surface.get());
    return Usable(surface.get()) ? kHostOk : kHostCloseFailed;
  } catch (const std::bad_alloc&) {
    return kHostNoMemory;
  }
}
