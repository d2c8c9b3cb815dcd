// Where a text and its characters stand: alignment, height, path and orientation.
#include <algorithm>
#include <cmath>

#include "media/drawing/text.h"

namespace media {
namespace {

double Finite(double value, double otherwise) { return std::isfinite(value) ? value : otherwise; }

double HorizontalShift(const TextLook& look, const LaidOutText& text) {
  HorizontalAlign align = look.horizontal;
  if (align == HorizontalAlign::Normal) {
    align = look.path == TextPath::Right  ? HorizontalAlign::Left
            : look.path == TextPath::Left ? HorizontalAlign::Right
                                          : HorizontalAlign::Centre;
  }
  switch (align) {
    case HorizontalAlign::Centre:
      return -text.width / 2;
    case HorizontalAlign::Right:
      return -text.width;
    case HorizontalAlign::Continuous:
      return -text.width * Finite(look.continuousHorizontal, 0);
    default:
      return 0;
  }
}

double VerticalShift(const TextLook& look, const LaidOutText& text, double height) {
  const double below = text.descent + (text.vertical ? height - text.ascent - text.descent : 0);
  switch (look.vertical) {
    case VerticalAlign::Top:
      return -text.ascent;
    case VerticalAlign::Cap:
      return -text.cap;
    case VerticalAlign::Half:
      return text.vertical ? below - height / 2 : -text.cap / 2;
    case VerticalAlign::Bottom:
      return below;
    case VerticalAlign::Continuous:
      return below - height * Finite(look.continuousVertical, 0);
    case VerticalAlign::Normal:
      return look.path == TextPath::Down ? -text.ascent : 0;
    case VerticalAlign::Base:
      break;
  }
  return 0;
}

void PlaceCharacters(const TextLook& look, std::vector<double> advances, LaidOutText& text) {
  const double spacing = Finite(look.spacing, 0) * text.cap;
  const double line = text.ascent + text.descent + spacing;
  for (double& advance : advances) advance *= text.fontSize * text.stretch;
  double x = 0;
  const double widest = advances.empty() ? 0 : *std::max_element(advances.begin(), advances.end());
  for (size_t i = 0; i < advances.size(); ++i) {
    const auto step = static_cast<double>(i);
    if (look.path == TextPath::Up || look.path == TextPath::Down) {
      text.places.push_back(
          {(widest - advances[i]) / 2, look.path == TextPath::Up ? step * line : -step * line});
    } else {
      text.places.push_back({x, 0});
      x += advances[i] + (i + 1 < advances.size() ? spacing : 0);
    }
  }
  text.width = text.vertical ? widest : x;
  if (look.path == TextPath::Left) {
    for (size_t i = 0; i < advances.size(); ++i) text.places[i].x = x - text.places[i].x - advances[i];
  }
}

LaidOutText LayOut(const Drawing& drawing, const Object& object) {
  const TextLook& look = object.attributes->text;
  FontMeasure font = MeasureFont(FontOf(drawing, look), object.text);
  LaidOutText text;
  text.cap = std::abs(Finite(look.height, 0));
  text.fontSize = font.capital > 0 ? text.cap / font.capital : text.cap;
  text.ascent = font.ascent * text.fontSize;
  text.descent = font.descent * text.fontSize;
  const double up = std::hypot(look.up.x, look.up.y), base = std::hypot(look.base.x, look.base.y);
  text.stretch = std::abs(Finite(look.expansion, 1)) * (up > 0 && base > 0 ? Finite(base / up, 1) : 1);
  text.vertical = look.path == TextPath::Up || look.path == TextPath::Down;
  PlaceCharacters(look, std::move(font.advances), text);
  return text;
}

// Makes a restricted text fit its box.
void Restrict(const Object& object, LaidOutText& text) {
  if (object.kind != ObjectKind::RestrictedText) return;
  const double width = std::abs(object.box.x), height = std::abs(object.box.y);
  const double tall = text.ascent + text.descent;
  if (height > 0 && tall > height) {
    const double shrink = height / tall;
    for (double* value : {&text.fontSize, &text.ascent, &text.descent, &text.cap, &text.width})
      *value *= shrink;
    for (Point& place : text.places) place = {place.x * shrink, place.y * shrink};
  }
  if (width > 0 && text.width > width) {
    const double squeeze = width / text.width;
    text.stretch *= squeeze;
    text.width *= squeeze;
    for (Point& place : text.places) place.x *= squeeze;
  }
}

void Align(const TextLook& look, LaidOutText& text) {
  const double lines = text.vertical ? static_cast<double>(std::max<size_t>(1, text.places.size())) : 1;
  const double height = lines * (text.ascent + text.descent);
  text.left = HorizontalShift(look, text);
  text.bottom = VerticalShift(look, text, height);
}

}  // namespace

FontName FontOf(const Drawing& drawing, const TextLook& look) {
  const auto index = static_cast<size_t>(std::max(1, look.font)) - 1;
  const std::string name = index < drawing.fonts.size() ? drawing.fonts[index] : "";
  const auto contains = [&](const char* word) { return name.find(word) != std::string::npos; };
  FontName font;
  font.family = name.substr(0, name.find_first_of("-_:"));
  if (contains("ardware") || contains("HERSHEY")) font.family.clear();
  font.slanted = contains("Italic") || contains("Oblique") || contains("ITALIC") || contains("OBLIQUE");
  font.bold = contains("Bold") || contains("BOLD");
  return font;
}

LaidOutText LayOutText(const Drawing& drawing, const Object& object) {
  const TextLook& look = object.attributes->text;
  LaidOutText text = LayOut(drawing, object);
  Restrict(object, text);
  Align(look, text);
  const double up = std::hypot(look.up.x, look.up.y), base = std::hypot(look.base.x, look.base.y);
  if (up > 0 && base > 0 && std::isfinite(up) && std::isfinite(base)) {
    text.along = {look.base.x / base, look.base.y / base};
    text.across = {look.up.x / up, look.up.y / up};
  }
  return text;
}

void TextCorners(const Drawing& drawing, const Object& object, TextBox textBox, Point (&corners)[4]) {
  const LaidOutText text = LayOutText(drawing, object);
  const double above = textBox == TextBox::Full ? text.ascent : text.cap;
  const double below = textBox == TextBox::Full ? text.descent : 0;
  double low = -below, high = above;
  for (const Point& place : text.places) {
    low = std::min(low, place.y - below);
    high = std::max(high, place.y + above);
  }
  const Point origin = object.points[0];
  corners[0] = text.Place(origin, {0, low});
  corners[1] = text.Place(origin, {text.width, low});
  corners[2] = text.Place(origin, {text.width, high});
  corners[3] = text.Place(origin, {0, high});
}

}  // namespace media
