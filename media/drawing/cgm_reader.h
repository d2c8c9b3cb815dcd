// Decodes binary metafiles. Elements are read within their own bytes: what is cut short or unknown is
// skipped, so a damaged element costs only itself.
#pragma once

#include "media/drawing/cgm_parameters.h"
#include "media/outcome.h"

namespace media {

/// One decoding of a metafile into a drawing.
class CgmReader {
 public:
  CgmReader(CgmBytes bytes, Drawing& drawing);
  /// Ok, or BadData for what is no metafile or has no picture.
  Outcome Run();

 private:
  // Structure, descriptors and controls: cgm_reader.cpp.
  void TurnUpright();
  void RunElements(CgmBytes bytes, int depth);
  static CgmBytes ShortForm(CgmBytes bytes, size_t& at, size_t length);
  static CgmBytes LongForm(CgmBytes bytes, size_t& at, std::vector<uint8_t>& joined);
  void RunElement(Element element, CgmBytes bytes, int depth);
  void Delimiter(Element element);
  void StartBody();
  RealForm ReadRealForm(Parameters& p, RealForm otherwise);
  void Descriptor(Element element, Parameters& p, CgmBytes bytes, int depth);
  void PictureDescriptor(Element element, Parameters& p);
  void Control(Element element, Parameters& p);

  // Primitives: cgm_primitives.cpp.
  void Change(const Attributes& next);
  void Add(Object object);
  void AddPoints(ObjectKind kind, std::vector<Point> points);
  void AddFixed(Element element, Parameters& p);
  void Primitive(Element element, Parameters& p);
  void AddPolygonSet(Parameters& p);
  void AddText(Element element, Parameters& p);
  void AppendText(Parameters& p);
  void AddCellArray(Parameters& p);
  bool TakeCells(uint64_t cells);
  bool ReadCell(BitReader& reader, int bits, Colour& colour) const;
  bool ReadPackedRow(BitReader& reader, int bits, Colour* out, int32_t columns) const;
  bool ReadRuns(BitReader& reader, int bits, Colour* out, int32_t columns) const;

  // Attributes: cgm_attributes.cpp.
  void Attribute(Element element, Parameters& p);
  double Width(Parameters& p, bool scaled);
  bool LineAttribute(Element element, Parameters& p, Attributes& next);
  bool TextAttribute(Element element, Parameters& p, TextLook& text);
  bool FillAttribute(Element element, Parameters& p, Attributes& next);
  void ReadColourTable(Parameters& p);
  void ReadPattern(Parameters& p);

  CgmBytes bytes_;
  Drawing& drawing_;
  Coding coding_;
  std::vector<Colour> table_;                 // colours by index
  Attributes state_;                          // of the next primitive
  std::shared_ptr<const Attributes> shared_;  // of the last one, while nothing changed
  uint64_t cellsTaken_ = 0;
  bool changed_ = true;
  bool sawPicture_ = false, startedBody_ = false, finished_ = false, textOpen_ = false;
  bool extentSet_ = false, heightSet_ = false, lineWidthSet_ = false, edgeWidthSet_ = false;
  bool markerSizeSet_ = false, colourSet_ = false;
};

}  // namespace media
