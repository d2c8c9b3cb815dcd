// Picture files read whole, at their own depth.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "media/drawing/drawing.h"
#include "media/outcome.h"

namespace core {

/// A picture's samples, rows from the top, one or three to a pixel; those of 16 bits are big-endian.
struct Picture {
  uint32_t width = 0, height = 0, channels = 1, bits = 8;
  bool lostAlpha = false;  ///< blended with white, or left out of deep TIFF samples
  std::string refusal;  ///< why a file that is known is not loaded, where more than the outcome is known
  std::string whyNotLossless;  ///< what of the file the samples leave out; empty for nothing
  std::vector<uint8_t> samples;
};

/// Loads a PNG, TIFF, PPM or PGM file; NotRecognised for another one.
media::Outcome LoadPicture(const std::string& bytes, Picture& picture);

/// Loads a binary metafile; BadData for bytes that are none. Throws std::bad_alloc.
media::Outcome LoadDrawing(const std::string& bytes, media::Drawing& drawing);

/// Pictures of one kind each.
media::Outcome LoadPng(const std::string& bytes, Picture& picture);
media::Outcome LoadTiff(const std::string& bytes, Picture& picture);
media::Outcome LoadNetpbm(const std::string& bytes, Picture& picture);
/// Whether a picture of this size is decoded at all.
bool IsTakeable(const Picture& picture);

}  // namespace core
