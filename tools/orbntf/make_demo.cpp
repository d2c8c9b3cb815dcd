// Makes the parts of the demonstration file: a shaded terrain, a chart, a metafile of symbols and a text.
// Argument: the folder to write to.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>

#include "core/pictures/picture.h"
#include "media/drawing/metafile.h"

namespace {

using media::Attributes;
using media::Drawing;
using media::Object;
using media::ObjectKind;
using media::Point;

bool WritePicture(const std::string& path, uint32_t width, uint32_t height,
                  void (*colour)(uint32_t x, uint32_t y, uint8_t* rgb)) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const auto writer = core::StartPicture(core::PictureForm::Png, file, width, height);
  std::vector<uint8_t> row(3 * size_t{width});
  bool good = true;
  for (uint32_t y = 0; y < height && good; ++y) {
    for (uint32_t x = 0; x < width; ++x) colour(x, y, &row[3 * size_t{x}]);
    good = writer->PutRow(row.data());
  }
  good = good && writer->Finish();
  return std::fclose(file) == 0 && good;
}

double Height(double x, double y) {
  double height = 0;
  for (int octave = 1; octave < 7; ++octave) {
    const double f = 0.006 * std::exp2(octave), phase = octave * 1.7;
    height += std::sin(f * x + phase + 1.3 * std::sin(f * 0.7 * y + phase)) *
              std::cos(f * y - phase + 0.9 * std::sin(f * 0.9 * x)) / std::exp2(octave);
  }
  return height;
}

void Terrain(uint32_t x, uint32_t y, uint8_t* rgb) {
  const double here = Height(x, y);
  const double light = 0.75 + 9 * (Height(x + 1.0, y) - here) - 9 * (Height(x, y + 1.0) - here);
  const bool water = here < -0.12;
  const double base[3] = {water ? 40.0 : 120 + 150 * here, water ? 90.0 : 130 + 60 * here,
                          water ? 140.0 : 70 + 80 * here};
  for (int c = 0; c < 3; ++c) {
    const double value = base[c] * (water ? 1.0 : light);
    rgb[c] = static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
  }
}

void Chart(uint32_t x, uint32_t y, uint8_t* rgb) {
  const double wave = 60 + 35 * std::sin(x / 17.0) * std::exp(-static_cast<double>(x) / 160);
  const bool frame = x < 2 || y < 2 || x >= 178 || y >= 118;
  const bool curve = std::abs(y - wave) < 2.2, grid = x % 20 == 0 || y % 20 == 0;
  rgb[0] = frame ? 60 : curve ? 200 : grid ? 215 : 250;
  rgb[1] = frame ? 60 : curve ? 30 : grid ? 225 : 250;
  rgb[2] = frame ? 60 : curve ? 40 : grid ? 235 : 245;
}

Object Make(ObjectKind kind, const Attributes& attributes, std::vector<Point> points) {
  Object object;
  object.kind = kind;
  object.attributes = std::make_shared<const Attributes>(attributes);
  object.points = std::move(points);
  return object;
}

Drawing Symbols() {
  Drawing drawing;
  drawing.extent = {{0, 0}, {340, 200}};
  drawing.wholeUnits = true;
  drawing.fonts = {"HELVETICA_BOLD"};
  drawing.layers.resize(1);
  Attributes look;
  look.clipBox = drawing.extent;
  look.line = {1, 3, false, {255, 230, 80}};
  look.text.height = 18;
  look.text.colour = {255, 255, 255};
  std::vector<Object>& objects = drawing.layers[0].objects;
  Object ring = Make(ObjectKind::Circle, look, {{70, 80}});
  ring.radius = 46;
  Attributes area = look;
  area.fill.interior = media::Interior::Hatch;
  area.fill.hatch = 3;
  area.fill.colour = {255, 90, 60};
  area.edgeVisible = true;
  area.edge = {1, 3, false, {255, 90, 60}};
  ring.attributes = std::make_shared<const Attributes>(area);
  objects.push_back(ring);
  objects.push_back(Make(ObjectKind::Polyline, look, {{112, 96}, {170, 150}, {210, 140}, {236, 160}}));
  objects.push_back(Make(ObjectKind::Polygon,
                         [&] {
                           Attributes head = look;
                           head.fill.interior = media::Interior::Solid;
                           head.fill.colour = look.line.colour;
                           return head;
                         }(),
                         {{252, 173}, {230, 168}, {241, 154}}));
  Object text = Make(ObjectKind::Text, look, {{130, 60}});
  text.text = "orbntf: one canvas";
  objects.push_back(text);
  return drawing;
}

bool WriteText(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  return file.good();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string folder = argv[1];
  const bool good = WritePicture(folder + "/demo-terrain.png", 640, 400, &Terrain) &&
                    WritePicture(folder + "/demo-chart.png", 180, 120, &Chart) &&
                    WriteText(folder + "/demo-symbols.cgm", media::EncodeCgm(Symbols())) &&
                    WriteText(folder + "/demo-notes.txt", "Made by the demonstration.\r\n");
  return good ? 0 : 1;
}
