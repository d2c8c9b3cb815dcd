// The structure of a metafile: elements, delimiters, descriptors and controls.
#include "media/drawing/cgm_reader.h"
#include "media/drawing/metafile.h"

namespace media {

constexpr size_t kMaxFonts = 256;

CgmReader::CgmReader(CgmBytes bytes, Drawing& drawing) : bytes_(bytes), drawing_(drawing) {
  drawing_.layers.resize(1);
  table_ = {{255, 255, 255}, {0, 0, 0}};
}

Outcome CgmReader::Run() {
  if (bytes_.size() < 2 ||
      (bytes_[0] << 8 | bytes_[1]) >> 5 != static_cast<int>(Element::BeginMetafile)) {
    return Outcome::BadData;
  }
  RunElements(bytes_, 0);
  drawing_.wholeUnits = !coding_.vdcReal;
  if (drawing_.extent.second.y < drawing_.extent.first.y) TurnUpright();
  return sawPicture_ ? Outcome::Ok : Outcome::BadData;
}

// A metafile whose y runs downwards becomes a drawing whose y runs upwards.
void CgmReader::TurnUpright() {
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

void CgmReader::RunElements(CgmBytes bytes, int depth) {
  size_t at = 0;
  std::vector<uint8_t> joined;
  while (at + 2 <= bytes.size() && !finished_) {
    const uint32_t word = static_cast<uint32_t>(bytes[at] << 8 | bytes[at + 1]);
    const auto element = static_cast<Element>(word >> 5);
    at += 2;
    const CgmBytes parameters =
        (word & 31) == 31 ? LongForm(bytes, at, joined) : ShortForm(bytes, at, word & 31);
    RunElement(element, parameters, depth);
  }
}

CgmBytes CgmReader::ShortForm(CgmBytes bytes, size_t& at, size_t length) {
  const size_t taken = std::min(length, bytes.size() - at);
  const CgmBytes parameters = bytes.subspan(at, taken);
  at = std::min(bytes.size(), at + length + length % 2);
  return parameters;
}

// Partitions follow one another, each with its own length word; all but the last have its top bit set.
CgmBytes CgmReader::LongForm(CgmBytes bytes, size_t& at, std::vector<uint8_t>& joined) {
  joined.clear();
  bool more = true;
  while (more && at + 2 <= bytes.size()) {
    const uint32_t word = static_cast<uint32_t>(bytes[at] << 8 | bytes[at + 1]);
    more = (word & 0x8000) != 0;
    at += 2;
    const CgmBytes part = ShortForm(bytes, at, word & 0x7FFF);
    if (!more && joined.empty()) return part;
    joined.insert(joined.end(), part.begin(), part.end());
  }
  return joined;
}

void CgmReader::RunElement(Element element, CgmBytes bytes, int depth) {
  Parameters p(bytes, coding_, table_);
  const auto number = static_cast<uint32_t>(element);
  // What is drawn begins the body where its delimiter is missing.
  if (sawPicture_ && !startedBody_ && (number / 128 == 4 || number / 128 == 5)) StartBody();
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

void CgmReader::Delimiter(Element element) {
  if (element == Element::BeginPicture) sawPicture_ = true;
  if (element == Element::BeginPictureBody) StartBody();
  if (element == Element::EndPicture || element == Element::EndMetafile) finished_ = sawPicture_;
}

void CgmReader::StartBody() {
  startedBody_ = true;
  Attributes& now = state_;
  const double side = std::max(std::abs(drawing_.extent.second.x - drawing_.extent.first.x),
                               std::abs(drawing_.extent.second.y - drawing_.extent.first.y));
  // Integer coordinates take whole sizes.
  const auto share = [&](double parts) {
    return coding_.vdcReal ? side / parts : std::max(1.0, std::round(side / parts));
  };
  if (!now.clipGiven) now.clipBox = drawing_.extent;
  if (!heightSet_) now.text.height = share(100);
  if (!lineWidthSet_) now.line.width = now.line.scaled ? 1 : share(1000);
  if (!edgeWidthSet_) now.edge.width = now.edge.scaled ? 1 : share(1000);
  if (!markerSizeSet_) now.marker.size = now.marker.scaled ? 1 : share(100);
  if (!colourSet_) {
    for (Colour* colour :
         {&now.line.colour, &now.edge.colour, &now.marker.colour, &now.fill.colour, &now.text.colour}) {
      *colour = table_.size() > 1 ? table_[1] : Colour{};
    }
  }
  changed_ = true;
}

RealForm CgmReader::ReadRealForm(Parameters& p, RealForm otherwise) {
  const int32_t fixed = p.Enumerated(), first = p.Integer(), second = p.Integer();
  if (!p.Good()) return otherwise;
  if (fixed == 1 && first == 16 && second == 16) return {true, 4};
  if (fixed == 1 && first == 32 && second == 32) return {true, 8};
  if (fixed == 0 && first == 9 && second == 23) return {false, 4};
  if (fixed == 0 && first == 12 && second == 52) return {false, 8};
  return otherwise;
}

void CgmReader::Descriptor(Element element, Parameters& p, CgmBytes bytes, int depth) {
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

void CgmReader::PictureDescriptor(Element element, Parameters& p) {
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

void CgmReader::Control(Element element, Parameters& p) {
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
      next.clipGiven = true;
      break;
    case Element::ClipIndicator:
      next.clip = p.Enumerated() == 1;
      break;
    default:
      return;
  }
  if (p.Good()) Change(next);
}

Outcome DecodeCgm(const uint8_t* bytes, size_t size, Drawing& drawing) {
  return CgmReader({bytes, size}, drawing).Run();
}

}  // namespace media
