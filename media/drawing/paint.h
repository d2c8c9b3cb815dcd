// Painting drawings with Cairo.
#pragma once

#include "media/drawing/cairo_library.h"

#include <map>
#include <memory>

#include "media/drawing/drawing.h"

namespace media {

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

/// How much more painting there may be, in nanoseconds of an ordinary core: what the pixels that a
/// drawing can reach and the bytes that it was read from are worth.
class PaintLimit {
 public:
  static constexpr double kBaseCost = 1e9, kCostPerPixel = 40, kCostPerByte = 800;
  PaintLimit(double pixels, double bytes);
  /// Takes the cost of a step; false when there is less left.
  bool Take(double nanoseconds);
  bool IsExceeded() const { return left_ < 0; }
  /// From here on painting is kept to be written later, and what is kept is bounded, too.
  void BoundMemory(double bytes) { memory_ = bytes; }
  /// Takes what a step keeps.
  bool Keep(double bytes);

 private:
  double left_;
  double memory_ = -1;  // none of it is bounded
};

class CellSurface;

/// A drawing while it is painted, in however many pieces.
struct Painting {
  Painting(const Drawing& painted, PaintLimit allowed);
  ~Painting();
  Painting(const Painting&) = delete;
  Painting& operator=(const Painting&) = delete;

  const Drawing& drawing;
  PaintLimit limit;
  std::map<int32_t, std::unique_ptr<CellSurface>> patterns;  ///< those that were used, by their index
};

/// A surface's part of the device.
struct DeviceArea {
  double left, top, width, height;
};

/// What a drawing is painted with.
struct Brush {
  cairo_t* cairo;
  const Drawing& drawing;
  DeviceMap map;
  double left, top;      ///< of the surface, on the device
  double width, height;  ///< of the surface
  PaintLimit& limit;
  Painting& painting;
};

/// Keeps a device coordinate within what can be painted on.
double Bounded(double value);

}  // namespace media
