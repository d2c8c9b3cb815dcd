// Decodes binary metafiles. Elements are read within their own bytes: what is cut short or unknown is
// skipped, so a damaged element costs only itself.
#include <algorithm>
#include <bit>
#include <cmath>
#include <span>

#include "hostkit/hostkit.h"
#include "hostkit/vector/cgm.h"
#include "hostkit/vector/drawing.h"

namespace hostkit {
namespace {

using Bytes = std::span<const uint8_t>;

// Precisions and modes that say how parameters are written.
struct Coding {
  bool vdcReal = false;
  int integerBytes = 2, indexBytes = 2, colourBytes = 1, colourIndexBytes = 1, vdcIntegerBytes = 2;
  RealForm real, vdcRealForm;
  bool directColour = false;
  double colourLow[3] = {0, 0, 0};
  double colourHigh[3] = {255, 255, 255};
};

// The parameters of one element. Reading past their end gives zeros and is remembered.
class Parameters {
 public:
  Parameters(Bytes bytes, const Coding& coding, const std::vector<Colour>& table)
      : bytes_(bytes), coding_(coding), table_(table) {}

  bool Good() const { return good_; }
  size_t Left() const { return bytes_.size() - at_; }

  uint32_t Unsigned(int bytes) {
    uint32_t value = 0;
    if (Left() < static_cast<size_t>(bytes)) {
      good_ = false;
      at_ = bytes_.size();
      return 0;
    }
    for (int i = 0; i < bytes; ++i) value = value << 8 | bytes_[at_++];
    return value;
  }
  int32_t Signed(int bytes) {
    const int shift = 32 - 8 * bytes;
    return static_cast<int32_t>(Unsigned(bytes) << shift) >> shift;
  }
  int32_t Enumerated() { return Signed(2); }
  int32_t Integer() { return Signed(coding_.integerBytes); }
  int32_t Index() { return Signed(coding_.indexBytes); }
  double Real() { return RealOf(coding_.real); }
  double Vdc() { return coding_.vdcReal ? RealOf(coding_.vdcRealForm) : Signed(coding_.vdcIntegerBytes); }
  Point ReadPoint() {
    const double x = Vdc();
    return {x, Vdc()};
  }
  /// Points to the end of the parameters.
  std::vector<Point> Points() {
    std::vector<Point> points;
    const size_t size = 2 * VdcBytes();
    points.reserve(Left() / size);
    while (Left() >= size) points.push_back(ReadPoint());
    return points;
  }
  Colour DirectColour() {
    uint8_t parts[3];
    for (int i = 0; i < 3; ++i) {
      const double span = coding_.colourHigh[i] - coding_.colourLow[i];
      const double value = Unsigned(coding_.colourBytes);
      const double share = span != 0 ? (value - coding_.colourLow[i]) / span : 0;
      parts[i] = static_cast<uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
    }
    return {parts[0], parts[1], parts[2]};
  }
  Colour ReadColour() {
    return coding_.directColour ? DirectColour() : Indexed(Unsigned(coding_.colourIndexBytes));
  }
  Colour Indexed(uint32_t index) const { return index < table_.size() ? table_[index] : Colour{}; }
  std::string String() {
    std::string text;
    uint32_t length = Unsigned(1);
    bool more = length == 255;
    if (more) length = LongLength(more);
    for (;;) {
      const size_t taken = std::min<size_t>(length, Left());
      if (taken < length) good_ = false;
      text.append(reinterpret_cast<const char*>(bytes_.data()) + at_, taken);
      at_ += taken;
      if (!more || !good_) return text;
      length = LongLength(more);
    }
  }
  size_t VdcBytes() const {
    return static_cast<size_t>(coding_.vdcReal ? coding_.vdcRealForm.bytes : coding_.vdcIntegerBytes);
  }
  void AlignToWord() { at_ = std::min(bytes_.size(), at_ + at_ % 2); }
  Bytes Rest() const { return bytes_.subspan(at_); }

 private:
  uint32_t LongLength(bool& more) {
    const uint32_t word = Unsigned(2);
    more = (word & 0x8000) != 0;
    return word & 0x7FFF;
  }
  double RealOf(const RealForm& form) {
    const uint32_t high = Unsigned(4);
    if (form.bytes == 4) {
      return form.fixedPoint ? static_cast<int32_t>(high) / 65536.0 : double{std::bit_cast<float>(high)};
    }
    const uint32_t low = Unsigned(4);
    if (form.fixedPoint) return static_cast<int32_t>(high) + low / 4294967296.0;
    return std::bit_cast<double>(uint64_t{high} << 32 | low);
  }

