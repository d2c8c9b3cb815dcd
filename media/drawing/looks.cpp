// What objects are drawn with, and which are alike.
#include "media/drawing/looks.h"

namespace media {

UsedLooks LooksOf(const Object& object) {
  switch (object.kind) {
    case ObjectKind::Text:
    case ObjectKind::RestrictedText:
      return {.text = true};
    case ObjectKind::Polymarker:
      return {.marker = true};
    case ObjectKind::CellArray:
      return {};
    default:
      break;
  }
  if (!IsFilled(object.kind)) return {.line = true};
  return {.fill = true, .edge = object.attributes->edgeVisible};
}

// Attributes are alike when what the object is drawn with is.
bool Object::operator==(const Object& other) const {
  const UsedLooks used = LooksOf(*this);
  const Attributes &a = *attributes, &b = *other.attributes;
  const bool alike = (!used.line || a.line == b.line) && (!used.fill || a.fill == b.fill) &&
                     (!used.fill || a.edgeVisible == b.edgeVisible) && (!used.edge || a.edge == b.edge) &&
                     (!used.marker || a.marker == b.marker) && (!used.text || a.text == b.text) &&
                     a.auxiliary == b.auxiliary && a.transparent == b.transparent && a.clip == b.clip &&
                     a.clipBox == b.clipBox;
  return kind == other.kind && alike && points == other.points && edgeFlags == other.edgeFlags &&
         cells == other.cells && columns == other.columns && rows == other.rows && text == other.text &&
         radius == other.radius && box == other.box && close == other.close;
}

bool IsFilled(ObjectKind kind) {
  switch (kind) {
    case ObjectKind::Polygon:
    case ObjectKind::PolygonSet:
    case ObjectKind::Rectangle:
    case ObjectKind::Circle:
    case ObjectKind::ArcThreePointClose:
    case ObjectKind::ArcCentreClose:
    case ObjectKind::Ellipse:
    case ObjectKind::EllipticalArcClose:
      return true;
    default:
      return false;
  }
}

}  // namespace media
