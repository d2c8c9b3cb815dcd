// A drawing as a picture of its own: rows of pixels, or a file of lines and letters.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "media/drawing/outline.h"
#include "media/drawing/picture.h"
#include "media/drawing/reach.h"
#include "media/drawing/surface.h"
#include "media/work.h"

namespace media {
namespace {

constexpr double kSmallestPicture = 64, kLargestPicture = 4096, kUsualPicture = 1024;
constexpr int kLargestSurface = 32767;
constexpr int kMargin = 1;  // pixels around what is painted

// Pixels of the longer side of a drawing's objects: those of its own units as far as that makes a
// picture.
double LongerSide(const Drawing& drawing, double span, int32_t wanted) {
  if (wanted > 0) return wanted;
  if (span >= kSmallestPicture && span <= kLargestPicture) return span;
  return drawing.wholeUnits ? std::clamp(span, kSmallestPicture, kLargestPicture) : kUsualPicture;
}

// The objects' extent stands at the device's origin.
DeviceMap MapOf(const Drawing& drawing, int32_t longerSide) {
  Box frame;
  if (!FindExtent(drawing, TextBox::Full, frame.first, frame.second)) return {{}, 0, 0, 0, 0};
  const double spanX = frame.second.x - frame.first.x, spanY = frame.second.y - frame.first.y;
  const double span = std::max({spanX, spanY, 1e-300});
  const double scale = LongerSide(drawing, span, longerSide) / span;
  if (spanX == 0) frame.second.x += span;
  if (spanY == 0) frame.second.y += span;
  return {frame, 0, 0, (frame.second.x - frame.first.x) * scale,
          (frame.second.y - frame.first.y) * scale};
}

// Pixels from (left, top) to in front of (right, bottom).
struct Area {
  int left = 0, top = 0, right = 0, bottom = 0;
  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
};

Area WholePixels(const Extent& extent) {
  const auto pixel = [](double value) {
    return static_cast<int>(std::clamp<double>(value, -kLargestSurface, kLargestSurface));
  };
  if (extent.left > extent.right) return {};  // nothing is painted
  Area area = {pixel(std::floor(extent.left)), pixel(std::floor(extent.top)),
               pixel(std::ceil(extent.right)), pixel(std::ceil(extent.bottom))};
  area.right = std::min(area.right, area.left + kLargestSurface);
  area.bottom = std::min(area.bottom, area.top + kLargestSurface);
  return area;
}

// A drawing painted strip by strip.
class Strips {
 public:
  Strips(const Drawing& drawing, const DeviceMap& map)
      : map_(map),
        reach_(drawing, map),
        whole_(WholePixels(reach_.Whole())),
        painting_(drawing, PaintLimit(kMostPixels, static_cast<double>(drawing.bytes))) {
    const int rows = kStripBytes / std::max(4, 4 * whole_.Width());
    rows_ = std::clamp(rows, 16, std::max(16, whole_.Height()));
  }

  const Area& Whole() const { return whole_; }
  /// Gives every row of the strips that something is painted on, as premultiplied words, and where it
  /// lies.
  template <class Take>
  Outcome ForEachRow(const Area& area, Take take) {
    for (int top = area.top; top < area.bottom;) {
      // Strips lie alike in whatever area.
      const int first = whole_.top + (top - whole_.top) / rows_ * rows_;
      if (const Outcome status = Paint(first); status != Outcome::Ok) return status;
      const int end = std::min({first + rows_, area.bottom, whole_.bottom});
      for (; top < end; ++top) {
        const Outcome status = take(top, RowOf(top));
        if (status != Outcome::Ok) return status;
      }
    }
    return Outcome::Ok;
  }

 private:
  static constexpr double kMostPixels = 1 << 24;
  static constexpr int kStripBytes = 4 << 20;

  const uint32_t* RowOf(int y) const {
    if (surface_ == nullptr) return nullptr;
    const uint8_t* bytes = Cairo().image_surface_get_data(surface_.get());
    const auto stride = static_cast<size_t>(Cairo().image_surface_get_stride(surface_.get()));
    return reinterpret_cast<const uint32_t*>(bytes + static_cast<size_t>(y - top_) * stride);
  }
  // The strip that is there already is not painted again.
  Outcome Paint(int top) {
    if (painted_ && top_ == top) return Outcome::Ok;
    const auto left = static_cast<double>(whole_.left), first = static_cast<double>(top);
    const auto width = static_cast<double>(whole_.Width());
    const auto height = static_cast<double>(std::min(rows_, whole_.bottom - top));
    painted_ = false;
    surface_.reset();
    top_ = top;
    const auto objects = reach_.Within(left, first, left + width, first + height);
    if (!objects.empty()) {
      surface_ = MakeSurface(whole_.Width(), static_cast<int>(height));
      const Outcome status =
          PaintOnSurface(surface_.get(), map_, {left, first, width, height}, objects, painting_);
      if (status != Outcome::Ok) return status;
    }
    painted_ = true;
    return Outcome::Ok;
  }

