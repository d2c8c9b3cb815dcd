// Painting drawings with Cairo.
#pragma once

#include <cairo.h>

#include "hostkit/vector/drawing.h"

namespace hostkit {

/// Maps a drawing's coordinates to device pixels, y downwards.
class DeviceMap {
 public:
  /// The extent fills `width` x `height` pixels whose top-left corner is at (left, top).
  DeviceMap(const Box& extent, double left, double top, double width, double height);
  /// As above; but a drawing of whole units is shown one unit a pixel, as the NITF graphics profile has
  /// it (MIL-STD-2301A), its extent's corner at (left, top). One whose extent is the whole 16-bit range
  /// has no frame of its own: its objects begin there.
  static DeviceMap ForDrawing(const Drawing& drawing, double left, double top, double width,
                              double height);
  /// The same with (left, top) as the origin.
  DeviceMap Shifted(double left, double top) const;
  bool IsUsable() const { return usable_; }
  Point ToDevice(Point p) const;
  /// A vector, without the origin.
  Point Direction(Point v) const;
  /// Pixels of a length, by the mean of both scales.
  double Length(double vdc) const;

 private:
  DeviceMap() = default;
  static DeviceMap OneUnitAPixel(const Drawing& drawing, double left, double top);
  double scaleX_ = 0, scaleY_ = 0, originX_ = 0, originY_ = 0;
  bool usable_ = false;
};

/// Draws every object.
void PaintDrawing(cairo_t* cairo, const Drawing& drawing, const DeviceMap& map);
/// Draws a text object.
void PaintText(cairo_t* cairo, const Drawing& drawing, const Object& object, const DeviceMap& map);
void SetColour(cairo_t* cairo, Colour colour);

}  // namespace hostkit
