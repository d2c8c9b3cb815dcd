// Texts: real fonts, placed by alignment, height and orientation.
#include <algorithm>
#include <cmath>

#include "hostkit/vector/paint.h"

namespace hostkit {
namespace {

constexpr double kMeasureSize = 1000;

std::string ToUtf8(const std::string& latin1) {
  std::string utf8;
  for (const char c : latin1) {
    const auto byte = static_cast<uint8_t>(c);
    if (byte < 0x20) {
      utf8 += ' ';
    } else if (byte < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

// Takes a metafile font name apart: "Times-BoldItalic" is family Times, bold, italic.
void SelectFont(cairo_t* cairo, const std::string& name) {
  const auto contains = [&](const char* word) { return name.find(word) != std::string::npos; };
  std::string family = ToUtf8(name.substr(0, name.find_first_of("-_:")));
  if (family.empty() || contains("ardware") || contains("HERSHEY")) family = "sans-serif";
  const bool slanted =
      contains("Italic") || contains("Oblique") || contains("ITALIC") || contains("OBLIQUE");
  const bool bold = contains("Bold") || contains("BOLD");
  cairo_select_font_face(cairo, family.c_str(),
                         slanted ? CAIRO_FONT_SLANT_ITALIC : CAIRO_FONT_SLANT_NORMAL,
                         bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
}

double Finite(double value, double otherwise) { return std::isfinite(value) ? value : otherwise; }

// A text laid out along its baseline in VDC units: x to the right of the first character, y upwards.
struct LaidOut {
  double fontSize = 0, stretch = 1;
  double width = 0, ascent = 0, cap = 0, descent = 0;
  double left = 0, bottom = 0;  // of the first baseline point, once aligned
  bool vertical = false;
  std::vector<std::string> characters;
  std::vector<Point> places;
};

std::vector<std::string> Characters(const std::string& text) {
  std::vector<std::string> characters;
  for (const char c : text) characters.push_back(ToUtf8(std::string(1, c)));
  return characters;
}

double HorizontalShift(const TextLook& look, const LaidOut& text) {
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

double VerticalShift(const TextLook& look, const LaidOut& text, double height) {
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

void PlaceCharacters(cairo_t* cairo, const TextLook& look, LaidOut& text, double unit) {
  const double spacing = Finite(look.spacing, 0) * text.cap;
  const double line = text.ascent + text.descent + spacing;
  std::vector<double> advances;
  for (const std::string& character : text.characters) {
    cairo_text_extents_t extents;
    cairo_text_extents(cairo, character.c_str(), &extents);
    advances.push_back(extents.x_advance * unit * text.stretch);
  }
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

LaidOut LayOut(cairo_t* cairo, const Drawing& drawing, const Object& object) {
  const TextLook& look = object.attributes->text;
  LaidOut text;
  const auto font = static_cast<size_t>(std::max(1, look.font)) - 1;
  SelectFont(cairo, font < drawing.fonts.size() ? drawing.fonts[font] : "");
  cairo_set_font_size(cairo, kMeasureSize);
  cairo_text_extents_t capital;
  cairo_text_extents(cairo, "H", &capital);
  cairo_font_extents_t whole;
  cairo_font_extents(cairo, &whole);
  text.cap = std::abs(Finite(look.height, 0));
  const double unit = capital.height > 0 ? text.cap / capital.height : text.cap / kMeasureSize;
  text.fontSize = kMeasureSize * unit;
  text.ascent = whole.ascent * unit;
  text.descent = whole.descent * unit;
  const double up = std::hypot(look.up.x, look.up.y), base = std::hypot(look.base.x, look.base.y);
  text.stretch = std::abs(Finite(look.expansion, 1)) * (up > 0 && base > 0 ? Finite(base / up, 1) : 1);
  text.vertical = look.path == TextPath::Up || look.path == TextPath::Down;
  text.characters = Characters(object.text);
  PlaceCharacters(cairo, look, text, unit);
  return text;
}

// Makes a restricted text fit its box.
void Restrict(const Object& object, LaidOut& text) {
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

void Align(const TextLook& look, LaidOut& text) {
  const double lines = text.vertical ? static_cast<double>(std::max<size_t>(1, text.places.size())) : 1;
  const double height = lines * (text.ascent + text.descent);
  text.left = HorizontalShift(look, text);
  text.bottom = VerticalShift(look, text, height);
}

// Unit directions along and across the baseline.
void Axes(const TextLook& look, Point& along, Point& across) {
  const double up = std::hypot(look.up.x, look.up.y), base = std::hypot(look.base.x, look.base.y);
  const bool usable = up > 0 && base > 0 && std::isfinite(up) && std::isfinite(base);
  along = usable ? Point{look.base.x / base, look.base.y / base} : Point{1, 0};
  across = usable ? Point{look.up.x / up, look.up.y / up} : Point{0, 1};
}

Point Combine(Point origin, Point along, double x, Point across, double y) {
  return {origin.x + x * along.x + y * across.x, origin.y + x * along.y + y * across.y};
}

class Scratch {
 public:
  Scratch()
      : surface_(cairo_recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr)),
        cairo_(cairo_create(surface_)) {}
  ~Scratch() {
    cairo_destroy(cairo_);
    cairo_surface_destroy(surface_);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  cairo_t* get() { return cairo_; }

 private:
  cairo_surface_t* surface_;
  cairo_t* cairo_;
};

LaidOut Prepare(const Drawing& drawing, const Object& object) {
  Scratch scratch;
  LaidOut text = LayOut(scratch.get(), drawing, object);
  Restrict(object, text);
  Align(object.attributes->text, text);
  return text;
}

}  // namespace

void TextCorners(const Drawing& drawing, const Object& object, TextBox textBox, Point (&corners)[4]) {
  const LaidOut text = Prepare(drawing, object);
  Point along, across;
  Axes(object.attributes->text, along, across);
  const double above = textBox == TextBox::Full ? text.ascent : text.cap;
  const double below = textBox == TextBox::Full ? text.descent : 0;
  double low = -below, high = above;
  for (const Point& place : text.places) {
    low = std::min(low, place.y - below);
    high = std::max(high, place.y + above);
  }
  const Point origin = object.points[0];
  corners[0] = Combine(origin, along, text.left, across, text.bottom + low);
  corners[1] = Combine(origin, along, text.left + text.width, across, text.bottom + low);
  corners[2] = Combine(origin, along, text.left + text.width, across, text.bottom + high);
  corners[3] = Combine(origin, along, text.left, across, text.bottom + high);
}

void PaintText(cairo_t* cairo, const Drawing& drawing, const Object& object, const DeviceMap& map) {
  const Attributes& attributes = *object.attributes;
  const LaidOut text = Prepare(drawing, object);
  if (text.fontSize <= 0 || !std::isfinite(text.fontSize)) return;
  const auto font = static_cast<size_t>(std::max(1, attributes.text.font)) - 1;
  Point along, across;
  Axes(attributes.text, along, across);
  const Point x =
      map.Direction({along.x * text.fontSize * text.stretch, along.y * text.fontSize * text.stretch});
  const Point y = map.Direction({across.x * text.fontSize, across.y * text.fontSize});
  constexpr double kLargest = 10000;  // pixels; larger glyphs are nothing but memory
  const double area = std::abs(x.x * y.y - x.y * y.x);
  if (!(area > 1e-6) || std::hypot(x.x, x.y) > kLargest || std::hypot(y.x, y.y) > kLargest) return;
  SelectFont(cairo, font < drawing.fonts.size() ? drawing.fonts[font] : "");
  cairo_matrix_t matrix;
  cairo_matrix_init(&matrix, x.x, x.y, -y.x, -y.y, 0, 0);
  cairo_set_font_matrix(cairo, &matrix);
  SetColour(cairo, attributes.text.colour);
  // The pictures of large glyphs would be kept; their outlines are not.
  constexpr double kLargestKept = 200;
  const bool asOutline = std::hypot(x.x, x.y) > kLargestKept || std::hypot(y.x, y.y) > kLargestKept;
  for (size_t i = 0; i < text.characters.size(); ++i) {
    const Point place = Combine(object.points[0], along, text.left + text.places[i].x, across,
                                text.bottom + text.places[i].y);
    const Point device = map.ToDevice(place);
    cairo_move_to(cairo, device.x, device.y);
    if (asOutline) {
      cairo_text_path(cairo, text.characters[i].c_str());
      cairo_fill(cairo);
    } else {
      cairo_show_text(cairo, text.characters[i].c_str());
    }
  }
}

}  // namespace hostkit
