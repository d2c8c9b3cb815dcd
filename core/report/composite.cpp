// The composite, with its segments as outlines, and the module's beside it where that is asked for.
#include <algorithm>
#include <array>

#include "core/pictures/box_scaler.h"
#include "core/report/html.h"
#include "core/report/labels.h"
#include "core/report/report.h"

namespace core {
namespace {

std::string Attribute(const char* name, double value) {
  return std::string(name) + "=\"" + Fixed(value, 1) + "\" ";
}

std::string Outlines(const Composite& composite) {
  const double size = std::max(composite.width, composite.height) / 32.0;
  std::string shapes;
  for (const Outline& outline : composite.outlines) {
    shapes += Tag("rect", Tag("title", Escaped(outline.label)),
                  Attribute("x", outline.left) + Attribute("y", outline.top) +
                      Attribute("width", std::max(0.0, outline.width)) +
                      Attribute("height", std::max(0.0, outline.height)));
    if (outline.parent) {
      const Outline& parent = composite.outlines[*outline.parent];
      shapes += Tag("line", "",
                    Attribute("x1", outline.left) + Attribute("y1", outline.top) +
                        Attribute("x2", parent.left) + Attribute("y2", parent.top));
    }
  }
  for (const PlacedLabel& label : PlaceLabels(composite, size))
    shapes += Tag("rect", "",
                  "class=\"ground\" " + Attribute("x", label.left) + Attribute("y", label.top) +
                      Attribute("width", label.width) + Attribute("height", label.height)) +
              Tag("text", Escaped(label.words),
                  Attribute("x", label.left + size * 0.3) + Attribute("y", label.top + size) +
                      Attribute("font-size", size));
  return Tag("svg", shapes,
             "class=\"outlines\" aria-hidden=\"true\" viewBox=\"0 0 " + std::to_string(composite.width) +
                 " " + std::to_string(composite.height) + "\"");
}

// Pictures that are smaller than their labels are shown larger than they are.
uint32_t ShownWidth(const Pixels& pixels) {
  constexpr uint32_t kLeastSide = 320;
  const uint32_t side = std::max({pixels.width, pixels.height, 1U});
  return side >= kLeastSide ? pixels.width : std::max(1U, pixels.width * kLeastSide / side);
}

constexpr size_t kMostPng = 160 << 10;

std::string View(const Composite& composite, const char* kind, const std::string& words) {
  const std::string uri = composite.problem.empty() ? DataUri(composite.pixels, kMostPng) : "";
  if (uri.empty())
    return Tag("div", Tag("p", "No picture: " + Escaped(composite.problem) + "."),
               std::string("class=\"") + kind + "\"");
  const std::string size = std::to_string(composite.width) + " x " + std::to_string(composite.height);
  const bool isLarger = ShownWidth(composite.pixels) > composite.pixels.width;
  const std::string image = std::string("<img ") + (isLarger ? "class=\"small\" " : "") + "alt=\"" +
                            Escaped(words) + ", " + size + " pixels\" width=\"" +
                            std::to_string(composite.pixels.width) + "\" height=\"" +
                            std::to_string(composite.pixels.height) + "\" src=\"" + uri + "\">";
  return Tag(
      "div",
      Tag("figure", image + Outlines(composite),
          "class=\"view\" style=\"width:" + std::to_string(ShownWidth(composite.pixels)) + "px\"") +
          Tag("p", Escaped(words) + ", " + size + " pixels.", "class=\"soft\""),
      std::string("class=\"") + kind + "\"");
}

std::string Choice(const std::string& type, const std::string& name, const char* classes, bool checked,
                   const std::string& words) {
  return Tag("label", "<input type=\"" + type + "\" name=\"" + name + "\" class=\"" + classes + "\"" +
                          (checked ? " checked" : "") + "> " + words);
}

// A picture of which squares of so many pixels are one.
Composite Shrunk(const Composite& composite, uint32_t factor) {
  if (factor == 1 || composite.pixels.rgb.empty()) return composite;
  Composite small = composite;
  const Pixels& from = composite.pixels;
  small.pixels = {(from.width + factor - 1) / factor, (from.height + factor - 1) / factor, {}};
  BoxScaler scaler(from.width, from.height, factor);
  for (uint32_t y = 0; y < from.height; ++y) {
    const uint8_t* row = scaler.Take(&from.rgb[size_t{y} * from.width * 3]);
    if (row != nullptr)
      small.pixels.rgb.insert(small.pixels.rgb.end(), row, row + size_t{small.pixels.width} * 3);
  }
  return small;
}

// What is nearly black with its dark levels spread over all of them; none for other pictures.
std::optional<Composite> Stretched(const Composite& composite) {
  constexpr size_t kDark = 48;
  const std::vector<uint8_t>& samples = composite.pixels.rgb;
  std::array<size_t, 256> levels{};
  for (const uint8_t sample : samples) ++levels[sample];
  size_t below = 0, top = 0;
  while (top < levels.size() - 1 && (below += levels[top]) < samples.size() - samples.size() / 50) ++top;
  if (samples.empty() || top > kDark || top == 0) return std::nullopt;
  Composite lighter = composite;
  for (uint8_t& sample : lighter.pixels.rgb)
    sample = static_cast<uint8_t>(std::min<size_t>(255, sample * size_t{255} / top));
  return lighter;
}

}  // namespace

std::string PictureSection(const ReportedFile& file, const PageDetail& detail) {
  if (detail.shrink == 0) return "";
  const std::string name = file.id + "-view";
  const Composite picture = Shrunk(file.picture, detail.shrink);
  std::string choices,
      views = View(picture, "standard", file.module ? "As the standard has it" : "The picture");
  if (const auto lighter = Stretched(picture))
    views += View(*lighter, "lighter", "It is dark; stretched to be seen");
  if (file.module) {
    choices = Choice("radio", name, "by-standard", true, "As the standard has it") +
              Choice("radio", name, "by-module", false, "As the module draws it");
    views += View(Shrunk(*file.module, detail.shrink), "module", "As the module draws it");
  }
  choices += Choice("checkbox", file.id + "-lines", "no-outlines", true, "Outlines");
  std::string missing;
  for (const std::string& words : file.picture.missing)
    missing += Tag("p", Escaped(words) + ".", "class=\"bad\"");
  const std::string legend = Tag("legend", "Show", "class=\"soft\"");
  return Section(
      file.id + "-picture", "Picture",
      Tag("div",
          Tag("fieldset", legend + choices, "class=\"choices\"") + Tag("div", views, "class=\"views\""),
          "class=\"switch\"") +
          missing);
}

}  // namespace core
