// Texts drawn with Cairo's fonts.
#include <cmath>

#include "media/drawing/paint_steps.h"
#include "media/drawing/text_cairo.h"

namespace media {
namespace {

// The box behind an opaque text.
void FillTextBox(const Brush& brush, const Object& object) {
  cairo_t* cairo = brush.cairo;
  Extent extent;
  Point corners[4];
  TextCorners(brush.drawing, object, TextBox::Full, corners);
  for (const Point& corner : corners) {
    const Point p = brush.map.ToDevice(corner);
    Cairo().line_to(cairo, p.x, p.y);
    extent.Add(p);
  }
  if (!brush.limit.Take(extent.Area(brush))) return Cairo().new_path(cairo);
  SetColour(cairo, object.attributes->auxiliary);
  Cairo().fill(cairo);
}

// Draws the characters of a text whose letters' sides are the device vectors `x` and `y`.
void PaintCharacters(const Brush& brush, const Object& object, const LaidOutText& text, Point x,
                     Point y) {
  // The pictures of large glyphs would be kept; their outlines are not.
  constexpr double kLargestKept = 200, kGlyphCost = 4000, kRowCost = 400;
  const double tall = std::abs(x.y) + std::abs(y.y), wide = std::abs(x.x) + std::abs(y.x);
  const bool asOutline = std::hypot(x.x, x.y) > kLargestKept || std::hypot(y.x, y.y) > kLargestKept;
  for (size_t i = 0; i < text.places.size(); ++i) {
    const std::string character = Utf8(object.text.substr(i, 1));
    const Point device = brush.map.ToDevice(text.Place(object.points[0], text.places[i]));
    Extent extent;
    extent.Add({device.x - wide, device.y - tall});
    extent.Add({device.x + wide, device.y + tall});
    const double seen = extent.Area(brush);
    if (seen == 0) continue;
    if (!brush.limit.Take(kGlyphCost + kRowCost * std::min(tall, brush.height) + seen)) return;
    Cairo().move_to(brush.cairo, device.x, device.y);
    if (asOutline) {
      Cairo().text_path(brush.cairo, character.c_str());
      Cairo().fill(brush.cairo);
    } else {
      Cairo().show_text(brush.cairo, character.c_str());
    }
  }
}

}  // namespace

void PaintText(const Brush& brush, const Object& object) {
  cairo_t* cairo = brush.cairo;
  const DeviceMap& map = brush.map;
  const Attributes& attributes = *object.attributes;
  const LaidOutText text = LayOutText(brush.drawing, object);
  if (text.fontSize <= 0 || !std::isfinite(text.fontSize)) return;
  const Point x = map.Direction(
      {text.along.x * text.fontSize * text.stretch, text.along.y * text.fontSize * text.stretch});
  const Point y = map.Direction({text.across.x * text.fontSize, text.across.y * text.fontSize});
  constexpr double kLargest = 10000;  // pixels; larger glyphs are nothing but memory
  const double area = std::abs(x.x * y.y - x.y * y.x);
  if (!(area > 1e-6) || std::hypot(x.x, x.y) > kLargest || std::hypot(y.x, y.y) > kLargest) return;
  if (!attributes.transparent) FillTextBox(brush, object);
  SelectFont(cairo, FontOf(brush.drawing, attributes.text));
  cairo_matrix_t matrix;
  Cairo().matrix_init(&matrix, x.x, x.y, -y.x, -y.y, 0, 0);
  Cairo().set_font_matrix(cairo, &matrix);
  SetColour(cairo, attributes.text.colour);
  constexpr double kTextCost = 60'000;
  if (brush.limit.Take(kTextCost)) PaintCharacters(brush, object, text, x, y);
}

}  // namespace media
