// The precisions of the numbers in a metafile.
#pragma once

#include "media/drawing/cgm.h"
#include "media/drawing/drawing.h"

namespace media {

/// How the numbers of one metafile are written.
struct NumberForms {
  bool vdcReal = false;
  int vdcBytes = 2;
  RealForm real;  ///< of scale factors
  int indexBytes = 2;
};

/// The narrowest forms that lose nothing: 16- or 32-bit integer coordinates for drawings of whole units,
/// else 64-bit reals.
NumberForms ChooseForms(const Drawing& drawing);

}  // namespace media
