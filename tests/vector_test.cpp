// Metafiles and drawings.
#include <random>

#include "media/drawing/metafile.h"
#include "media/drawing/outline.h"
#include "tests/support/metafile.h"
#include "tests/support/objects.h"

namespace {

using media::Drawing;
using media::Object;
using media::ObjectKind;
using media::Point;
using test::Big;
using test::Element;
using test::I;
using test::Metafile;
using test::S;

Drawing Decode(const std::string& bytes) {
  Drawing drawing;
  EXPECT_EQ(media::DecodeCgm(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), drawing),
            media::Outcome::Ok);
  return drawing;
}
const std::vector<Object>& Objects(const Drawing& drawing) { return drawing.layers.at(0).objects; }

using VectorTest = test::ModuleTest;

TEST_F(VectorTest, EveryPrimitiveIsDecoded) {
  const Drawing drawing = Decode(
      Metafile(Element(4, 1, I({1, 2, 3, 4})) + Element(4, 2, I({1, 2, 3, 4})) +
               Element(4, 3, I({5, 6})) + Element(4, 4, I({7, 8, 0}) + S("par")) +
               Element(4, 6, I({1}) + S("t")) + Element(4, 5, I({30, 10, 7, 8, 1}) + S("box")) +
               Element(4, 7, I({0, 0, 9, 0, 9, 9})) + Element(4, 8, I({0, 0, 1, 9, 0, 0, 9, 9, 3})) +
               Element(4, 9, I({0, 0, 10, 10, 10, 0, 2, 1, 8, 1}) + "\x01\x02\x03\x04\x05\x06") +
               Element(4, 11, I({1, 2, 3, 4})) + Element(4, 12, I({50, 50, 10})) +
               Element(4, 13, I({0, 0, 5, 5, 10, 0})) + Element(4, 14, I({0, 0, 5, 5, 10, 0, 1})) +
               Element(4, 15, I({0, 0, 1, 0, 0, 1, 5})) + Element(4, 16, I({0, 0, 1, 0, 0, 1, 5, 0})) +
               Element(4, 17, I({0, 0, 5, 0, 0, 3})) + Element(4, 18, I({0, 0, 5, 0, 0, 3, 1, 0, 0, 1})) +
               Element(4, 19, I({0, 0, 5, 0, 0, 3, 1, 0, 0, 1, 1}))));
  const std::vector<Object>& objects = Objects(drawing);
  ASSERT_EQ(objects.size(), 17u);
  for (size_t i = 0; i < objects.size(); ++i) EXPECT_EQ(static_cast<size_t>(objects[i].kind), i);
  EXPECT_EQ(objects[0].points, (std::vector<Point>{{1, 2}, {3, 4}}));
  EXPECT_EQ(objects[3].text, "part");
  EXPECT_EQ(objects[4].box, (Point{30, 10}));
  EXPECT_EQ(objects[6].edgeFlags, (std::vector<uint8_t>{1, 0, 3}));
  EXPECT_EQ(objects[7].cells, (std::vector<media::Colour>{{1, 2, 3}, {4, 5, 6}}));
  EXPECT_EQ(objects[9].radius, 10);
  EXPECT_EQ(objects[11].close, media::CloseType::Chord);
}

