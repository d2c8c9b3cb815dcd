// Rows of an image as they are shown.
#pragma once

#include <memory>

#include "core/samples/rows.h"
#include "core/view/stretch.h"

namespace core {

/// How images are shown.
struct ImageLook {
  std::vector<uint32_t> bands;  ///< that are asked for, one or three; empty for the image's own
  Stretch stretch;
  uint64_t row = 0, rows = 0;     ///< of the image that will be painted; 0 rows for all
  uint64_t pieceBytes = 1 << 20;  ///< about what is held of uncompressed data
  uint32_t reduce =
      0;  ///< of what its codec reduces: pictures of 1/2^reduce, whose nearest pixels are shown
};

/// Paints rows of an image segment as red, green and blue.
class ImagePainter {
 public:
  /// Of the image's columns those from one on.
  ImagePainter(const Survey& survey, const SurveyedPart& image, ImageLook look, uint64_t column,
               uint64_t columns);
  ~ImagePainter();
  ImagePainter(const ImagePainter&) = delete;
  ImagePainter& operator=(const ImagePainter&) = delete;

  /// Finds what is shown, and how.
  SampleFault Start();
  /// Paints row `y` of the image on as many pixels as it has columns; what a mask leaves out stays as it
  /// is.
  SampleFault Paint(uint64_t y, uint8_t* rgb);
  /// Whether every pixel is painted.
  bool IsOpaque() const;

 private:
  class Painter;
  std::unique_ptr<Painter> painter_;
};

}  // namespace core
