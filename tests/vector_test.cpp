// Metafiles, drawings and their painting.
#include <random>

#include "Common/HandlGfx.h"
#include "hostkit/vector/drawing.h"
#include "tests/support/support.h"

namespace {

using hostkit::Drawing;
using hostkit::Object;
using hostkit::ObjectKind;
using hostkit::Point;
using test::Big;
using test::NitfBuilder;
using test::Rgb;

// ---------------------------------------------------------------- metafiles written by hand

std::string Element(int elementClass, int id, const std::string& parameters) {
  std::string bytes;
  const auto head = static_cast<uint64_t>(elementClass << 12 | id << 5);
  if (parameters.size() < 31) {
    bytes = Big(head | parameters.size(), 2) + parameters;
  } else {
    bytes = Big(head | 31, 2) + Big(parameters.size(), 2) + parameters;
  }
  return parameters.size() % 2 != 0 ? bytes + '\0' : bytes;
}
std::string I(std::initializer_list<int> numbers) {
  std::string bytes;
  for (int number : numbers) bytes += Big(static_cast<uint16_t>(number), 2);
  return bytes;
}
std::string S(const std::string& text) { return static_cast<char>(text.size()) + text; }

// A picture of direct colours whose extent is 100 x 100 units, y upwards.
std::string Metafile(const std::string& body, const std::string& descriptors = "",
                     const std::string& extent = I({0, 0, 100, 100})) {
  return Element(0, 1, S("test")) + Element(1, 1, I({1})) + descriptors + Element(0, 3, S("picture")) +
         Element(2, 2, I({1})) + Element(2, 6, extent) + Element(0, 4, "") + body + Element(0, 5, "") +
         Element(0, 2, "");
}

Drawing Decode(const std::string& bytes) {
  Drawing drawing;
  EXPECT_EQ(hostkit::DecodeCgm(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size(), drawing), 1);
  return drawing;
}
const std::vector<Object>& Objects(const Drawing& drawing) { return drawing.layers.at(0).objects; }

using VectorTest = test::ModuleTest;
/// Tests that have the host paint drawings.
class PaintTest : public test::ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    if (!test::HostPaintsDrawings()) GTEST_SKIP() << "the host toolkit of this build does not paint";
  }
};

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
  for (size_t i = 0; i < objects.size(); ++i)
    EXPECT_EQ(static_cast<size_t>(objects[i].kind), i < 7 ? i : i);
  EXPECT_EQ(objects[0].points, (std::vector<Point>{{1, 2}, {3, 4}}));
  EXPECT_EQ(objects[3].text, "part");
  EXPECT_EQ(objects[4].box, (Point{30, 10}));
  EXPECT_EQ(objects[6].edgeFlags, (std::vector<uint8_t>{1, 0, 3}));
  EXPECT_EQ(objects[7].cells, (std::vector<hostkit::Colour>{{1, 2, 3}, {4, 5, 6}}));
  EXPECT_EQ(objects[9].radius, 10);
  EXPECT_EQ(objects[11].close, hostkit::CloseType::Chord);
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
  const hostkit::Attributes& a = *Objects(drawing)[0].attributes;
  EXPECT_FALSE(a.line.scaled);
  EXPECT_EQ(a.line.width, 7);
  EXPECT_EQ(a.line.type, 3);
  EXPECT_EQ(a.line.colour, (hostkit::Colour{1, 2, 3}));
  EXPECT_EQ(a.fill.interior, hostkit::Interior::Hatch);
  EXPECT_EQ(a.fill.hatch, 6);
  EXPECT_TRUE(a.edgeVisible);
  EXPECT_EQ(a.edge.width, 2.5);
  EXPECT_EQ(a.text.height, 12);
  EXPECT_EQ(a.text.up, (Point{-1, 0}));
  EXPECT_EQ(a.text.horizontal, hostkit::HorizontalAlign::Centre);
  EXPECT_EQ(a.clipBox, (hostkit::Box{{10, 10}, {90, 90}}));
  EXPECT_FALSE(a.transparent);
  EXPECT_EQ(Objects(drawing)[1].attributes->line.colour, (hostkit::Colour{10, 11, 12}))
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
  EXPECT_NE(hostkit::DecodeCgm(nullptr, 0, none), 1);
  EXPECT_NE(hostkit::DecodeCgm(reinterpret_cast<const uint8_t*>("no metafile"), 11, none), 1);
}

