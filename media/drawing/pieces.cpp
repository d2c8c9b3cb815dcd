#include "media/drawing/pieces.h"

#include <algorithm>
#include <cmath>

namespace media {
namespace {

constexpr int64_t kPiece = 1024;

PixelArea WithinCanvas(const Extent& extent, uint32_t width, uint32_t height) {
  const auto first = [](double low) { return static_cast<int64_t>(std::max(0.0, std::floor(low))); };
  const auto last = [](double high, uint32_t side) {
    return static_cast<int64_t>(std::min<double>(side, std::ceil(high)));
  };
  return {first(extent.left), first(extent.top), last(extent.right, width), last(extent.bottom, height)};
}

}  // namespace

double PixelArea::Count() const {
  return static_cast<double>(std::max<int64_t>(0, right - left)) *
         static_cast<double>(std::max<int64_t>(0, bottom - top));
}

DrawingPieces::DrawingPieces(const Drawing& drawing, const DeviceMap& whole, uint32_t width,
                             uint32_t height)
    : whole_(whole),
      reach_(drawing, whole),
      reached_(WithinCanvas(reach_.Whole(), width, height)),
      painting_(drawing, PaintLimit(reached_.Count(), static_cast<double>(drawing.bytes))) {}

PixelArea PieceOf(const PixelArea& reached, int64_t x, int64_t y) {
  const int64_t left = reached.left + (x - reached.left) / kPiece * kPiece,
                top = reached.top + (y - reached.top) / kPiece * kPiece;
  return {left, top, std::min(left + kPiece, reached.right), std::min(top + kPiece, reached.bottom)};
}

Outcome DrawingPieces::Paint(const PixelArea& piece, SurfacePtr& surface) {
  constexpr double kPieceCost = 4;  // nanoseconds a pixel
  surface.reset();
  const auto left = static_cast<double>(piece.left), top = static_cast<double>(piece.top),
             right = static_cast<double>(piece.right), bottom = static_cast<double>(piece.bottom);
  const auto objects = reach_.Within(left, top, right, bottom);
  if (objects.empty()) return Outcome::Ok;
  if (!painting_.limit.Take(kPieceCost * piece.Count())) return Outcome::OverBudget;
  surface =
      MakeSurface(static_cast<int>(piece.right - piece.left), static_cast<int>(piece.bottom - piece.top));
  return PaintOnSurface(surface.get(), whole_, {left, top, right - left, bottom - top}, objects,
                        painting_);
}

}  // namespace media
