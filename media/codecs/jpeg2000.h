// JPEG 2000 (ISO/IEC 15444-1): codestreams, and JP2 files around them.
#pragma once

#include "media/codecs/codestream.h"
#include "media/codecs/stream.h"

namespace media {

/// Whether bytes begin as a codestream or as a JP2 file.
bool IsCodestream(const Source& source);
bool IsJp2(const Source& source);
/// The codestream within a JP2 file; a codestream as it is; empty for neither.
Source CodestreamOf(const Source& source);

/// The samples of a component, rows from the top.
struct Plane {
  const int32_t* samples;
  uint32_t width, height;
  uint32_t stepX, stepY;  ///< pixels of the part that a sample stands for
  uint32_t precision;
  bool isSigned;

  const int32_t* Line(uint32_t y) const {
    const uint32_t line = y / stepY < height ? y / stepY : height - 1;
    return samples + size_t{line} * width;
  }
  int32_t At(const int32_t* line, uint32_t x) const {
    const uint32_t column = stepX == 1 ? x : x / stepX;
    return line[column < width ? column : width - 1];
  }
};

enum class DeclaredColour { None, Rgb, Ycc, Grey, Other };

/// A part of a decoded image.
struct CodestreamPart {
  Window place;  ///< in pixels of the (reduced) image
  std::span<const Plane> planes;
  DeclaredColour colour;
};

struct Jpeg2000Request {
  Window window;          ///< in pixels of the whole image; without width or height as far as it goes
  uint32_t reduce = 0;    ///< resolution levels left out
  bool asStored = false;  ///< components as they are coded, without a JP2 file's palette and colours
};

/// Decodes what is wanted of an image, in parts where all of it at once would take much memory. The
/// window's corner must lie on the grid of the reduction. Weighed before memory is taken: NoMemory,
/// OverBudget; BadData. Throws std::bad_alloc.
Outcome DecodeJpeg2000(const Source& source, const Jpeg2000Request& request,
                       const std::function<Outcome(const CodestreamPart& part)>& take);

}  // namespace media
