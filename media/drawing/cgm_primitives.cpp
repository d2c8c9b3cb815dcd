// The primitives of a metafile.
#include "media/drawing/cgm_reader.h"

namespace media {

void CgmReader::Change(const Attributes& next) {
  if (next == state_) return;
  state_ = next;
  changed_ = true;
}

void CgmReader::Add(Object object) {
  if (changed_ || shared_ == nullptr) {
    shared_ = std::make_shared<const Attributes>(state_);
    changed_ = false;
  }
  object.attributes = shared_;
  drawing_.layers[0].objects.push_back(std::move(object));
}

void CgmReader::AddPoints(ObjectKind kind, std::vector<Point> points) {
  if (points.size() < (kind == ObjectKind::Polymarker ? 1u : 2u)) return;
  Object object;
  object.kind = kind;
  object.points = std::move(points);
  Add(std::move(object));
}

namespace {

// Primitives of a fixed number of points, then perhaps a radius, then perhaps a close type.
struct FixedForm {
  Element element;
  ObjectKind kind;
  uint8_t points;
  bool radius, close;
};
constexpr FixedForm kFixedForms[] = {
    {Element::Rectangle, ObjectKind::Rectangle, 2, false, false},
    {Element::Circle, ObjectKind::Circle, 1, true, false},
    {Element::ArcThreePoint, ObjectKind::ArcThreePoint, 3, false, false},
    {Element::ArcThreePointClose, ObjectKind::ArcThreePointClose, 3, false, true},
    {Element::ArcCentre, ObjectKind::ArcCentre, 3, true, false},
    {Element::ArcCentreClose, ObjectKind::ArcCentreClose, 3, true, true},
    {Element::Ellipse, ObjectKind::Ellipse, 3, false, false},
    {Element::EllipticalArc, ObjectKind::EllipticalArc, 5, false, false},
    {Element::EllipticalArcClose, ObjectKind::EllipticalArcClose, 5, false, true},
};

}  // namespace

void CgmReader::AddFixed(Element element, Parameters& p) {
  for (const FixedForm& form : kFixedForms) {
    if (form.element != element) continue;
    Object object;
    object.kind = form.kind;
    object.points.resize(form.points);
    for (Point& point : object.points) point = p.ReadPoint();
    if (form.radius) object.radius = p.Vdc();
    if (form.close) object.close = p.Enumerated() == 1 ? CloseType::Chord : CloseType::Pie;
    if (p.Good()) Add(std::move(object));
  }
}

void CgmReader::Primitive(Element element, Parameters& p) {
  if (element != Element::AppendText) textOpen_ = false;
  switch (element) {
    case Element::Polyline:
      return AddPoints(ObjectKind::Polyline, p.Points());
    case Element::DisjointPolyline:
      return AddPoints(ObjectKind::DisjointPolyline, p.Points());
    case Element::Polymarker:
      return AddPoints(ObjectKind::Polymarker, p.Points());
    case Element::Polygon:
      return AddPoints(ObjectKind::Polygon, p.Points());
    case Element::PolygonSet:
      return AddPolygonSet(p);
    case Element::Text:
    case Element::RestrictedText:
      return AddText(element, p);
    case Element::AppendText:
      return AppendText(p);
    case Element::CellArray:
      return AddCellArray(p);
    default:
      return AddFixed(element, p);
  }
}

void CgmReader::AddPolygonSet(Parameters& p) {
  Object object;
  object.kind = ObjectKind::PolygonSet;
  while (p.Left() >= 2 * p.VdcBytes() + 2) {
    object.points.push_back(p.ReadPoint());
    object.edgeFlags.push_back(static_cast<uint8_t>(p.Enumerated() & 3));
  }
  if (!object.points.empty()) Add(std::move(object));
}

void CgmReader::AddText(Element element, Parameters& p) {
  Object object;
  object.kind = element == Element::Text ? ObjectKind::Text : ObjectKind::RestrictedText;
  if (element == Element::RestrictedText) object.box = p.ReadPoint();
  object.points = {p.ReadPoint()};
  const bool final = p.Enumerated() != 0;
  object.text = p.String();
  textOpen_ = p.Good() && !final;
  if (p.Good()) Add(std::move(object));
}

void CgmReader::AppendText(Parameters& p) {
  const bool final = p.Enumerated() != 0;
  const std::string text = p.String();
  std::vector<Object>& objects = drawing_.layers[0].objects;
  if (textOpen_ && p.Good()) objects.back().text += text;
  if (final) textOpen_ = false;
}

void CgmReader::AddCellArray(Parameters& p) {
  Object object;
  object.kind = ObjectKind::CellArray;
  object.points.resize(3);
  for (Point& point : object.points) point = p.ReadPoint();
  object.columns = p.Integer();
  object.rows = p.Integer();
  int32_t bits = p.Integer();
  const bool packed = p.Enumerated() == 1;
  if (bits == 0) bits = 8 * (coding_.directColour ? coding_.colourBytes : coding_.colourIndexBytes);
  const bool knownBits =
      bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
  if (!p.Good() || object.columns <= 0 || object.rows <= 0 || !knownBits) return;
  const uint64_t cells = uint64_t(object.columns) * uint64_t(object.rows);
  if (!TakeCells(cells)) return;
  object.cells.resize(static_cast<size_t>(cells));
  p.AlignToWord();
  BitReader reader(p.Rest());
  for (int32_t row = 0; row < object.rows; ++row) {
    Colour* out = &object.cells[static_cast<size_t>(row) * static_cast<size_t>(object.columns)];
    if (!(packed ? ReadPackedRow(reader, bits, out, object.columns)
                 : ReadRuns(reader, bits, out, object.columns)))
      break;
    reader.AlignToWord();
  }
  Add(std::move(object));
}

// Runs may stand for many cells, but not for more memory than the metafile warrants.
bool CgmReader::TakeCells(uint64_t cells) {
  const uint64_t warranted = 4 * uint64_t{bytes_.size()};
  if (cells > warranted || cellsTaken_ > warranted - cells) return false;
  cellsTaken_ += cells;
  return true;
}

bool CgmReader::ReadCell(BitReader& reader, int bits, Colour& colour) const {
  uint32_t value = 0;
  if (!coding_.directColour) {
    if (!reader.Take(bits, value)) return false;
    colour = value < table_.size() ? table_[value] : Colour{};
    return true;
  }
  uint8_t parts[3];
  const double full = std::exp2(bits) - 1;
  for (uint8_t& part : parts) {
    if (!reader.Take(bits, value)) return false;
    part = static_cast<uint8_t>(std::lround(value * 255.0 / full));
  }
  colour = {parts[0], parts[1], parts[2]};
  return true;
}

bool CgmReader::ReadPackedRow(BitReader& reader, int bits, Colour* out, int32_t columns) const {
  for (int32_t i = 0; i < columns; ++i) {
    if (!ReadCell(reader, bits, out[i])) return false;
  }
  return true;
}

bool CgmReader::ReadRuns(BitReader& reader, int bits, Colour* out, int32_t columns) const {
  for (int32_t i = 0; i < columns;) {
    uint32_t count = 0;
    Colour colour;
    if (!reader.Take(8 * coding_.integerBytes, count) || !ReadCell(reader, bits, colour) || count == 0)
      return false;
    const auto run = static_cast<int32_t>(std::min<uint32_t>(count, static_cast<uint32_t>(columns - i)));
    std::fill(out + i, out + i + run, colour);
    i += run;
  }
  return true;
}

}  // namespace media
