// Texts measured with Cairo's fonts.
#include "media/drawing/text_cairo.h"

#include <algorithm>
#include <cmath>
#include <list>

namespace media {

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
  Cairo().select_font_face(cairo, family.c_str(),
                           name.slanted ? CAIRO_FONT_SLANT_ITALIC : CAIRO_FONT_SLANT_NORMAL,
                           name.bold ? CAIRO_FONT_WEIGHT_BOLD : CAIRO_FONT_WEIGHT_NORMAL);
}

namespace {

constexpr double kMeasureSize = 1000;

class Scratch {
 public:
  Scratch()
      : surface_(Cairo().recording_surface_create(CAIRO_CONTENT_ALPHA, nullptr)),
        cairo_(Cairo().create(surface_)) {}
  ~Scratch() {
    Cairo().destroy(cairo_);
    Cairo().surface_destroy(surface_);
  }
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  cairo_t* get() { return cairo_; }

 private:
  cairo_surface_t* surface_;
  cairo_t* cairo_;
};

// What is known of a font: its heights, and the advances of the characters that were asked for.
struct KnownFont {
  FontName name;
  FontMeasure measure;
  double advances[256];

  explicit KnownFont(const FontName& font) : name(font) {
    Scratch scratch;
    Select(scratch);
    cairo_text_extents_t extents;
    Cairo().text_extents(scratch.get(), "H", &extents);
    cairo_font_extents_t whole;
    Cairo().font_extents(scratch.get(), &whole);
    measure = {
        extents.height / kMeasureSize, whole.ascent / kMeasureSize, whole.descent / kMeasureSize, {}};
    std::fill(std::begin(advances), std::end(advances), NAN);
  }
  void Learn(const std::string& text) {
    const auto unknown = [this](char c) { return std::isnan(advances[static_cast<uint8_t>(c)]); };
    if (std::none_of(text.begin(), text.end(), unknown)) return;
    Scratch scratch;
    Select(scratch);
    for (const char c : text) {
      if (!unknown(c)) continue;
      cairo_text_extents_t extents;
      Cairo().text_extents(scratch.get(), Utf8(std::string(1, c)).c_str(), &extents);
      advances[static_cast<uint8_t>(c)] = extents.x_advance / kMeasureSize;
    }
  }

 private:
  void Select(Scratch& scratch) const {
    SelectFont(scratch.get(), name);
    Cairo().set_font_size(scratch.get(), kMeasureSize);
  }
};

}  // namespace

// Measuring a font anew for every text of a drawing would take longer than drawing it.
FontMeasure MeasureFont(const FontName& name, const std::string& text) {
  constexpr size_t kKept = 16;
  thread_local std::list<KnownFont> fonts;  // the last used in front
  auto found =
      std::find_if(fonts.begin(), fonts.end(), [&](const KnownFont& f) { return f.name == name; });
  if (found == fonts.end()) {
    fonts.emplace_front(name);
    if (fonts.size() > kKept) fonts.pop_back();
  } else {
    fonts.splice(fonts.begin(), fonts, found);
  }
  KnownFont& font = fonts.front();
  font.Learn(text);
  FontMeasure measure = font.measure;
  for (const char c : text) measure.advances.push_back(font.advances[static_cast<uint8_t>(c)]);
  return measure;
}

}  // namespace media
