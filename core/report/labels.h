// Where the labels of outlines stand on a picture.
#pragma once

#include <vector>

#include "core/report/pictures.h"

namespace core {

/// A label's box and its words, cut where the picture is too narrow for them.
struct PlacedLabel {
  std::string words;
  double left = 0, top = 0, width = 0, height = 0;
};

/// Places the labels of a picture's outlines at a size of letters, in or at a corner of their outline
/// where there is room, so that none covers another one or runs off. Those without room are left out.
std::vector<PlacedLabel> PlaceLabels(const Composite& composite, double size);

}  // namespace core