// ---------------------------------------------------------------- round trip

Drawing EveryKind(double scale) {
  Drawing drawing;
  drawing.extent = {{0, 0}, {400 * scale, 300 * scale}};
  drawing.background = {9, 8, 7};
  drawing.fonts = {"HELVETICA", std::string(300, 'f')};
  drawing.patterns[2] = {3, 1, {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}};
  drawing.layers.resize(1);
  for (int kind = 0; kind <= static_cast<int>(ObjectKind::EllipticalArcClose); ++kind) {
    hostkit::Attributes attributes;
    attributes.clipBox = drawing.extent;
    attributes.line = {kind % 5 + 1, 2 * scale, false, {1, 2, static_cast<uint8_t>(kind)}};
    attributes.edgeVisible = kind % 2 == 0;
    attributes.fill.interior = static_cast<hostkit::Interior>(kind % 5);
    attributes.text.height = 10 * scale;
    attributes.text.expansion = 0.75;
    Object object;
    object.kind = static_cast<ObjectKind>(kind);
    object.attributes = std::make_shared<const hostkit::Attributes>(attributes);
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
    if (object.kind == ObjectKind::ArcCentreClose) object.close = hostkit::CloseType::Chord;
    drawing.layers[0].objects.push_back(object);
  }
  return drawing;
}

TEST_F(VectorTest, EncodingLosesNothing) {
  for (const double scale : {1.0, 1000.0, 0.3, 1e7}) {
    const Drawing drawing = EveryKind(scale);
    const Drawing decoded = Decode(hostkit::EncodeCgm(drawing));
    EXPECT_TRUE(decoded == drawing) << scale;
    EXPECT_EQ(decoded.patterns, drawing.patterns);
  }
}

// ---------------------------------------------------------------- painting

// A white 24-bit canvas of 100 x 100 pixels with a metafile painted over all of it.
class Canvas {
 public:
  explicit Canvas(const std::string& cgm, uint32_t side = 100) : side_(side) {
    KernelAllocateBitmap(&bitmap_, kBitmapRecordSize, 1, side, side, 24, kOrderBgr, nullptr,
                         kViewBottomLeft, nullptr, 0);
    KernelFillBitmap(&bitmap_, 0xFFFFFF);
    VectorHandle handle{};
    VectorInitialise(&handle);
    EXPECT_EQ(
        FileFormatLoadDrawingMemory(cgm.data(), &handle, static_cast<uint32_t>(cgm.size()), nullptr, 0),
        1);
    HDC dc = KernelCreateBitmapDc(&bitmap_);
    const RECT place = {0, 0, static_cast<LONG>(side), static_cast<LONG>(side)};
    EXPECT_EQ(VectorPaint(dc, &handle, static_cast<int32_t>(side), static_cast<int32_t>(side), 0, 0,
                          &place, nullptr, 0),
              1);
    KernelDeleteBitmapDc(dc);
    VectorFree(&handle);
  }
  ~Canvas() { KernelFreeBitmap(&bitmap_); }
  Rgb At(uint32_t x, uint32_t y) {
    std::vector<uint8_t> row(bitmap_.bytesPerLine);
    KernelGetRow(&bitmap_, row.data(), side_ - 1 - y, bitmap_.bytesPerLine);
    return {row[3 * x + 2], row[3 * x + 1], row[3 * x]};
  }
  int CountNot(Rgb colour) {
    int count = 0;
    for (uint32_t y = 0; y < side_; ++y) {
      for (uint32_t x = 0; x < side_; ++x) count += At(x, y) != colour;
    }
    return count;
  }

 private:
  uint32_t side_;
  KernelBitmap bitmap_;
};

const std::string kRedFill = Element(5, 22, I({1})) + Element(5, 23, "\xFF" + std::string(2, '\0'));
constexpr Rgb kRed{255, 0, 0};