  Bytes bytes_;
  const Coding& coding_;
  const std::vector<Colour>& table_;
  size_t at_ = 0;
  bool good_ = true;
};

// Bits of a packed cell array row.
class BitReader {
 public:
  explicit BitReader(Bytes bytes) : bytes_(bytes) {}
  bool Take(int bits, uint32_t& value) {
    value = 0;
    if (bit_ + static_cast<size_t>(bits) > 8 * bytes_.size()) return false;
    for (int i = 0; i < bits; ++i, ++bit_) value = value << 1 | (bytes_[bit_ / 8] >> (7 - bit_ % 8) & 1u);
    return true;
  }
  void AlignToWord() { bit_ = (bit_ + 15) / 16 * 16; }

 private:
  Bytes bytes_;
  size_t bit_ = 0;
};

int BytesOfPrecision(int32_t bits, int otherwise) {
  return bits == 8 || bits == 16 || bits == 24 || bits == 32 ? bits / 8 : otherwise;
}

constexpr size_t kMaxFonts = 256;

class CgmReader {
 public:
  CgmReader(Bytes bytes, Drawing& drawing) : bytes_(bytes), drawing_(drawing) {
    drawing_.layers.resize(1);
    table_ = {{255, 255, 255}, {0, 0, 0}};
  }

  int32_t Run() {
    if (bytes_.size() < 2 ||
        (bytes_[0] << 8 | bytes_[1]) >> 5 != static_cast<int>(Element::BeginMetafile)) {
      return kHostBadData;
    }
    RunElements(bytes_, 0);
    if (drawing_.extent.second.y < drawing_.extent.first.y) TurnUpright();
    return sawPicture_ ? kHostOk : kHostBadData;
  }

 private:
  // A metafile whose y runs downwards becomes a drawing whose y runs upwards.
  void TurnUpright() {
    const auto flip = [](auto&... points) { ((points.y = 0 - points.y), ...); };
    flip(drawing_.extent.first, drawing_.extent.second);
    std::shared_ptr<const Attributes> before, after;
    for (Object& object : drawing_.layers[0].objects) {
      for (Point& point : object.points) flip(point);
      const bool arc = object.kind == ObjectKind::ArcCentre || object.kind == ObjectKind::ArcCentreClose;
      if (arc) std::swap(object.points[1], object.points[2]);
      if (object.attributes != before) {
        before = object.attributes;
        Attributes turned = *before;
        flip(turned.text.up, turned.text.base, turned.clipBox.first, turned.clipBox.second,
             turned.fill.patternHeight, turned.fill.patternWidth);
        after = std::make_shared<const Attributes>(turned);
      }
      object.attributes = after;
    }
  }

  void RunElements(Bytes bytes, int depth) {
    size_t at = 0;
    std::vector<uint8_t> joined;
    while (at + 2 <= bytes.size() && !finished_) {
      const uint32_t word = static_cast<uint32_t>(bytes[at] << 8 | bytes[at + 1]);
      const auto element = static_cast<Element>(word >> 5);
      at += 2;
      const Bytes parameters =
          (word & 31) == 31 ? LongForm(bytes, at, joined) : ShortForm(bytes, at, word & 31);
      RunElement(element, parameters, depth);
    }
  }

  static Bytes ShortForm(Bytes bytes, size_t& at, size_t length) {
    const size_t taken = std::min(length, bytes.size() - at);
    const Bytes parameters = bytes.subspan(at, taken);
    at = std::min(bytes.size(), at + length + length % 2);
    return parameters;
  }

  // Partitions follow one another, each with its own length word; all but the last have its top bit set.
  static Bytes LongForm(Bytes bytes, size_t& at, std::vector<uint8_t>& joined) {
    joined.clear();
    bool more = true;
    while (more && at + 2 <= bytes.size()) {
      const uint32_t word = static_cast<uint32_t>(bytes[at] << 8 | bytes[at + 1]);
      more = (word & 0x8000) != 0;
      at += 2;
      const Bytes part = ShortForm(bytes, at, word & 0x7FFF);
      if (!more && joined.empty()) return part;
      joined.insert(joined.end(), part.begin(), part.end());
    }
    return joined;
  }