TEST_F(VectorTest, AttributesAndModesAreDecoded) {
  const Drawing drawing = Decode(Metafile(
      Element(5, 34, Big(5, 1) + "\x0A\x0B\x0C") + Element(2, 3, I({0})) + Element(5, 2, I({3})) +
          Element(5, 3, I({7})) + Element(5, 4, "\x01\x02\x03") + Element(5, 22, I({3})) +
          Element(5, 24, I({6})) + Element(5, 30, I({1})) + Element(5, 28, Big(2 << 16 | 0x8000, 4)) +
          Element(5, 15, I({12})) + Element(5, 16, I({-1, 0, 0, 1})) +
          Element(5, 18, I({2, 3}) + Big(0, 8)) + Element(3, 5, I({10, 10, 90, 90})) +
          Element(3, 6, I({1})) + Element(3, 4, I({0})) + Element(4, 1, I({1, 2, 3, 4})) +
          Element(2, 2, I({0})) + Element(5, 4, Big(5, 1)) + Element(4, 1, I({1, 2, 3, 4})),
      Element(1, 13, S("HELVETICA") + S("TIMES_BOLD"))));
  ASSERT_EQ(Objects(drawing).size(), 2u);
  const media::Attributes& a = *Objects(drawing)[0].attributes;
  EXPECT_FALSE(a.line.scaled);
  EXPECT_EQ(a.line.width, 7);
  EXPECT_EQ(a.line.type, 3);
  EXPECT_EQ(a.line.colour, (media::Colour{1, 2, 3}));
  EXPECT_EQ(a.fill.interior, media::Interior::Hatch);
  EXPECT_EQ(a.fill.hatch, 6);
  EXPECT_TRUE(a.edgeVisible);
  EXPECT_EQ(a.edge.width, 2.5);
  EXPECT_EQ(a.text.height, 12);
  EXPECT_EQ(a.text.up, (Point{-1, 0}));
  EXPECT_EQ(a.text.horizontal, media::HorizontalAlign::Centre);
  EXPECT_EQ(a.clipBox, (media::Box{{10, 10}, {90, 90}}));
  EXPECT_FALSE(a.transparent);
  EXPECT_EQ(Objects(drawing)[1].attributes->line.colour, (media::Colour{10, 11, 12}))
      << "from the colour table";
  EXPECT_EQ(drawing.fonts, (std::vector<std::string>{"HELVETICA", "TIMES_BOLD"}));
}

TEST_F(VectorTest, PrecisionsOrientationAndPartitionsAreFollowed) {
  const Drawing real =
      Decode(Metafile(Element(4, 3, Big(1 << 16 | 0x8000, 4) + Big(0, 4)), Element(1, 3, I({1})),
                      Big(0, 8) + Big(4 << 16, 4) + Big(4 << 16, 4)));
  EXPECT_EQ(Objects(real)[0].points[0], (Point{1.5, 0}));
  const Drawing wide =
      Decode(Metafile(Element(3, 1, I({32})) + Element(4, 3, Big(70000, 4) + Big(0xFFFFFFFF, 4))));
  EXPECT_EQ(Objects(wide)[0].points[0], (Point{70000, -1}));
  const Drawing down =
      Decode(Metafile(Element(4, 15, I({10, 20, 1, 0, 0, 1, 5})), "", I({0, 100, 100, 0})));
  EXPECT_EQ(down.extent.second.y, 0) << "y runs upwards in a drawing";
  EXPECT_EQ(Objects(down)[0].points[0], (Point{10, -20}));
  EXPECT_EQ(Objects(down)[0].points[1], (Point{0, -1})) << "and arcs keep their turning sense";
  // One polyline in two partitions.
  const std::string parts =
      Big(4 << 12 | 1 << 5 | 31, 2) + Big(0x8004, 2) + I({1, 2}) + Big(4, 2) + I({3, 4});
  EXPECT_EQ(Objects(Decode(Metafile(parts)))[0].points, (std::vector<Point>{{1, 2}, {3, 4}}));
}

TEST_F(VectorTest, UnknownAndCutElementsCostOnlyThemselves) {
  const Drawing drawing =
      Decode(Metafile(Element(4, 77, I({1, 2})) + Element(6, 1, "escape!") + Element(0, 0, "") +
                      Element(4, 12, I({50})) + Element(5, 4, "\x01") + Element(4, 1, I({1, 2, 3, 4}))));
  ASSERT_EQ(Objects(drawing).size(), 1u);
  EXPECT_EQ(Objects(drawing)[0].kind, ObjectKind::Polyline);
  Drawing none;
  EXPECT_NE(media::DecodeCgm(nullptr, 0, none), media::Outcome::Ok);
  EXPECT_NE(media::DecodeCgm(reinterpret_cast<const uint8_t*>("no metafile"), 11, none),
            media::Outcome::Ok);
}

// ---------------------------------------------------------------- round trip

