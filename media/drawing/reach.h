// Which pixels the objects of a drawing may touch, so that only those are painted.
#pragma once

#include "media/drawing/paint_steps.h"

namespace media {

/// The objects of a drawing that are to be painted, with the pixels that each may touch.
class Reach {
 public:
  Reach(const Drawing& drawing, const DeviceMap& map);
  /// What all objects may touch.
  const Extent& Whole() const { return whole_; }
  /// The objects that may be seen in a rectangle, in drawing order.
  std::vector<const Object*> Within(double left, double top, double right, double bottom) const;

 private:
  struct Entry {
    const Object* object;
    Extent extent;
    double margin;  // beyond the object's points
  };
  bool Touches(const Entry& entry, const Extent& area) const;

  const Drawing& drawing_;
  DeviceMap map_;
  std::vector<Entry> entries_;
  Extent whole_;
};

}  // namespace media
