// Texts measured with the fonts of Windows.
#define NOMINMAX
#include <windows.h>

#include <algorithm>

#include "media/drawing/text.h"

namespace media {
namespace {

constexpr int kMeasureSize = 1000;

// A font in a device context of its own.
class MeasuringDc {
 public:
  explicit MeasuringDc(const FontName& name) {
    std::wstring family;
    for (const char c : name.family) family += static_cast<wchar_t>(static_cast<uint8_t>(c));
    family.resize(std::min<size_t>(family.size(), LF_FACESIZE - 1));
    dc_ = CreateCompatibleDC(nullptr);
    font_ = CreateFontW(-kMeasureSize, 0, 0, 0, name.bold ? FW_BOLD : FW_NORMAL, name.slanted, 0, 0,
                        DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                        DEFAULT_PITCH | FF_SWISS, family.c_str());
    before_ = SelectObject(dc_, font_);
  }
  ~MeasuringDc() {
    SelectObject(dc_, before_);
    DeleteObject(font_);
    DeleteDC(dc_);
  }
  MeasuringDc(const MeasuringDc&) = delete;
  MeasuringDc& operator=(const MeasuringDc&) = delete;
  HDC get() const { return dc_; }

 private:
  HDC dc_;
  HFONT font_;
  HGDIOBJ before_;
};

// Of a font that does not tell.
constexpr double kUsualCapital = 0.7;

double CapitalHeight(HDC dc) {
  constexpr MAT2 kUpright = {{0, 1}, {0, 0}, {0, 0}, {0, 1}};
  GLYPHMETRICS glyph = {};
  const DWORD got = GetGlyphOutlineW(dc, L'H', GGO_METRICS, &glyph, 0, nullptr, &kUpright);
  return got != GDI_ERROR && glyph.gmBlackBoxY > 0 ? 1.0 * glyph.gmBlackBoxY / kMeasureSize
                                                   : kUsualCapital;
}

}  // namespace

FontMeasure MeasureFont(const FontName& name, const std::string& text) {
  const MeasuringDc dc(name);
  TEXTMETRICW whole = {};
  GetTextMetricsW(dc.get(), &whole);
  FontMeasure measure = {CapitalHeight(dc.get()),
                         static_cast<double>(whole.tmAscent) / kMeasureSize,
                         static_cast<double>(whole.tmDescent) / kMeasureSize,
                         {}};
  for (const char c : text) {
    const auto byte = static_cast<uint8_t>(c);
    const wchar_t character = byte < 0x20 ? L' ' : static_cast<wchar_t>(byte);
    SIZE size = {};
    GetTextExtentPoint32W(dc.get(), &character, 1, &size);
    measure.advances.push_back(static_cast<double>(size.cx) / kMeasureSize);
  }
  return measure;
}

}  // namespace media