TEST_F(PaintTest, FilledShapesCoverTheirPixels) {
  Canvas rectangle(Metafile(kRedFill + Element(4, 11, I({10, 20, 30, 40}))));
  EXPECT_EQ(rectangle.At(10, 60), kRed) << "y runs upwards";
  EXPECT_EQ(rectangle.At(29, 79), kRed);
  EXPECT_EQ(rectangle.At(30, 70), test::kWhite);
  EXPECT_EQ(rectangle.CountNot(test::kWhite), 400);
  Canvas ring(Metafile(kRedFill + Element(4, 8, I({10, 10, 1, 90, 10, 1, 90, 90, 1, 10, 90, 3,
                                                   40, 40, 1, 60, 40, 1, 60, 60, 1, 40, 60, 3}))));
  EXPECT_EQ(ring.At(20, 20), kRed);
  EXPECT_EQ(ring.At(50, 50), test::kWhite) << "even and odd";
  Canvas circle(Metafile(kRedFill + Element(4, 12, I({50, 50, 20}))));
  EXPECT_EQ(circle.At(50, 31), kRed);
  EXPECT_EQ(circle.At(50, 28), test::kWhite);
  EXPECT_NEAR(circle.CountNot(test::kWhite), 1257, 120);
}

TEST_F(PaintTest, EdgesClipsAndDashesShow) {
  const std::string edge = Element(2, 5, I({0})) + Element(5, 30, I({1})) + Element(5, 28, I({4})) +
                           Element(5, 29, std::string(1, '\0') + "\xFF" + std::string(1, '\0'));
  Canvas framed(Metafile(edge + kRedFill + Element(4, 11, I({20, 20, 80, 80}))));
  EXPECT_EQ(framed.At(19, 50), (Rgb{0, 255, 0}));
  EXPECT_EQ(framed.At(50, 50), kRed);
  Canvas clipped(
      Metafile(Element(3, 5, I({0, 0, 50, 100})) + kRedFill + Element(4, 11, I({20, 20, 80, 80}))));
  EXPECT_EQ(clipped.At(49, 50), kRed);
  EXPECT_EQ(clipped.At(51, 50), test::kWhite);
  const auto line = [](int type) {
    return Canvas(Metafile(Element(5, 2, I({type})) + Element(5, 4, std::string(3, '\0')) +
                           Element(4, 1, I({0, 50, 100, 50}))))
        .CountNot(test::kWhite);
  };
  EXPECT_LT(line(2), line(1));
  EXPECT_LT(line(3), line(2));
}

TEST_F(PaintTest, TextStandsWhereItsAlignmentSays) {
  const std::string look = Element(5, 15, I({20})) + Element(5, 14, std::string(3, '\0'));
  const auto marked = [&](const std::string& more, uint32_t left, uint32_t top, uint32_t right,
                          uint32_t bottom) {
    Canvas canvas(Metafile(look + more + Element(4, 4, I({50, 50, 1}) + S("HHH"))));
    int inside = 0;
    for (uint32_t y = top; y < bottom; ++y) {
      for (uint32_t x = left; x < right; ++x) inside += canvas.At(x, y) != test::kWhite;
    }
    const int all = canvas.CountNot(test::kWhite);
    EXPECT_GT(all, 50);
    return 100 * inside / all;
  };
  EXPECT_GE(marked("", 50, 29, 100, 51), 99) << "right of and above its point";
  EXPECT_GE(marked(Element(5, 18, I({3, 1}) + Big(0, 8)), 0, 50, 51, 80), 99) << "right and top aligned";
  EXPECT_GE(marked(Element(5, 16, I({-1, 0, 0, 1})), 29, 0, 51, 51), 99) << "turned to read upwards";
}

TEST_F(VectorTest, ExtentsFollowTheObjects) {
  Point least, greatest;
  const Drawing drawing =
      Decode(Metafile(Element(4, 12, I({50, 40, 10})) + Element(4, 1, I({-5, 7, 20, 90}))));
  ASSERT_TRUE(hostkit::FindExtent(drawing, hostkit::TextBox::Full, least, greatest));
  EXPECT_NEAR(least.x, -5, 1e-9);
  EXPECT_NEAR(least.y, 7, 1e-9);
  EXPECT_NEAR(greatest.x, 60, 1e-9);
  EXPECT_NEAR(greatest.y, 90, 1e-9);
}