  void RunElement(Element element, Bytes bytes, int depth) {
    Parameters p(bytes, coding_, table_);
    const auto number = static_cast<uint32_t>(element);
    switch (number / 128) {
      case 0:
        return Delimiter(element);
      case 1:
        return Descriptor(element, p, bytes, depth);
      case 2:
        return PictureDescriptor(element, p);
      case 3:
        return Control(element, p);
      case 4:
        return sawPicture_ ? Primitive(element, p) : void();
      case 5:
        return Attribute(element, p);
      default:
        return;  // escapes and external elements
    }
  }

  // ---------------------------------------------------------------- delimiters and descriptors

  void Delimiter(Element element) {
    if (element == Element::BeginPicture) sawPicture_ = true;
    if (element == Element::BeginPictureBody) StartBody();
    if (element == Element::EndPicture || element == Element::EndMetafile) finished_ = sawPicture_;
  }

  void StartBody() {
    Attributes& now = state_;
    const double side = std::max(std::abs(drawing_.extent.second.x - drawing_.extent.first.x),
                                 std::abs(drawing_.extent.second.y - drawing_.extent.first.y));
    now.clipBox = drawing_.extent;
    if (!heightSet_) now.text.height = side / 100;
    if (!lineWidthSet_) now.line.width = now.line.scaled ? 1 : side / 1000;
    if (!edgeWidthSet_) now.edge.width = now.edge.scaled ? 1 : side / 1000;
    if (!markerSizeSet_) now.marker.size = now.marker.scaled ? 1 : side / 100;
    if (!colourSet_) {
      for (Colour* colour :
           {&now.line.colour, &now.edge.colour, &now.marker.colour, &now.fill.colour, &now.text.colour}) {
        *colour = table_.size() > 1 ? table_[1] : Colour{};
      }
    }
    changed_ = true;
  }

  RealForm ReadRealForm(Parameters& p, RealForm otherwise) {
    const int32_t fixed = p.Enumerated(), first = p.Integer(), second = p.Integer();
    if (!p.Good()) return otherwise;
    if (fixed == 1 && first == 16 && second == 16) return {true, 4};
    if (fixed == 1 && first == 32 && second == 32) return {true, 8};
    if (fixed == 0 && first == 9 && second == 23) return {false, 4};
    if (fixed == 0 && first == 12 && second == 52) return {false, 8};
    return otherwise;
  }

  void Descriptor(Element element, Parameters& p, Bytes bytes, int depth) {
    switch (element) {
      case Element::VdcType:
        coding_.vdcReal = p.Enumerated() == 1;
        if (coding_.vdcReal && !extentSet_) drawing_.extent = {{0, 0}, {1, 1}};
        return;
      case Element::IntegerPrecision:
        coding_.integerBytes = BytesOfPrecision(p.Integer(), coding_.integerBytes);
        return;
      case Element::RealPrecision:
        coding_.real = ReadRealForm(p, coding_.real);
        return;
      case Element::IndexPrecision:
        coding_.indexBytes = BytesOfPrecision(p.Integer(), coding_.indexBytes);
        return;
      case Element::ColourPrecision:
        coding_.colourBytes = BytesOfPrecision(p.Integer(), coding_.colourBytes);
        for (double& high : coding_.colourHigh) high = std::exp2(8 * coding_.colourBytes) - 1;
        return;
      case Element::ColourIndexPrecision:
        coding_.colourIndexBytes = BytesOfPrecision(p.Integer(), coding_.colourIndexBytes);
        return;
      case Element::ColourValueExtent:
        for (double& low : coding_.colourLow) low = p.Unsigned(coding_.colourBytes);
        for (double& high : coding_.colourHigh) high = p.Unsigned(coding_.colourBytes);
        return;
      case Element::DefaultsReplacement:
        if (depth == 0) RunElements(bytes, depth + 1);
        return;
      case Element::FontList:
        drawing_.fonts.clear();
        while (p.Left() > 0 && drawing_.fonts.size() < kMaxFonts) drawing_.fonts.push_back(p.String());
        return;
      default:
        return;
    }
  }