Object ObjectOf(int kind, double scale, const media::Box& clipBox) {
  media::Attributes attributes;
  attributes.clipBox = clipBox;
  attributes.line = {kind % 5 + 1, 2 * scale, false, {1, 2, static_cast<uint8_t>(kind)}};
  attributes.edgeVisible = kind % 2 == 0;
  attributes.fill.interior = static_cast<media::Interior>(kind % 5);
  attributes.text.height = 10 * scale;
  attributes.text.expansion = 0.75;
  Object object;
  object.kind = static_cast<ObjectKind>(kind);
  object.attributes = std::make_shared<const media::Attributes>(attributes);
  const size_t counts[] = {7, 4, 3, 1, 1, 5, 6, 3, 2, 1, 3, 3, 3, 3, 3, 5, 5};
  for (size_t i = 0; i < counts[kind]; ++i) {
    object.points.push_back({scale * static_cast<double>(10 * i + static_cast<size_t>(kind)),
                             scale * static_cast<double>(i * i)});
  }
  if (object.kind == ObjectKind::PolygonSet) object.edgeFlags = {1, 1, 3, 1, 0, 2};
  if (object.kind == ObjectKind::Text) object.text = std::string(70000, 'x');
  if (object.kind == ObjectKind::RestrictedText) {
    object.text = "restricted \xE9";
    object.box = {30 * scale, 10 * scale};
  }
  if (object.kind == ObjectKind::CellArray) {
    object.columns = 3;
    object.rows = 2;
    object.cells.assign(6, {1, 2, 3});
  }
  const bool radius = object.kind == ObjectKind::Circle || object.kind == ObjectKind::ArcCentre ||
                      object.kind == ObjectKind::ArcCentreClose;
  if (radius) object.radius = 12 * scale;
  if (object.kind == ObjectKind::ArcCentreClose) object.close = media::CloseType::Chord;
  return object;
}

Drawing EveryKind(double scale) {
  Drawing drawing;
  drawing.extent = {{0, 0}, {400 * scale, 300 * scale}};
  drawing.background = {9, 8, 7};
  drawing.fonts = {"HELVETICA", std::string(300, 'f')};
  drawing.patterns[2] = {3, 1, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}};
  drawing.layers.resize(1);
  for (int kind = 0; kind <= static_cast<int>(ObjectKind::EllipticalArcClose); ++kind) {
    drawing.layers[0].objects.push_back(ObjectOf(kind, scale, drawing.extent));
  }
  return drawing;
}

TEST_F(VectorTest, EncodingLosesNothing) {
  for (const double scale : {1.0, 1000.0, 0.3, 1e7}) {
    Drawing drawing = EveryKind(scale);
    drawing.wholeUnits = scale == 1 || scale == 1000;
    const Drawing decoded = Decode(media::EncodeCgm(drawing));
    EXPECT_TRUE(decoded == drawing) << scale;
    EXPECT_EQ(decoded.patterns, drawing.patterns);
  }
}

// The elements of a metafile's descriptors, by class and number.
std::vector<std::pair<int, int>> ElementsOf(const std::string& cgm) {
  std::vector<std::pair<int, int>> elements;
  for (size_t at = 0; at + 2 <= cgm.size();) {
    const auto word = [&](size_t i) {
      return static_cast<unsigned>(static_cast<uint8_t>(cgm[i]) << 8 | static_cast<uint8_t>(cgm[i + 1]));
    };
    const unsigned head = word(at);
    size_t length = head & 31;
    at += 2;
    if (length == 31) length = word(at) & 0x7FFF, at += 2;
    elements.emplace_back(head >> 12, head >> 5 & 127);
    at += length + length % 2;
  }
  return elements;
}

