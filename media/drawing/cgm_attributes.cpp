// The attributes of a metafile.
#include "media/drawing/cgm_reader.h"

namespace media {

void CgmReader::Attribute(Element element, Parameters& p) {
  if (element == Element::ColourTable) return ReadColourTable(p);
  if (element == Element::PatternTable) return ReadPattern(p);
  Attributes next = state_;
  if (!(LineAttribute(element, p, next) || TextAttribute(element, p, next.text) ||
        FillAttribute(element, p, next))) {
    return;
  }
  if (p.Good()) Change(next);
}

double CgmReader::Width(Parameters& p, bool scaled) { return scaled ? p.Real() : p.Vdc(); }

bool CgmReader::LineAttribute(Element element, Parameters& p, Attributes& next) {
  switch (element) {
    case Element::LineType:
      next.line.type = p.Index();
      return true;
    case Element::LineWidth:
      next.line.width = Width(p, next.line.scaled);
      return lineWidthSet_ = true;
    case Element::LineColour:
      next.line.colour = p.ReadColour();
      return colourSet_ = true;
    case Element::MarkerType:
      next.marker.type = p.Index();
      return true;
    case Element::MarkerSize:
      next.marker.size = Width(p, next.marker.scaled);
      return markerSizeSet_ = true;
    case Element::MarkerColour:
      next.marker.colour = p.ReadColour();
      return colourSet_ = true;
    case Element::EdgeType:
      next.edge.type = p.Index();
      return true;
    case Element::EdgeWidth:
      next.edge.width = Width(p, next.edge.scaled);
      return edgeWidthSet_ = true;
    case Element::EdgeColour:
      next.edge.colour = p.ReadColour();
      return colourSet_ = true;
    case Element::EdgeVisibility:
      next.edgeVisible = p.Enumerated() == 1;
      return true;
    default:
      return false;
  }
}

bool CgmReader::TextAttribute(Element element, Parameters& p, TextLook& text) {
  switch (element) {
    case Element::TextFont:
      text.font = p.Index();
      return true;
    case Element::TextPrecision:
      text.precision = p.Enumerated();
      return true;
    case Element::CharacterExpansion:
      text.expansion = p.Real();
      return true;
    case Element::CharacterSpacing:
      text.spacing = p.Real();
      return true;
    case Element::TextColour:
      text.colour = p.ReadColour();
      return colourSet_ = true;
    case Element::CharacterHeight:
      text.height = p.Vdc();
      return heightSet_ = true;
    case Element::CharacterOrientation:
      text.up = p.ReadPoint();
      text.base = p.ReadPoint();
      return true;
    case Element::TextPath:
      text.path = static_cast<TextPath>(std::clamp(p.Enumerated(), 0, 3));
      return true;
    case Element::TextAlignment:
      text.horizontal = static_cast<HorizontalAlign>(std::clamp(p.Enumerated(), 0, 4));
      text.vertical = static_cast<VerticalAlign>(std::clamp(p.Enumerated(), 0, 6));
      text.continuousHorizontal = p.Real();
      text.continuousVertical = p.Real();
      return true;
    default:
      return false;
  }
}

bool CgmReader::FillAttribute(Element element, Parameters& p, Attributes& next) {
  switch (element) {
    case Element::InteriorStyle:
      next.fill.interior = static_cast<Interior>(std::clamp(p.Enumerated(), 0, 4));
      return true;
    case Element::FillColour:
      next.fill.colour = p.ReadColour();
      return colourSet_ = true;
    case Element::HatchIndex:
      next.fill.hatch = p.Index();
      return true;
    case Element::PatternIndex:
      next.fill.pattern = p.Index();
      return true;
    case Element::PatternSize:
      next.fill.patternHeight = p.ReadPoint();
      next.fill.patternWidth = p.ReadPoint();
      return true;
    default:
      return false;
  }
}

void CgmReader::ReadColourTable(Parameters& p) {
  const auto maxColours = static_cast<uint32_t>(std::min<size_t>(65536, 256 + 4 * bytes_.size()));
  uint32_t index = p.Unsigned(coding_.colourIndexBytes);
  const auto size = 3 * static_cast<size_t>(coding_.colourBytes);
  for (; p.Left() >= size && index < maxColours; ++index) {
    if (index >= table_.size()) table_.resize(index + 1);
    table_[index] = p.DirectColour();
  }
}

void CgmReader::ReadPattern(Parameters& p) {
  const int32_t index = p.Index();
  Pattern pattern;
  pattern.columns = p.Integer();
  pattern.rows = p.Integer();
  int32_t bits = p.Integer();
  if (bits == 0) bits = 8 * (coding_.directColour ? coding_.colourBytes : coding_.colourIndexBytes);
  const uint64_t cells = uint64_t(std::max(0, pattern.columns)) * uint64_t(std::max(0, pattern.rows));
  if (!p.Good() || cells == 0 || bits < 1 || bits > 32 || !TakeCells(cells)) return;
  pattern.cells.resize(static_cast<size_t>(cells));
  BitReader reader(p.Rest());
  for (int32_t row = 0; row < pattern.rows; ++row) {
    Colour* out = &pattern.cells[static_cast<size_t>(row) * static_cast<size_t>(pattern.columns)];
    if (!ReadPackedRow(reader, bits, out, pattern.columns)) break;
    reader.AlignToWord();
  }
  drawing_.patterns[index] = std::move(pattern);
}

}  // namespace media
