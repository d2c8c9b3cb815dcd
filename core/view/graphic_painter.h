// Rows of a graphic segment's drawing over a canvas.
#pragma once

#include <map>
#include <optional>

#include "core/format/places.h"
#include "core/samples/image.h"
#include "media/drawing/pieces.h"

namespace core {

/// Paints a drawing with its origin at the graphic's place, one unit a pixel where its units are pixels
/// (MIL-STD-2301A), whole also where it reaches beyond its bounds.
class GraphicPainter {
 public:
  /// The survey stays where it is.
  GraphicPainter(const Survey& survey, const PlacedSegment& place) : survey_(survey), place_(place) {}

  /// Reads the drawing. Unsupported for a form that is no metafile.
  SampleFault Load();
  /// How far it reaches on the canvas: to its bounds, and beyond them for at most their size again.
  int64_t Right() const { return right_; }
  int64_t Bottom() const { return bottom_; }

  /// Bytes of the metafile.
  uint64_t Bytes() const { return place_.part->dataLength; }
  /// Begins to paint on a canvas of a size. A drawing is held until its last row, or else decoded for
  /// each row of its pieces.
  void Start(uint32_t width, uint32_t height, bool isHeld);
  /// Paints on some pixels of a row of the canvas. OverBudget.
  SampleFault Paint(int64_t y, int64_t column, int64_t columns, uint8_t* rgb);

 private:
  using Piece = std::pair<media::PixelArea, media::SurfacePtr>;
  SampleFault Decode(media::Drawing& drawing) const;
  SampleFault Open();
  SampleFault Find(int64_t x, int64_t y, const Piece*& piece);
  SampleFault PaintRow(int64_t y, int64_t column, int64_t columns, uint8_t* rgb);

  const Survey& survey_;
  PlacedSegment place_;
  media::Box view_;               // what is shown of its plane: nothing until it is loaded
  int64_t row_ = 0, column_ = 0;  // of its origin
  int64_t right_ = 0, bottom_ = 0;
  uint32_t width_ = 0, height_ = 0;  // of the canvas
  bool isEmpty_ = true, isHeld_ = true;
  std::optional<media::PixelArea> reached_;  // once it is opened
  std::unique_ptr<media::Drawing> drawing_;
  std::unique_ptr<media::DrawingPieces> pieces_;
  std::map<std::pair<int64_t, int64_t>, Piece> painted_;  // of the rows that are painted now
};

}  // namespace core