TEST_F(PaintTest, DrawingsWithoutAFrameAreDrawnPixelByPixel) {
  Canvas canvas(Metafile(kRedFill + Element(4, 11, I({40, 60, 50, 70})), "", I({0, 32767, 32767, 0})));
  EXPECT_EQ(canvas.At(0, 0), kRed) << "the objects begin at the rectangle's corner";
  EXPECT_EQ(canvas.CountNot(test::kWhite), 100);
}

// ---------------------------------------------------------------- graphics in files

test::Record Symbol(int level, const char* location, const char* bound) {
  test::Record record = test::GraphicRecord();
  record.Set("SDLVL", level).Set("SLOC", location).Set("SBND1", "0000000000").Set("SBND2", bound);
  return record;
}

TEST_F(PaintTest, GraphicsAreDrawnOverAndUnderImages) {
  test::ImageForm form;
  form.width = form.height = 40;
  test::Record image = test::ImageRecord(form);
  image.Set("IDLVL", 2);
  NitfBuilder file;
  file.Image(image, std::string(1600, '\x40'));
  const std::string square = Metafile(kRedFill + Element(4, 11, I({0, 0, 100, 100})));
  file.Graphic(Symbol(1, "0000000000", "0005000050"), square)
      .Graphic(Symbol(3, "0001000020", "0000500005"), square);
  const auto picture = test::RenderBytes(file.Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.width, 50u);
  EXPECT_EQ(picture.At(10, 10), test::Grey(0x40)) << "the image covers the lower graphic";
  EXPECT_EQ(picture.At(45, 45), kRed);
  EXPECT_EQ(picture.At(22, 12), kRed) << "the upper graphic lies at row 10, column 20";
  EXPECT_EQ(picture.At(26, 12), test::Grey(0x40));
}

TEST_F(PaintTest, ObjectGraphicsGiveAnEmptyLayerAndBrokenOnesTheirStatus) {
  test::Record object = Symbol(1, "0000000000", "0001000010");
  object.Set("SFMT", "O");
  NitfBuilder file;
  file.Graphic(object, "anything");
  const test::TempFile onDisk(file.Bytes());
  EXPECT_EQ(test::Render(onDisk).status, 1);
  {
    NitfFile document;
    ASSERT_EQ(document.ReadDocument(onDisk.Wide()), Status::Success);
    ASSERT_EQ(LoadGraphicDrawing(document, 0), Status::Success);
    const Drawing* drawing = hostkit::DrawingOf(&document.graphics.At(0)->drawing.handle);
    ASSERT_NE(drawing, nullptr);
    EXPECT_EQ(drawing->layers.at(0).name, u"Object Layer");
  }
  EXPECT_EQ(test::RenderBytes(
                NitfBuilder().Graphic(Symbol(1, "0000000000", "0001000010"), "no metafile").Bytes())
                .status,
            -9);
}

TEST_F(PaintTest, DrawingSurvivesEveryFault) {
  const std::string cgm =
      Metafile(kRedFill + Element(4, 11, I({0, 0, 50, 50})) + Element(4, 4, I({7, 8, 1}) + S("text")));
  const test::TempFile file(NitfBuilder().Graphic(Symbol(1, "0000000000", "0002000020"), cgm).Bytes());
  const auto render = [&] { return test::Render(file).status; };
  EXPECT_GT(test::ForEachFault(kFaultAllocation, {-1}, render), 5);
  test::ForEachFault(kFaultRead, {-7}, render);
  test::ForEachFault(kFaultCodec, {-9, -1}, render);
}

TEST_F(VectorTest, DamagedMetafilesAreDrawnAsFarAsTheyGo) {
  const std::string whole = hostkit::EncodeCgm([] {
    Drawing drawing = EveryKind(1);
    drawing.layers[0].objects[3].text = "short";
    return drawing;
  }());
  std::mt19937 random(11);
  for (int round = 0; round < 400; ++round) {
    std::string cgm = whole;
    if (round % 4 == 0) cgm.resize(random() % cgm.size());
    for (int i = 0; i < 6 && !cgm.empty(); ++i) cgm[random() % cgm.size()] = static_cast<char>(random());
    (void)test::RenderBytes(NitfBuilder().Graphic(Symbol(1, "0000000000", "0002000020"), cgm).Bytes());
  }
}

}  // namespace