  void PictureDescriptor(Element element, Parameters& p) {
    switch (element) {
      case Element::ColourSelectionMode:
        coding_.directColour = p.Enumerated() == 1;
        return;
      case Element::LineWidthMode:
        state_.line.scaled = p.Enumerated() == 1;
        return;
      case Element::MarkerSizeMode:
        state_.marker.scaled = p.Enumerated() == 1;
        return;
      case Element::EdgeWidthMode:
        state_.edge.scaled = p.Enumerated() == 1;
        return;
      case Element::VdcExtent: {
        const Point first = p.ReadPoint(), second = p.ReadPoint();
        if (!p.Good()) return;
        drawing_.extent = {first, second};
        extentSet_ = true;
        return;
      }
      case Element::BackgroundColour:
        drawing_.background = p.DirectColour();
        table_[0] = drawing_.background;
        return;
      default:
        return;
    }
  }

  void Control(Element element, Parameters& p) {
    Attributes next = state_;
    switch (element) {
      case Element::VdcIntegerPrecision:
        coding_.vdcIntegerBytes = BytesOfPrecision(p.Integer(), coding_.vdcIntegerBytes);
        return;
      case Element::VdcRealPrecision:
        coding_.vdcRealForm = ReadRealForm(p, coding_.vdcRealForm);
        return;
      case Element::AuxiliaryColour:
        next.auxiliary = p.ReadColour();
        break;
      case Element::Transparency:
        next.transparent = p.Enumerated() == 1;
        break;
      case Element::ClipRectangle:
        next.clipBox.first = p.ReadPoint();
        next.clipBox.second = p.ReadPoint();
        break;
      case Element::ClipIndicator:
        next.clip = p.Enumerated() == 1;
        break;
      default:
        return;
    }
    if (p.Good()) Change(next);
  }

  // ---------------------------------------------------------------- primitives

  void Change(const Attributes& next) {
    if (next == state_) return;
    state_ = next;
    changed_ = true;
  }

  void Add(Object object) {
    if (changed_ || shared_ == nullptr) {
      shared_ = std::make_shared<const Attributes>(state_);
      changed_ = false;
    }
    object.attributes = shared_;
    drawing_.layers[0].objects.push_back(std::move(object));
  }

  void AddPoints(ObjectKind kind, std::vector<Point> points) {
    if (points.size() < (kind == ObjectKind::Polymarker ? 1u : 2u)) return;
    Object object;
    object.kind = kind;
    object.points = std::move(points);
    Add(std::move(object));
  }

  // An object of `count` points, then perhaps a radius, then perhaps a close type.
  void AddFixed(ObjectKind kind, Parameters& p, size_t count, bool radius, bool close) {
    Object object;
    object.kind = kind;
    object.points.resize(count);
    for (Point& point : object.points) point = p.ReadPoint();
    if (radius) object.radius = p.Vdc();
    if (close) object.close = p.Enumerated() == 1 ? CloseType::Chord : CloseType::Pie;
    if (p.Good()) Add(std::move(object));
  }

  void Primitive(Element element, Parameters& p) {
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
      case Element::Rectangle:
        return AddFixed(ObjectKind::Rectangle, p, 2, false, false);
      case Element::Circle:
        return AddFixed(ObjectKind::Circle, p, 1, true, false);
      case Element::ArcThreePoint:
        return AddFixed(ObjectKind::ArcThreePoint, p, 3, false, false);
      case Element::ArcThreePointClose:
        return AddFixed(ObjectKind::ArcThreePointClose, p, 3, false, true);
      case Element::ArcCentre:
        return AddFixed(ObjectKind::ArcCentre, p, 3, true, false);
      case Element::ArcCentreClose:
        return AddFixed(ObjectKind::ArcCentreClose, p, 3, true, true);
      case Element::Ellipse:
        return AddFixed(ObjectKind::Ellipse, p, 3, false, false);
      case Element::EllipticalArc:
        return AddFixed(ObjectKind::EllipticalArc, p, 5, false, false);
      case Element::EllipticalArcClose:
        return AddFixed(ObjectKind::EllipticalArcClose, p, 5, false, true);
      default:
        return;
    }
  }

