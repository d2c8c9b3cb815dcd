// A drawing as a picture of its own.
#pragma once

#include <functional>

#include "media/drawing/drawing.h"
#include "media/outcome.h"

namespace media {

/// Receives the rows of a picture, the top one first: red, green, blue and alpha, not multiplied by it.
/// Ok to go on; another outcome ends the painting and is its result.
using PictureRow = std::function<Outcome(const uint8_t* rgba, uint32_t width, uint32_t height)>;

/// Paints all of a drawing, with what its lines, markers and texts take beyond their points, and gives
/// the rows: strips of it are held, never the whole. Its objects take `longerSide` pixels; 0 for their
/// own units, or, where that makes no picture, 64 to 4096 pixels. Ok; OverBudget for more painting than
/// the drawing's bytes are worth. Throws std::bad_alloc.
Outcome PaintPicture(const Drawing& drawing, int32_t longerSide, const PictureRow& take);

/// Writes the same picture as SVG into a file, whose objects are kept until it is written: of too many
/// OverBudget; NotTaken when the file does not take it. Throws std::bad_alloc.
Outcome SaveSvg(const Drawing& drawing, const char* path, int32_t longerSide);

}  // namespace media
