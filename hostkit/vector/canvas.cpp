// Painting a drawing into a device context's bitmap, and into picture files of its own.
#include <cairo-svg.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>

#include "hostkit/kernel/budget.h"
#include "hostkit/kernel/gdi.h"
#include "hostkit/vector/handle.h"
#include "hostkit/vector/reach.h"

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

int32_t PaintPiece(KernelBitmap& canvas, const Drawing& drawing, const DeviceMap& whole,
                   const Reach& reach, const PixelArea& piece, PaintLimit& limit) {
  constexpr double kPieceCost = 4;  // nanoseconds a pixel
  const auto left = static_cast<double>(piece.left), top = static_cast<double>(piece.top),
             right = static_cast<double>(piece.right), bottom = static_cast<double>(piece.bottom);
  const auto objects = reach.Within(left, top, right, bottom);
  if (objects.empty()) return kHostOk;
  if (!limit.Take(kPieceCost * piece.Count())) return kHostOverBudget;
  const SurfacePtr surface(
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(piece.right - piece.left),
                                 static_cast<int>(piece.bottom - piece.top)),
      &cairo_surface_destroy);
  if (!Usable(surface.get())) return kHostNoMemory;
  const ContextPtr cairo(cairo_create(surface.get()), &cairo_destroy);
  const Brush brush = {cairo.get(),  drawing, whole.Shifted(left, top), left, top, right - left,
                       bottom - top, limit};
  if (!PaintObjects(brush, objects)) return kHostOverBudget;
  if (cairo_status(cairo.get()) == CAIRO_STATUS_NO_MEMORY) return kHostNoMemory;
  cairo_surface_flush(surface.get());
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
  PaintLimit limit(reached.Count(), static_cast<double>(drawing.bytes));
  for (int64_t y = reached.top; y < reached.bottom; y += kPiece) {
    for (int64_t x = reached.left; x < reached.right; x += kPiece) {
      const PixelArea piece = {x, y, std::min(x + kPiece, reached.right),
                               std::min(y + kPiece, reached.bottom)};
      const int32_t status = PaintPiece(canvas, drawing, whole, reach, piece, limit);
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
    const Reach reach(drawing, map);
    const Extent& whole = reach.Whole();
    const ContextPtr cairo(cairo_create(surface_.get()), &cairo_destroy);
    PaintLimit limit(kMostPixels, static_cast<double>(drawing.bytes));
    // A recording reaches as far as what is painted on it.
    const Brush brush = {
        cairo.get(), drawing, map, 0, 0, std::max(1.0, whole.right), std::max(1.0, whole.bottom), limit};
    complete_ = PaintObjects(brush, reach.Within(whole.left, whole.top, whole.right, whole.bottom));
    double x = 0, y = 0, width = 0, height = 0;
    cairo_recording_surface_ink_extents(surface_.get(), &x, &y, &width, &height);
    left_ = std::floor(x) - kMargin;
    top_ = std::floor(y) - kMargin;
    width_ = std::clamp(std::ceil(x + width) + kMargin - left_, 1.0, kLargestSurface);
    height_ = std::clamp(std::ceil(y + height) + kMargin - top_, 1.0, kLargestSurface);
  }

  /// Whether all of the drawing is in it.
  bool IsComplete() const { return complete_; }
  int Width() const { return static_cast<int>(width_); }
  int Height() const { return static_cast<int>(height_); }
  void Replay(cairo_surface_t* onto) const {
    const ContextPtr cairo(cairo_create(onto), &cairo_destroy);
    cairo_set_source_surface(cairo.get(), surface_.get(), -left_, -top_);
    cairo_paint(cairo.get());
  }

 private:
  static constexpr double kMargin = 1, kLargestSurface = 32767, kMostPixels = 1 << 24;
  SurfacePtr surface_;
  double left_ = 0, top_ = 0, width_ = 1, height_ = 1;
  bool complete_ = true;
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
    if (!recording.IsComplete()) return kHostOverBudget;
    if (!AllowsPixels(static_cast<uint64_t>(width) * static_cast<uint64_t>(height))) return kHostNoMemory;
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