  DeviceMap map_;
  Reach reach_;
  Area whole_;
  Painting painting_;
  int rows_ = 0, top_ = 0;
  bool painted_ = false;
  SurfacePtr surface_;
};

// The rectangle of all pixels that are painted.
Outcome FindInk(Strips& strips, Area& ink) {
  const Area& whole = strips.Whole();
  ink = {whole.right, whole.bottom, whole.left, whole.top};
  const Outcome status = strips.ForEachRow(whole, [&](int y, const uint32_t* row) {
    if (row == nullptr) return Outcome::Ok;
    const auto marked = [](uint32_t pixel) { return pixel >> 24 != 0; };
    const uint32_t* end = row + whole.Width();
    const uint32_t* first = std::find_if(row, end, marked);
    if (first == end) return Outcome::Ok;
    const uint32_t* last = end;
    while (!marked(last[-1])) --last;
    ink.left = std::min(ink.left, whole.left + static_cast<int>(first - row));
    ink.right = std::max(ink.right, whole.left + static_cast<int>(last - row));
    ink.top = std::min(ink.top, y);
    ink.bottom = y + 1;
    return Outcome::Ok;
  });
  if (ink.left >= ink.right) ink = {whole.left, whole.top, whole.left, whole.top};
  return status;
}

void ToStraight(const uint32_t* pixels, int count, uint8_t* rgba) {
  for (int i = 0; i < count; ++i, rgba += 4) {
    const uint32_t pixel = pixels[i], alpha = pixel >> 24;
    for (int c = 0; c < 3; ++c) {
      const uint32_t part = pixel >> (16 - 8 * c) & 255;
      rgba[c] = alpha == 0 ? uint8_t{0} : static_cast<uint8_t>((part * 255 + alpha / 2) / alpha);
    }
    rgba[3] = static_cast<uint8_t>(alpha);
  }
}

Outcome Deliver(Strips& strips, const Area& ink, const PictureRow& take) {
  const auto width = static_cast<uint32_t>(ink.Width() + 2 * kMargin),
             height = static_cast<uint32_t>(ink.Height() + 2 * kMargin);
  if (!AllowsPixels(uint64_t{width} * height)) return Outcome::NoMemory;
  const std::vector<uint8_t> empty(size_t{4} * width);
  std::vector<uint8_t> row = empty;
  const auto give = [&](const std::vector<uint8_t>& rgba) { return take(rgba.data(), width, height); };
  Outcome status = give(empty);
  if (status == Outcome::Ok) {
    status = strips.ForEachRow(ink, [&](int, const uint32_t* pixels) {
      if (pixels == nullptr) return give(empty);
      ToStraight(pixels + (ink.left - strips.Whole().left), ink.Width(), &row[4 * kMargin]);
      return give(row);
    });
  }
  return status == Outcome::Ok ? give(empty) : status;
}

}  // namespace

Outcome PaintPicture(const Drawing& drawing, int32_t longerSide, const PictureRow& take) {
  if (!HasCairo()) return Outcome::Unsupported;
  Strips strips(drawing, MapOf(drawing, longerSide));
  Area ink;
  if (const Outcome status = FindInk(strips, ink); status != Outcome::Ok) return status;
  return Deliver(strips, ink, take);
}

// The library keeps all of a file's painting until it is closed.
Outcome SaveSvg(const Drawing& drawing, const char* path, int32_t longerSide) {
  constexpr double kMostKept = 64 << 20;
  if (!HasCairo()) return Outcome::Unsupported;
  const DeviceMap map = MapOf(drawing, longerSide);
  Strips strips(drawing, map);
  Area ink;
  if (const Outcome status = FindInk(strips, ink); status != Outcome::Ok) return status;
  const int width = ink.Width() + 2 * kMargin, height = ink.Height() + 2 * kMargin;
  if (!AllowsPixels(static_cast<uint64_t>(width) * static_cast<uint64_t>(height)))
    return Outcome::NoMemory;
  const SurfacePtr surface(Cairo().svg_surface_create(path, width, height));
  Painting painting(drawing,
                    PaintLimit(static_cast<double>(width) * height, static_cast<double>(drawing.bytes)));
  painting.limit.BoundMemory(kMostKept);
  const auto left = static_cast<double>(ink.left - kMargin), top = static_cast<double>(ink.top - kMargin);
  const Reach reach(drawing, map);
  const auto objects = reach.Within(left, top, left + width, top + height);
  const Outcome status = PaintOnSurface(
      surface.get(), map, {left, top, static_cast<double>(width), static_cast<double>(height)}, objects,
      painting);
  if (status != Outcome::Ok) return status;
  Cairo().surface_finish(surface.get());
  const cairo_status_t finished = Cairo().surface_status(surface.get());
  if (finished == CAIRO_STATUS_NO_MEMORY) return Outcome::NoMemory;
  return finished == CAIRO_STATUS_SUCCESS ? Outcome::Ok : Outcome::NotTaken;
}

}  // namespace media
