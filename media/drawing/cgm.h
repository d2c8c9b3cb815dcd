// Elements of the binary metafile encoding (ISO/IEC 8632-1 and 8632-3), as far as version 1 and the NITF
// graphics profile (MIL-STD-2301A) go.
#pragma once

#include <cstdint>

namespace media {

/// An element: class * 128 + id.
enum class Element : uint16_t {
  NoOp = 0,
  BeginMetafile = 1,
  EndMetafile,
  BeginPicture,
  BeginPictureBody,
  EndPicture,

  MetafileVersion = 128 + 1,
  MetafileDescription,
  VdcType,
  IntegerPrecision,
  RealPrecision,
  IndexPrecision,
  ColourPrecision,
  ColourIndexPrecision,
  MaximumColourIndex,
  ColourValueExtent,
  MetafileElementList,
  DefaultsReplacement,
  FontList,
  CharacterSetList,
  CharacterCodingAnnouncer,

  ScalingMode = 256 + 1,
  ColourSelectionMode,
  LineWidthMode,
  MarkerSizeMode,
  EdgeWidthMode,
  VdcExtent,
  BackgroundColour,

  VdcIntegerPrecision = 384 + 1,
  VdcRealPrecision,
  AuxiliaryColour,
  Transparency,
  ClipRectangle,
  ClipIndicator,

  Polyline = 512 + 1,
  DisjointPolyline,
  Polymarker,
  Text,
  RestrictedText,
  AppendText,
  Polygon,
  PolygonSet,
  CellArray,
  GeneralisedPrimitive,
  Rectangle,
  Circle,
  ArcThreePoint,
  ArcThreePointClose,
  ArcCentre,
  ArcCentreClose,
  Ellipse,
  EllipticalArc,
  EllipticalArcClose,

  LineBundle = 640 + 1,
  LineType,
  LineWidth,
  LineColour,
  MarkerBundle,
  MarkerType,
  MarkerSize,
  MarkerColour,
  TextBundle,
  TextFont,
  TextPrecision,
  CharacterExpansion,
  CharacterSpacing,
  TextColour,
  CharacterHeight,
  CharacterOrientation,
  TextPath,
  TextAlignment,
  CharacterSet,
  AlternateCharacterSet,
  FillBundle,
  InteriorStyle,
  FillColour,
  HatchIndex,
  PatternIndex,
  EdgeBundle,
  EdgeType,
  EdgeWidth,
  EdgeColour,
  EdgeVisibility,
  FillReferencePoint,
  PatternTable,
  PatternSize,
  ColourTable,
  AspectSourceFlags,
};

/// How reals are written.
struct RealForm {
  bool fixedPoint = true;
  int bytes = 4;
  bool operator==(const RealForm&) const = default;
};

}  // namespace media
