#include "core/view/graphic_painter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/format/words.h"
#include "media/drawing/metafile.h"
#include "media/drawing/outline.h"
#include "media/drawing/paint.h"
#include "media/work.h"

namespace core {

SampleFault GraphicPainter::Decode(media::Drawing& drawing) const {
  const std::string data = survey_.Data(*place_.part);
  drawing.bytes = data.size();
  if (media::DecodeCgm(reinterpret_cast<const uint8_t*>(data.data()), data.size(), drawing) !=
      media::Outcome::Ok)
    return {media::Outcome::BadData, "the metafile does not decode"};
  return {};
}

SampleFault GraphicPainter::Load() {
  const SurveyedPart& part = *place_.part;
  if (part.Text("SFMT") != "C")
    return {media::Outcome::Unsupported, "SFMT is " + Quoted(part.Text("SFMT"))};
  if (!media::HasCairo())
    return {media::Outcome::Unsupported, "drawings take the library Cairo, which is not there"};
  if (!survey_.HoldsData(part)) return {media::Outcome::ShortData, "the data ends behind the file"};
  media::Drawing drawing;
  if (SampleFault fault = Decode(drawing); fault.Met()) return fault;
  int64_t boundsRow = 0, boundsColumn = 0;
  (void)PlaceOfText(part.Text("SBND1"), boundsRow, boundsColumn);
  row_ = place_.row + place_.top - boundsRow;
  column_ = place_.column + place_.left - boundsColumn;
  right_ = place_.right;
  bottom_ = place_.bottom;
  media::Point least, greatest;
  if (!media::FindExtent(drawing, media::TextBox::Full, least, greatest)) return {};
  if (drawing.wholeUnits) {
    least = {std::floor(least.x), std::floor(least.y)};
    greatest = {std::ceil(greatest.x), std::ceil(greatest.y)};
  }
  const auto reach = [](double from, double size, int64_t first, int64_t last) {
    const double most = static_cast<double>(last) + std::abs(static_cast<double>(last - first));
    return std::max(last, static_cast<int64_t>(std::min(std::ceil(from + size), most)));
  };
  right_ = reach(static_cast<double>(column_), greatest.x, place_.left, place_.right);
  bottom_ = reach(static_cast<double>(row_), -least.y, place_.top, place_.bottom);
  // What is shown are the objects with some room around them.
  constexpr double kRoom = 256;
  const auto side = [](double value) {
    constexpr double kFarthest = 1 << 20;
    return std::clamp(std::floor(value), -kFarthest, kFarthest);
  };
  view_ = {{side(least.x - kRoom), -side(-least.y + kRoom)},
           {side(greatest.x + kRoom), -side(-greatest.y - kRoom)}};
  isEmpty_ = std::all_of(drawing.layers.begin(), drawing.layers.end(),
                         [](const media::Layer& layer) { return layer.objects.empty(); });
  return {};
}

void GraphicPainter::Start(uint32_t width, uint32_t height, bool isHeld) {
  isHeld_ = isHeld;
  width_ = width;
  height_ = height;
}

SampleFault GraphicPainter::Open() {
  constexpr uint64_t kDecoding = 60;  // nanoseconds a byte
  if (reached_ && !media::Spend(kDecoding * Bytes()))
    return FaultOf(media::Outcome::OverBudget, "the drawing");
  auto drawing = std::make_unique<media::Drawing>();
  if (SampleFault fault = Decode(*drawing); fault.Met()) return fault;
  media::SetExtent(*drawing, view_);
  const double left = static_cast<double>(column_) + view_.first.x,
               top = static_cast<double>(row_) - view_.second.y;
  const media::DeviceMap map = media::DeviceMap::ForDrawing(
      *drawing, left, top, view_.second.x - view_.first.x, view_.second.y - view_.first.y);
  if (!map.IsUsable()) {
    isEmpty_ = true;
    return {};
  }
  drawing_ = std::move(drawing);
  pieces_ = std::make_unique<media::DrawingPieces>(*drawing_, map, width_, height_);
  reached_ = pieces_->Reached();
  return {};
}

SampleFault GraphicPainter::Find(int64_t x, int64_t y, const Piece*& piece) {
  const media::PixelArea area = media::PieceOf(*reached_, x, y);
  const auto [found, isNew] = painted_.try_emplace({area.left, area.top}, area, media::SurfacePtr());
  if (isNew) {
    if (pieces_ == nullptr) {
      if (SampleFault fault = Open(); fault.Met()) return fault;
    }
    const media::Outcome outcome = pieces_->Paint(area, found->second.second);
    if (outcome != media::Outcome::Ok) return FaultOf(outcome, "the drawing");
  }
  piece = &found->second;
  return {};
}

SampleFault GraphicPainter::Paint(int64_t y, int64_t column, int64_t columns, uint8_t* rgb) {
  // A drawing is decoded when its first row is painted.
  const auto row = static_cast<double>(y - row_);
  if (isEmpty_ || row < -view_.second.y - 1 || row > -view_.first.y + 1) return {};
  if (!reached_) {
    if (SampleFault fault = Open(); fault.Met() || isEmpty_) return fault;
  }
  SampleFault fault = PaintRow(y, column, columns, rgb);
  if (!isHeld_ || y + 1 >= reached_->bottom) {
    pieces_.reset();
    drawing_.reset();
  }
  return fault;
}

SampleFault GraphicPainter::PaintRow(int64_t y, int64_t column, int64_t columns, uint8_t* rgb) {
  if (y < reached_->top || y >= reached_->bottom) return {};
  // Rows above are done with.
  for (auto done = painted_.begin(); done != painted_.end();)
    done = done->second.first.bottom <= y ? painted_.erase(done) : std::next(done);
  const int64_t end = std::min(column + columns, reached_->right);
  for (int64_t x = std::max(column, reached_->left); x < end;) {
    const Piece* piece = nullptr;
    if (SampleFault fault = Find(x, y, piece); fault.Met()) return fault;
    const int64_t stop = std::min(end, piece->first.right);
    if (cairo_surface_t* surface = piece->second.get(); surface != nullptr) {
      const uint8_t* row = media::Cairo().image_surface_get_data(surface) +
                           (y - piece->first.top) * media::Cairo().image_surface_get_stride(surface) +
                           4 * (x - piece->first.left);
      uint8_t* to = rgb + 3 * (x - column);
      for (int64_t at = x; at < stop; ++at, row += 4, to += 3) {
        uint32_t pixel;
        std::memcpy(&pixel, row, sizeof pixel);
        if (pixel >> 24 == 0) continue;
        for (uint32_t c = 0; c < 3; ++c) to[c] = media::BlendOver(pixel, 16 - 8 * c, to[c]);
      }
    }
    x = stop;
  }
  return {};
}

}  // namespace core
