// The drawing behind a vector handle: layers of objects with their attributes, y upwards.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace media {

struct Point {
  double x = 0, y = 0;
  bool operator==(const Point&) const = default;
};
struct Box {
  Point first, second;  ///< lower-left and upper-right corner of what is shown, in any orientation
  bool operator==(const Box&) const = default;
};
struct Colour {
  uint8_t red = 0, green = 0, blue = 0;
  bool operator==(const Colour&) const = default;
};

enum class LineType : int32_t { Solid = 1, Dash, Dot, DashDot, DashDotDot };
enum class Interior : int32_t { Hollow, Solid, Pattern, Hatch, Empty };
enum class TextPath : int32_t { Right, Left, Up, Down };
enum class HorizontalAlign : int32_t { Normal, Left, Centre, Right, Continuous };
enum class VerticalAlign : int32_t { Normal, Top, Cap, Half, Base, Bottom, Continuous };

/// A line's or edge's look. A scaled width counts nominal line widths, an absolute one VDC units.
struct LineLook {
  int32_t type = 1;
  double width = 1;
  bool scaled = true;
  Colour colour;
  bool operator==(const LineLook&) const = default;
};
struct MarkerLook {
  int32_t type = 3;
  double size = 1;
  bool scaled = true;
  Colour colour;
  bool operator==(const MarkerLook&) const = default;
};
struct FillLook {
  Interior interior = Interior::Hollow;
  Colour colour;
  int32_t hatch = 1;
  int32_t pattern = 1;
  Point patternHeight, patternWidth;  ///< vectors of a pattern's sides, zero for the default
  bool operator==(const FillLook&) const = default;
};
struct TextLook {
  int32_t font = 1;  ///< number in Drawing::fonts, from 1
  int32_t precision = 0;
  double expansion = 1;
  double spacing = 0;
  double height = 0;
  Point up{0, 1}, base{1, 0};
  TextPath path = TextPath::Right;
  HorizontalAlign horizontal = HorizontalAlign::Normal;
  VerticalAlign vertical = VerticalAlign::Normal;
  double continuousHorizontal = 0, continuousVertical = 0;
  Colour colour;
  bool operator==(const TextLook&) const = default;
};

struct Attributes {
  LineLook line;
  LineLook edge;
  bool edgeVisible = false;
  MarkerLook marker;
  FillLook fill;
  TextLook text;
  Colour auxiliary{255, 255, 255};
  bool transparent = true;  ///< gaps of hatches and dashes show what lies beneath
  bool clip = true;
  bool clipGiven = false;  ///< a clip rectangle of its own, else the extent's
  Box clipBox;
  bool operator==(const Attributes&) const = default;
};

enum class ObjectKind {
  Polyline,
  DisjointPolyline,
  Polymarker,
  Text,
  RestrictedText,
  Polygon,
  PolygonSet,
  CellArray,
  Rectangle,
  Circle,
  ArcThreePoint,
  ArcThreePointClose,
  ArcCentre,
  ArcCentreClose,
  Ellipse,
  EllipticalArc,
  EllipticalArcClose,
};
enum class CloseType : int32_t { Pie, Chord };

/// One primitive. `points` holds its points in the order of the metafile element; arcs by centre have
/// centre, start vector and end vector, elliptical ones centre, two conjugate points and both vectors.
struct Object {
  ObjectKind kind = ObjectKind::Polyline;
  std::shared_ptr<const Attributes> attributes;
  std::vector<Point> points;
  std::vector<uint8_t>
      edgeFlags;              ///< of a polygon set: 0 invisible, 1 visible, 2 and 3 the same and closing
  std::vector<Colour> cells;  ///< of a cell array, row by row
  int32_t columns = 0, rows = 0;
  std::string text;  ///< single bytes, Latin-1
  double radius = 0;
  Point box;  ///< width and height of a restricted text
  CloseType close = CloseType::Pie;

  bool operator==(const Object& other) const;
};

struct Pattern {
  int32_t columns = 0, rows = 0;
  std::vector<Colour> cells;
  bool operator==(const Pattern&) const = default;
};

struct Layer {
  std::u16string name;
  std::vector<Object> objects;
  bool operator==(const Layer&) const = default;
};

struct Drawing {
  Box extent{{0, 0}, {32767, 32767}};  ///< the part of the plane that is shown
  bool wholeUnits = false;             ///< read with integer coordinates: one unit is one pixel
  Colour background{255, 255, 255};
  std::vector<std::string> fonts;
  std::map<int32_t, Pattern> patterns;
  std::vector<Layer> layers;
  uint64_t bytes = 0;  ///< of the metafile that it was read from

  /// Whether the extent frames nothing: it has no width or no height.
  bool IsFlat() const { return extent.first.x == extent.second.x || extent.first.y == extent.second.y; }
  /// Whether what an object draws ends at its clip box. An extent that frames nothing cuts nothing off.
  bool Clips(const Attributes& attributes) const {
    return attributes.clip && (attributes.clipGiven || !IsFlat());
  }

  bool operator==(const Drawing& other) const {
    return extent == other.extent && background == other.background && fonts == other.fonts &&
           patterns == other.patterns && layers == other.layers && wholeUnits == other.wholeUnits;
  }
};

}  // namespace media
