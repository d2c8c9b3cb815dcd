// Encodes drawings as version 1 binary metafiles with direct colours.
#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "media/drawing/cgm.h"
#include "media/drawing/cgm_numbers.h"
#include "media/drawing/looks.h"
#include "media/drawing/metafile.h"

namespace media {
namespace {

// What the NITF graphics profile has a metafile say of itself (MIL-STD-2301A): profile, source and date.
std::string Description() {
  using std::chrono::floor, std::chrono::days;
  std::chrono::sys_seconds now = floor<std::chrono::seconds>(std::chrono::system_clock::now());
  if (const char* epoch = std::getenv("SOURCE_DATE_EPOCH"))
    now = std::chrono::sys_seconds(std::chrono::seconds(std::strtoll(epoch, nullptr, 10)));
  const std::chrono::year_month_day date = floor<days>(now);
  char day[32];
  std::snprintf(day, sizeof day, "%04d%02u%02u", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  return std::string("ProfileId:SAMI;ProfileEd:1;Source:orbntf;Date:") + day;
}

// An attribute as it was last written, if ever.
template <class T>
class Written {
 public:
  bool Changes(const T& value) {
    const bool changes = !written_ || !(value == value_);
    value_ = value;
    written_ = true;
    return changes;
  }

 private:
  T value_{};
  bool written_ = false;
};

class CgmWriter {
 public:
  explicit CgmWriter(const Drawing& drawing) : drawing_(drawing), forms_(ChooseForms(drawing)) {}

  std::string Write() {
    WriteDescriptors();
    Begin(Element::BeginPicture).String("").End();
    WritePictureDescriptors();
    Begin(Element::BeginPictureBody).End();
    for (const auto& [index, pattern] : drawing_.patterns) WritePattern(index, pattern);
    for (const Layer& layer : drawing_.layers) {
      for (const Object& object : layer.objects) {
        WriteAttributes(object);
        WriteObject(object);
      }
    }
    Begin(Element::EndPicture).End();
    Begin(Element::EndMetafile).End();
    return std::move(out_);
  }

 private:
  // ---------------------------------------------------------------- one element

  CgmWriter& Begin(Element element) {
    element_ = element;
    parameters_.clear();
    return *this;
  }
  void End() {
    constexpr size_t kShortest = 31, kPartition = 0x7FFE;
    const auto head = static_cast<uint32_t>(element_) << 5;
    if (parameters_.size() < kShortest) {
      Put(out_, head | static_cast<uint32_t>(parameters_.size()), 2);
      out_ += parameters_;
      if (parameters_.size() % 2 != 0) out_ += '\0';
      return;
    }
    Put(out_, head | 31, 2);
    for (size_t at = 0; at < parameters_.size(); at += kPartition) {
      const size_t count = std::min(kPartition, parameters_.size() - at);
      const bool more = at + count < parameters_.size();
      Put(out_, (more ? 0x8000u : 0u) | static_cast<uint32_t>(count), 2);
      out_.append(parameters_, at, count);
      if (count % 2 != 0) out_ += '\0';
    }
  }

  static void Put(std::string& to, uint64_t value, int bytes) {
    for (int i = bytes - 1; i >= 0; --i) to += static_cast<char>(value >> (8 * i));
  }
  CgmWriter& Number(int64_t value, int bytes) {
    Put(parameters_, static_cast<uint64_t>(value), bytes);
    return *this;
  }
  CgmWriter& Enumerated(int32_t value) { return Number(value, 2); }
  CgmWriter& Integer(int32_t value) { return Number(value, integerBytes_); }
  CgmWriter& Index(int32_t value) { return Number(value, indexBytes_); }
  CgmWriter& Real(double value) {
    if (forms_.real.fixedPoint) return Number(static_cast<int64_t>(value * 65536), 4);
    return Number(std::bit_cast<int64_t>(value), 8);
  }
  CgmWriter& Vdc(double value) {
    if (forms_.vdcReal) return Number(std::bit_cast<int64_t>(value), 8);
    return Number(static_cast<int64_t>(value), forms_.vdcBytes);
  }
  CgmWriter& Put(Point p) { return Vdc(p.x).Vdc(p.y); }
  CgmWriter& Put(Colour c) { return Number(c.red, 1).Number(c.green, 1).Number(c.blue, 1); }
  CgmWriter& Put(const std::vector<Point>& points) {
    for (Point p : points) Put(p);
    return *this;
  }
  CgmWriter& String(const std::string& text) {
    if (text.size() < 255) {
      Number(static_cast<int64_t>(text.size()), 1);
      parameters_ += text;
      return *this;
    }
    Number(255, 1);
    for (size_t at = 0; at < text.size();) {
      const size_t count = std::min<size_t>(0x7FFF, text.size() - at);
      const bool more = at + count < text.size();
      Number((more ? 0x8000 : 0) | static_cast<int64_t>(count), 2);
      parameters_.append(text, at, count);
      at += count;
    }
    return *this;
  }

  // ---------------------------------------------------------------- descriptors

  void WriteDescriptors() {
    Begin(Element::BeginMetafile).String("drawing").End();
    Begin(Element::MetafileVersion).Integer(1).End();
    Begin(Element::MetafileElementList).Integer(1).Index(-1).Index(1).End();  // drawing plus control set
    Begin(Element::MetafileDescription).String(Description()).End();
    if (forms_.vdcReal) Begin(Element::VdcType).Enumerated(1).End();
    if (forms_.indexBytes != 2) {
      Begin(Element::IntegerPrecision).Integer(8 * forms_.indexBytes).End();
      integerBytes_ = forms_.indexBytes;
      Begin(Element::IndexPrecision).Integer(8 * forms_.indexBytes).End();
      indexBytes_ = forms_.indexBytes;
    }
    if (!forms_.real.fixedPoint)
      Begin(Element::RealPrecision).Enumerated(0).Integer(12).Integer(52).End();
    if (!drawing_.fonts.empty()) {
      Begin(Element::FontList);
      for (const std::string& font : drawing_.fonts) String(font);
      End();
    }
    if (!forms_.vdcReal && forms_.vdcBytes == 2) return;
    // Coordinates in front of the picture body are written in the picture's own precision.
    std::string nested;
    std::swap(nested, out_);
    WriteVdcPrecision();
    std::swap(nested, out_);
    Begin(Element::DefaultsReplacement);
    parameters_ = nested;
    End();
  }

  void WriteVdcPrecision() {
    if (forms_.vdcReal) {
      Begin(Element::VdcRealPrecision).Enumerated(0).Integer(12).Integer(52).End();
    } else {
      Begin(Element::VdcIntegerPrecision).Integer(8 * forms_.vdcBytes).End();
    }
  }

  void WritePictureDescriptors() {
    Begin(Element::ColourSelectionMode).Enumerated(1).End();
    const Attributes* first = FirstAttributes();
    if (first != nullptr) WriteWidthModes(*first);
    Begin(Element::VdcExtent).Put(drawing_.extent.first).Put(drawing_.extent.second).End();
    if (!(drawing_.background == Colour{255, 255, 255}))
      Begin(Element::BackgroundColour).Put(drawing_.background).End();
  }

  const Attributes* FirstAttributes() const {
    for (const Layer& layer : drawing_.layers) {
      if (!layer.objects.empty()) return layer.objects.front().attributes.get();
    }
    return nullptr;
  }

  void WriteWidthModes(const Attributes& a) {
    Begin(Element::LineWidthMode).Enumerated(a.line.scaled).End();
    Begin(Element::MarkerSizeMode).Enumerated(a.marker.scaled).End();
    Begin(Element::EdgeWidthMode).Enumerated(a.edge.scaled).End();
    modes_ = a;
  }

  void WritePattern(int32_t index, const Pattern& pattern) {
    Begin(Element::PatternTable).Index(index).Integer(pattern.columns).Integer(pattern.rows).Integer(0);
    PutCells(pattern.cells, pattern.columns);
    End();
  }

  void PutCells(const std::vector<Colour>& cells, int32_t columns) {
    for (size_t i = 0; i < cells.size(); ++i) {
      Put(cells[i]);
      const bool rowEnds = (i + 1) % static_cast<size_t>(columns) == 0;
      if (rowEnds && (3 * columns) % 2 != 0) Number(0, 1);
    }
  }

  // ---------------------------------------------------------------- attributes

  // Writes what an object uses and what differs from what was written of it before.
  void WriteAttributes(const Object& object) {
    const Attributes& a = *object.attributes;
    const UsedLooks used = LooksOf(object);
    if (a.line.scaled != modes_.line.scaled || a.edge.scaled != modes_.edge.scaled ||
        a.marker.scaled != modes_.marker.scaled) {
      WriteWidthModes(a);
    }
    if (used.line && line_.Changes(a.line)) {
      Begin(Element::LineType).Index(a.line.type).End();
      WriteWidth(Element::LineWidth, a.line.width, a.line.scaled);
      Begin(Element::LineColour).Put(a.line.colour).End();
    }
    if (used.fill && fill_.Changes(a.fill)) WriteFill(a.fill);
    if (used.fill && edgeVisible_.Changes(a.edgeVisible))
      Begin(Element::EdgeVisibility).Enumerated(a.edgeVisible).End();
    if (used.edge && edge_.Changes(a.edge)) {
      Begin(Element::EdgeType).Index(a.edge.type).End();
      WriteWidth(Element::EdgeWidth, a.edge.width, a.edge.scaled);
      Begin(Element::EdgeColour).Put(a.edge.colour).End();
    }
    if (used.marker && marker_.Changes(a.marker)) {
      Begin(Element::MarkerType).Index(a.marker.type).End();
      WriteWidth(Element::MarkerSize, a.marker.size, a.marker.scaled);
      Begin(Element::MarkerColour).Put(a.marker.colour).End();
    }
    if (used.text && text_.Changes(a.text)) WriteText(a.text);
    WriteControls(a);
  }

  // Controls start as a reader has them.
  void WriteControls(const Attributes& a) {
    if (!(a.auxiliary == controls_.auxiliary)) Begin(Element::AuxiliaryColour).Put(a.auxiliary).End();
    if (a.transparent != controls_.transparent)
      Begin(Element::Transparency).Enumerated(a.transparent).End();
    // A picture that left its extent's clip goes back to it by saying so.
    const bool clipDiffers = a.clipGiven != controls_.clipGiven || !(a.clipBox == controls_.clipBox);
    if (clipDiffers && (a.clipGiven || controls_.clipGiven)) {
      Begin(Element::ClipRectangle).Put(a.clipBox.first).Put(a.clipBox.second).End();
    }
    if (a.clip != controls_.clip) Begin(Element::ClipIndicator).Enumerated(a.clip).End();
    controls_ = a;
  }

  void WriteWidth(Element element, double width, bool scaled) {
    Begin(element);
    scaled ? Real(width) : Vdc(width);
    End();
  }

  void WriteFill(const FillLook& fill) {
    Begin(Element::InteriorStyle).Enumerated(static_cast<int32_t>(fill.interior)).End();
    Begin(Element::FillColour).Put(fill.colour).End();
    Begin(Element::HatchIndex).Index(fill.hatch).End();
    Begin(Element::PatternIndex).Index(fill.pattern).End();
    Begin(Element::PatternSize).Put(fill.patternHeight).Put(fill.patternWidth).End();
  }

  void WriteText(const TextLook& text) {
    Begin(Element::TextFont).Index(text.font).End();
    Begin(Element::TextPrecision).Enumerated(text.precision).End();
    Begin(Element::CharacterExpansion).Real(text.expansion).End();
    Begin(Element::CharacterSpacing).Real(text.spacing).End();
    Begin(Element::TextColour).Put(text.colour).End();
    Begin(Element::CharacterHeight).Vdc(text.height).End();
    Begin(Element::CharacterOrientation).Put(text.up).Put(text.base).End();
    Begin(Element::TextPath).Enumerated(static_cast<int32_t>(text.path)).End();
    Begin(Element::TextAlignment)
        .Enumerated(static_cast<int32_t>(text.horizontal))
        .Enumerated(static_cast<int32_t>(text.vertical))
        .Real(text.continuousHorizontal)
        .Real(text.continuousVertical)
        .End();
  }

  // ---------------------------------------------------------------- objects

  void WriteObject(const Object& object) {
    constexpr Element kElements[] = {
        Element::Polyline,      Element::DisjointPolyline,  Element::Polymarker,
        Element::Text,          Element::RestrictedText,    Element::Polygon,
        Element::PolygonSet,    Element::CellArray,         Element::Rectangle,
        Element::Circle,        Element::ArcThreePoint,     Element::ArcThreePointClose,
        Element::ArcCentre,     Element::ArcCentreClose,    Element::Ellipse,
        Element::EllipticalArc, Element::EllipticalArcClose};
    Begin(kElements[static_cast<size_t>(object.kind)]);
    switch (object.kind) {
      case ObjectKind::Text:
        Put(object.points).Enumerated(1).String(object.text);
        break;
      case ObjectKind::RestrictedText:
        Put(object.box).Put(object.points).Enumerated(1).String(object.text);
        break;
      case ObjectKind::PolygonSet:
        for (size_t i = 0; i < object.points.size(); ++i) {
          Put(object.points[i]).Enumerated(i < object.edgeFlags.size() ? object.edgeFlags[i] : 1);
        }
        break;
      case ObjectKind::CellArray:
        Put(object.points).Integer(object.columns).Integer(object.rows).Integer(0).Enumerated(1);
        if (parameters_.size() % 2 != 0) Number(0, 1);
        PutCells(object.cells, object.columns);
        break;
      default:
        Put(object.points);
        if (HasRadius(object.kind)) Vdc(object.radius);
        if (HasClose(object.kind)) Enumerated(static_cast<int32_t>(object.close));
    }
    End();
  }

  static bool HasRadius(ObjectKind kind) {
    return kind == ObjectKind::Circle || kind == ObjectKind::ArcCentre ||
           kind == ObjectKind::ArcCentreClose;
  }
  static bool HasClose(ObjectKind kind) {
    return kind == ObjectKind::ArcThreePointClose || kind == ObjectKind::ArcCentreClose ||
           kind == ObjectKind::EllipticalArcClose;
  }

  const Drawing& drawing_;
  NumberForms forms_;
  int integerBytes_ = 2, indexBytes_ = 2;
  std::string out_;
  Element element_ = Element::NoOp;
  std::string parameters_;
  Attributes modes_, controls_;  // as last written
  Written<LineLook> line_, edge_;
  Written<MarkerLook> marker_;
  Written<FillLook> fill_;
  Written<TextLook> text_;
  Written<bool> edgeVisible_;
};

}  // namespace

std::string EncodeCgm(const Drawing& drawing) { return CgmWriter(drawing).Write(); }

}  // namespace media
