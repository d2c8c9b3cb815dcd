#include "media/drawing/cgm_numbers.h"

#include <algorithm>
#include <cmath>

#include "media/drawing/looks.h"

namespace media {
namespace {

// Visits every coordinate and every real attribute that a drawing's objects use.
template <class Vdc, class Real, class Index>
class NumberVisitor {
 public:
  NumberVisitor(Vdc vdc, Real real, Index index) : vdc_(vdc), real_(real), index_(index) {}

  void Visit(const Drawing& drawing) {
    Visit(drawing.extent);
    for (const Layer& layer : drawing.layers) {
      for (const Object& object : layer.objects) Visit(object);
    }
  }

 private:
  void Visit(Point p) {
    vdc_(p.x);
    vdc_(p.y);
  }
  void Visit(const Box& box) {
    Visit(box.first);
    Visit(box.second);
  }
  void VisitSize(int32_t type, double size, bool scaled) {
    index_(type);
    scaled ? real_(size) : vdc_(size);
  }
  void Visit(const FillLook& fill) {
    index_(fill.hatch);
    index_(fill.pattern);
    Visit(fill.patternHeight);
    Visit(fill.patternWidth);
  }
  void Visit(const TextLook& text) {
    index_(text.font);
    vdc_(text.height);
    Visit(text.up);
    Visit(text.base);
    for (double value :
         {text.expansion, text.spacing, text.continuousHorizontal, text.continuousVertical}) {
      real_(value);
    }
  }
  void Visit(const Object& object) {
    const Attributes& a = *object.attributes;
    const UsedLooks used = LooksOf(object);
    for (Point p : object.points) Visit(p);
    vdc_(object.radius);
    Visit(object.box);
    index_(object.columns);
    index_(object.rows);
    if (a.clipGiven) Visit(a.clipBox);
    if (used.line) VisitSize(a.line.type, a.line.width, a.line.scaled);
    if (used.edge) VisitSize(a.edge.type, a.edge.width, a.edge.scaled);
    if (used.marker) VisitSize(a.marker.type, a.marker.size, a.marker.scaled);
    if (used.fill) Visit(a.fill);
    if (used.text) Visit(a.text);
  }

  Vdc vdc_;
  Real real_;
  Index index_;
};

}  // namespace

NumberForms ChooseForms(const Drawing& drawing) {
  NumberForms forms;
  forms.vdcReal = !drawing.wholeUnits;
  const auto whole = [](double v, double limit) { return v == std::trunc(v) && std::abs(v) <= limit; };
  NumberVisitor(
      [&](double v) {
        if (!whole(v, 32767)) forms.vdcBytes = std::max(forms.vdcBytes, 4);
        if (!whole(v, INT32_MAX)) forms.vdcReal = true;
      },
      [&](double v) {
        if (!(std::abs(v) < 32768 && v * 65536 == std::trunc(v * 65536))) forms.real = {false, 8};
      },
      [&](int32_t v) {
        if (v < INT16_MIN || v > INT16_MAX) forms.indexBytes = 4;
      })
      .Visit(drawing);
  if (forms.vdcReal) forms.vdcBytes = 8;
  return forms;
}

}  // namespace media
