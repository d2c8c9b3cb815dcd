// Texts measured and drawn with Cairo's fonts.
#include <cmath>

#include "hostkit/vector/paint.h"
#include "hostkit/vector/text.h"

namespace hostkit {
namespace {

constexpr double kMeasureSize = 1000;

std::string Utf8(const std::string& latin1) {
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

void SelectFont(cairo_t* cairo, const FontName& name) {
  const std::string family = name.family.empty() ? "sans-serif" : Utf8(name.family);
  cairo_select_font_face(cairo, family.c_str(),
                         name.slanted ? CAIRO_FONT_SLANT_ITALIC : CAIRO_FONT_SLANT_NORMAL,
                         name.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
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

}  // namespace

FontMeasure MeasureFont(const FontName& name, const std::string& text) {
  Scratch scratch;
  SelectFont(scratch.get(), name);
  cairo_set_font_size(scratch.get(), kMeasureSize);
  cairo_text_extents_t extents;
  cairo_text_extents(scratch.get(), "H", &extents);
  cairo_font_extents_t whole;
  cairo_font_extents(scratch.get(), &whole);
  FontMeasure measure = {
      extents.height / kMeasureSize, whole.ascent / kMeasureSize, whole.descent / kMeasureSize, {}};
  for (const char c : text) {
    cairo_text_extents(scratch.get(), Utf8(std::string(1, c)).c_str(), &extents);
    measure.advances.push_back(extents.x_advance / kMeasureSize);
  }
  return measure;
}

namespace {

// The box behind an opaque text.
void FillTextBox(cairo_t* cairo, const Drawing& drawing, const Object& object, const DeviceMap& map) {
  Point corners[4];
  TextCorners(drawing, object, TextBox::Full, corners);
  for (const Point& corner : corners) {
    const Point p = map.ToDevice(corner);
    cairo_line_to(cairo, p.x, p.y);
  }
  SetColour(cairo, object.attributes->auxiliary);
  cairo_fill(cairo);
}

}  // namespace

void PaintText(cairo_t* cairo, const Drawing& drawing, const Object& object, const DeviceMap& map) {
  const Attributes& attributes = *object.attributes;
  const LaidOutText text = LayOutText(drawing, object);
  if (text.fontSize <= 0 || !std::isfinite(text.fontSize)) return;
  const Point x = map.Direction(
      {text.along.x * text.fontSize * text.stretch, text.along.y * text.fontSize * text.stretch});
  const Point y = map.Direction({text.across.x * text.fontSize, text.across.y * text.fontSize});
  constexpr double kLargest = 10000;  // pixels; larger glyphs are nothing but memory
  const double area = std::abs(x.x * y.y - x.y * y.x);
  if (!(area > 1e-6) || std::hypot(x.x, x.y) > kLargest || std::hypot(y.x, y.y) > kLargest) return;
  if (!attributes.transparent) FillTextBox(cairo, drawing, object, map);
  SelectFont(cairo, FontOf(drawing, attributes.text));
  cairo_matrix_t matrix;
  cairo_matrix_init(&matrix, x.x, x.y, -y.x, -y.y, 0, 0);
  cairo_set_font_matrix(cairo, &matrix);
  SetColour(cairo, attributes.text.colour);
  // The pictures of large glyphs would be kept; their outlines are not.
  constexpr double kLargestKept = 200;
  const bool asOutline = std::hypot(x.x, x.y) > kLargestKept || std::hypot(y.x, y.y) > kLargestKept;
  for (size_t i = 0; i < text.places.size(); ++i) {
    const std::string character = Utf8(object.text.substr(i, 1));
    const Point device = map.ToDevice(text.Place(object.points[0], text.places[i]));
    cairo_move_to(cairo, device.x, device.y);
    if (asOutline) {
      cairo_text_path(cairo, character.c_str());
      cairo_fill(cairo);
    } else {
      cairo_show_text(cairo, character.c_str());
    }
  }
}

}  // namespace hostkit