TEST_F(VectorTest, WholeUnitsAreWrittenAsShortIntegersWhateverDefaultsAre) {
  // Heights and widths that the file does not give come from its extent: fractions of 123 units.
  const std::string cgm =
      Metafile(Element(4, 1, I({1, 2, 3, 4})) + Element(4, 4, I({5, 5, 1}) + S("text")) +
                   Element(4, 11, I({1, 1, 9, 9})),
               "", I({0, 0, 123, 77}));
  Drawing drawing = Decode(cgm);
  EXPECT_TRUE(drawing.wholeUnits);
  EXPECT_EQ(Objects(drawing)[1].attributes->text.height, 1);
  const std::string written = media::EncodeCgm(drawing);
  using Elements = std::vector<std::pair<int, int>>;
  const Elements elements = ElementsOf(written);
  EXPECT_EQ(Elements(elements.begin(), elements.begin() + 4), (Elements{{0, 1}, {1, 1}, {1, 11}, {1, 2}}))
      << "version, element list, description";
  const size_t date = written.find("ProfileId:SAMI;ProfileEd:1;Source:orbntf;Date:20");
  ASSERT_NE(date, std::string::npos);
  EXPECT_EQ(written.find_first_not_of("0123456789", date + 46), date + 54) << "a date of eight digits";
  for (const auto& element : {std::pair{1, 3}, {3, 1}, {3, 2}, {1, 12}, {3, 5}}) {
    EXPECT_EQ(std::count(elements.begin(), elements.end(), element), 0)
        << element.first << ' ' << element.second << " is not needed";
  }
  EXPECT_NE(written.find(I({1, 2, 3, 4})), std::string::npos) << "16-bit points";
  EXPECT_TRUE(Decode(written) == drawing);
  drawing.wholeUnits = false;
  EXPECT_NE(media::EncodeCgm(drawing).find(Element(1, 3, I({1}))), std::string::npos)
      << "a drawing in reals stays one";
}

TEST_F(VectorTest, ExtentsOfWholeUnitsAreWhole) {
  const test::Drawing drawing(Metafile(Element(5, 15, I({17})) + Element(4, 4, I({5, 5, 1}) + S("Wig"))));
  VectorPoint least, greatest;
  ASSERT_EQ(VectorGetExtent(&drawing.handle, &least, &greatest), 1);
  EXPECT_GT(greatest.y, 5 + 17);
  for (double value : {least.x, least.y, greatest.x, greatest.y}) EXPECT_EQ(value, std::trunc(value));
}

TEST_F(VectorTest, AClipRectangleSurvivesAnAppend) {
  test::Drawing drawing(Metafile(Element(4, 1, I({1, 1, 9, 9})) + Element(3, 5, I({2, 3, 40, 50})) +
                                 Element(4, 1, I({0, 0, 60, 60}))));
  const test::Handle handle;
  const RECT rectangle = {0, 0, 70, 80};
  ASSERT_EQ(Orb_NITFAppendGraphicSegment(handle, &drawing.handle, &rectangle), 1);
  const auto bytes = handle->graphics.At(0)->appended.bytes.Span();
  const Drawing appended = Decode(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  const double down = 61;  // the drawing was moved below the zero line
  EXPECT_EQ(Objects(appended)[0].attributes->clipBox, (media::Box{{0, -80}, {70, 0}}))
      << "the new extent";
  EXPECT_EQ(Objects(appended)[1].attributes->clipBox, (media::Box{{2, 3 - down}, {40, 50 - down}}));
  EXPECT_EQ(Objects(appended)[1].points[1], (Point{60, 60 - down}));
}

TEST_F(VectorTest, ExtentsFollowTheObjects) {
  Point least, greatest;
  const Drawing drawing =
      Decode(Metafile(Element(4, 12, I({50, 40, 10})) + Element(4, 1, I({-5, 7, 20, 90}))));
  ASSERT_TRUE(media::FindExtent(drawing, media::TextBox::Full, least, greatest));
  EXPECT_NEAR(least.x, -5, 1e-9);
  EXPECT_NEAR(least.y, 7, 1e-9);
  EXPECT_NEAR(greatest.x, 60, 1e-9);
  EXPECT_NEAR(greatest.y, 90, 1e-9);
}

TEST_F(VectorTest, DamagedMetafilesAreDrawnAsFarAsTheyGo) {
  const std::string whole = media::EncodeCgm([] {
    Drawing drawing = EveryKind(1);
    drawing.layers[0].objects[3].text = "short";
    return drawing;
  }());
  test::Record record = test::GraphicRecord();
  record.Set("SLOC", "0000000000").Set("SBND1", "0000000000").Set("SBND2", "0002000020");
  std::mt19937 random(11);
  for (int round = 0; round < 400; ++round) {
    std::string cgm = whole;
    if (round % 4 == 0) cgm.resize(random() % cgm.size());
    for (int i = 0; i < 6 && !cgm.empty(); ++i) cgm[random() % cgm.size()] = static_cast<char>(random());
    (void)test::RenderBytes(test::NitfBuilder().Graphic(record, cgm).Bytes());
  }
}

}  // namespace
