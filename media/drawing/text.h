// The layout of texts, and what it asks of the platform's fonts.
#pragma once

#include "media/drawing/drawing.h"

namespace media {

/// A metafile's font name taken apart: "Times-BoldItalic" is family Times, bold, slanted.
struct FontName {
  std::string family;  ///< Latin-1; empty for any sans-serif family
  bool slanted = false, bold = false;
  bool operator==(const FontName&) const = default;
};
FontName FontOf(const Drawing& drawing, const TextLook& look);

/// Measures of a font, in units of its size.
struct FontMeasure {
  double capital = 0;  ///< height of a capital letter
  double ascent = 0, descent = 0;
  std::vector<double> advances;  ///< of each character of the text
};
/// Measures the font that the platform has for a name, and a Latin-1 text in it.
FontMeasure MeasureFont(const FontName& name, const std::string& text);

/// A text laid out along its baseline in VDC units: x to the right of the first character, y upwards.
struct LaidOutText {
  double fontSize = 0, stretch = 1;
  double width = 0, ascent = 0, cap = 0, descent = 0;
  double left = 0, bottom = 0;  ///< of the first baseline point, once aligned
  bool vertical = false;
  std::vector<Point> places;        ///< of each character
  Point along{1, 0}, across{0, 1};  ///< unit directions of the baseline and of the letters' height

  /// A point of the text in the drawing, for a text at `origin`.
  Point Place(Point origin, Point p) const {
    const double x = left + p.x, y = bottom + p.y;
    return {origin.x + x * along.x + y * across.x, origin.y + x * along.y + y * across.y};
  }
};
LaidOutText LayOutText(const Drawing& drawing, const Object& object);

/// How tall a text counts: from its descenders to its ascenders, or from baseline to capital height.
enum class TextBox { Full, Capitals };
/// The corners of a text's box, once aligned and turned.
void TextCorners(const Drawing& drawing, const Object& text, TextBox textBox, Point (&corners)[4]);

}  // namespace media