  void AddPolygonSet(Parameters& p) {
    Object object;
    object.kind = ObjectKind::PolygonSet;
    while (p.Left() >= 2 * p.VdcBytes() + 2) {
      object.points.push_back(p.ReadPoint());
      object.edgeFlags.push_back(static_cast<uint8_t>(p.Enumerated() & 3));
    }
    if (!object.points.empty()) Add(std::move(object));
  }

  void AddText(Element element, Parameters& p) {
    Object object;
    object.kind = element == Element::Text ? ObjectKind::Text : ObjectKind::RestrictedText;
    if (element == Element::RestrictedText) object.box = p.ReadPoint();
    object.points = {p.ReadPoint()};
    const bool final = p.Enumerated() != 0;
    object.text = p.String();
    textOpen_ = p.Good() && !final;
    if (p.Good()) Add(std::move(object));
  }

  void AppendText(Parameters& p) {
    const bool final = p.Enumerated() != 0;
    const std::string text = p.String();
    std::vector<Object>& objects = drawing_.layers[0].objects;
    if (textOpen_ && p.Good()) objects.back().text += text;
    if (final) textOpen_ = false;
  }

  void AddCellArray(Parameters& p) {
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
  bool TakeCells(uint64_t cells) {
    const uint64_t warranted = 4 * uint64_t{bytes_.size()};
    if (cells > warranted || cellsTaken_ > warranted - cells) return false;
    cellsTaken_ += cells;
    return true;
  }

  bool ReadCell(BitReader& reader, int bits, Colour& colour) const {
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

  bool ReadPackedRow(BitReader& reader, int bits, Colour* out, int32_t columns) const {
    for (int32_t i = 0; i < columns; ++i) {
      if (!ReadCell(reader, bits, out[i])) return false;
    }
    return true;
  }

  bool ReadRuns(BitReader& reader, int bits, Colour* out, int32_t columns) const {
    for (int32_t i = 0; i < columns;) {
      uint32_t count = 0;
      Colour colour;
      if (!reader.Take(8 * coding_.integerBytes, count) || !ReadCell(reader, bits, colour) || count == 0)
        return false;
      const auto run =
          static_cast<int32_t>(std::min<uint32_t>(count, static_cast<uint32_t>(columns - i)));
      std::fill(out + i, out + i + run, colour);
      i += run;
    }
    return true;
  }

  // ---------------------------------------------------------------- attributes

  void Attribute(Element element, Parameters& p) {
    if (element == Element::ColourTable) return ReadColourTable(p);
    if (element == Element::PatternTable) return ReadPattern(p);
    Attributes next = state_;
    if (!(LineAttribute(element, p, next) || TextAttribute(element, p, next.text) ||
          FillAttribute(element, p, next))) {
      return;
    }
    if (p.Good()) Change(next);
  }

  double Width(Parameters& p, bool scaled) { return scaled ? p.Real() : p.Vdc(); }

  bool LineAttribute(Element element, Parameters& p, Attributes& next) {
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

  bool TextAttribute(Element element, Parameters& p, TextLook& text) {
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

  bool FillAttribute(Element element, Parameters& p, Attributes& next) {
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

  void ReadColourTable(Parameters& p) {
    const auto maxColours = static_cast<uint32_t>(std::min<size_t>(65536, 256 + 4 * bytes_.size()));
    uint32_t index = p.Unsigned(coding_.colourIndexBytes);
    const auto size = 3 * static_cast<size_t>(coding_.colourBytes);
    for (; p.Left() >= size && index < maxColours; ++index) {
      if (index >= table_.size()) table_.resize(index + 1);
      table_[index] = p.DirectColour();
    }
  }

  void ReadPattern(Parameters& p) {
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

  Bytes bytes_;
  Drawing& drawing_;
  Coding coding_;
  std::vector<Colour> table_;
  Attributes state_;
  std::shared_ptr<const Attributes> shared_;
  uint64_t cellsTaken_ = 0;
  bool changed_ = true;
  bool sawPicture_ = false, finished_ = false, textOpen_ = false;
  bool extentSet_ = false, heightSet_ = false, lineWidthSet_ = false, edgeWidthSet_ = false;
  bool markerSizeSet_ = false, colourSet_ = false;
};

}  // namespace

int32_t DecodeCgm(const uint8_t* bytes, size_t size, Drawing& drawing) {
  return CgmReader({bytes, size}, drawing).Run();
}

}  // namespace hostkit
