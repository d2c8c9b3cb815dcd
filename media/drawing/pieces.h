// A drawing over a canvas, painted piece by piece: those that nothing touches are left out.
#pragma once

#include "media/drawing/reach.h"
#include "media/drawing/surface.h"

namespace media {

/// Pixels of a canvas, from (left, top) to in front of (right, bottom).
struct PixelArea {
  int64_t left = 0, top = 0, right = 0, bottom = 0;
  double Count() const;
};

/// The piece that holds a pixel of what is reached.
PixelArea PieceOf(const PixelArea& reached, int64_t x, int64_t y);

/// The pieces that a drawing is painted in: a grid that begins where the drawing does, whatever part of
/// it is wanted.
class DrawingPieces {
 public:
  /// The drawing stays where it is; the map can be used.
  DrawingPieces(const Drawing& drawing, const DeviceMap& whole, uint32_t width, uint32_t height);
  /// What the drawing may touch of the canvas.
  const PixelArea& Reached() const { return reached_; }
  /// The piece that holds a pixel of what is reached.
  PixelArea PieceAt(int64_t x, int64_t y) const { return PieceOf(reached_, x, y); }
  /// Paints a piece; no surface where nothing touches it. OverBudget; NoMemory; BadData.
  Outcome Paint(const PixelArea& piece, SurfacePtr& surface);

 private:
  DeviceMap whole_;
  Reach reach_;
  PixelArea reached_;
  Painting painting_;
};

/// Lays a painted pixel, premultiplied colours with alpha, over a colour; `shift` is that of the colour.
inline uint8_t BlendOver(uint32_t painted, uint32_t shift, uint8_t below) {
  const uint32_t alpha = painted >> 24,
                 over = (painted >> shift & 255) + (below * (255 - alpha) + 127) / 255;
  return static_cast<uint8_t>(over < 255 ? over : 255);
}

}  // namespace media
