// Drawings painted on canvases, alone and as graphic segments.
#include <array>
#include <chrono>

#include "Common/HandlGfx.h"
#include "hostkit/vector/handle.h"
#include "tests/support/metafile.h"
#include "tests/support/objects.h"

namespace {

using media::Drawing;
using test::Big;
using test::Element;
using test::I;
using test::Metafile;
using test::NitfBuilder;
using test::Rgb;
using test::S;

/// Tests that have the host paint drawings.
class PaintTest : public test::ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    if (!test::HostPaintsDrawings()) GTEST_SKIP() << "the host toolkit of this build does not paint";
  }
};

// A white 24-bit canvas of 100 x 100 pixels with a metafile painted over all of it.
class Canvas {
 public:
  explicit Canvas(const std::string& cgm, uint32_t side = 100) : side_(side) {
    KernelAllocateBitmap(&bitmap_, kBitmapRecordSize, 1, side, side, 24, kOrderBgr, nullptr,
                         kViewBottomLeft, nullptr, 0);
    KernelFillBitmap(&bitmap_, 0xFFFFFF);
    const test::Drawing drawing(cgm);
    HDC dc = KernelCreateBitmapDc(&bitmap_);
    const RECT place = {0, 0, static_cast<LONG>(side), static_cast<LONG>(side)};
    EXPECT_EQ(VectorPaint(dc, &drawing.handle, static_cast<int32_t>(side), static_cast<int32_t>(side), 0,
                          0, &place, nullptr, 0),
              1);
    KernelDeleteBitmapDc(dc);
  }
  ~Canvas() { KernelFreeBitmap(&bitmap_); }
  Rgb At(uint32_t x, uint32_t y) {
    const std::vector<uint8_t> row = test::RowOf(bitmap_, side_ - 1 - y);
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

TEST_F(PaintTest, DrawingsWithoutAFrameAreDrawnPixelByPixel) {
  Canvas canvas(Metafile(kRedFill + Element(4, 11, I({40, 60, 50, 70})), "", I({0, 32767, 32767, 0})));
  EXPECT_EQ(canvas.At(0, 0), kRed) << "the objects begin at the rectangle's corner";
  EXPECT_EQ(canvas.CountNot(test::kWhite), 100);
}

TEST_F(PaintTest, DrawingsOfWholeUnitsAreDrawnPixelByPixel) {
  // The extent is half as wide as the rectangle: its corner stands at the rectangle's.
  Canvas whole(Metafile(kRedFill + Element(4, 11, I({10, 60, 50, 90})), "", I({0, 50, 50, 100})));
  EXPECT_EQ(whole.At(10, 10), kRed);
  EXPECT_EQ(whole.At(9, 10), test::kWhite);
  EXPECT_EQ(whole.CountNot(test::kWhite), 40 * 30);
  // The same in reals fills the rectangle.
  const auto R = [](std::initializer_list<int> numbers) {
    std::string bytes;
    for (int number : numbers) bytes += test::Big(static_cast<uint32_t>(number) << 16, 4);
    return bytes;
  };
  Canvas real(Metafile(kRedFill + Element(4, 11, R({10, 60, 50, 90})), Element(1, 3, I({1})),
                       R({0, 50, 50, 100})));
  EXPECT_EQ(real.CountNot(test::kWhite), 80 * 60);
}

// A red square whose corner is at (x, y), by integers or reals, within an extent.
std::string SquareIn(bool reals, const std::vector<double>& extent, const std::string& clipping, int x) {
  const auto numbers = [&](const std::vector<double>& values) {
    std::string bytes;
    for (const double value : values)
      bytes += reals ? Big(static_cast<uint64_t>(static_cast<int64_t>(value * 65536)) & 0xFFFFFFFF, 4)
                     : Big(static_cast<uint16_t>(value), 2);
    return bytes;
  };
  const double left = x;
  return Metafile(clipping + kRedFill + Element(4, 11, numbers({left, left, left + 20, left + 20})),
                  reals ? Element(1, 3, I({1})) : "", numbers(extent));
}

TEST_F(PaintTest, FlatExtentsFrameNothing) {
  const std::vector<double> extents[] = {{0, 0, 0, 0}, {0, 0, 0, 100}, {0, 0, 100, 0}, {70, 30, 70, 30}};
  for (const std::vector<double>& extent : extents) {
    for (const bool reals : {false, true}) {
      for (const int clip : {1, 0}) {
        for (const int x : {0, 40}) {
          const std::string cgm = SquareIn(reals, extent, Element(3, 6, I({clip})), x);
          Canvas canvas(cgm);
          const std::string what = std::to_string(extent[0]) + " " + std::to_string(extent[2]) + " " +
                                   std::to_string(reals) + std::to_string(clip);
          // The square is its own frame: of integers a unit a pixel, of reals all of the rectangle.
          EXPECT_EQ(canvas.CountNot(test::kWhite), reals ? 10000 : 400) << what;
          EXPECT_EQ(canvas.At(0, 0), kRed) << what;
          EXPECT_EQ(canvas.At(19, 19), kRed) << what;
        }
      }
    }
  }
  // A clip rectangle of its own stays one.
  const std::string clip = Element(3, 5, I({0, 0, 10, 10}));
  EXPECT_EQ(Canvas(SquareIn(false, {0, 0, 0, 0}, clip, 0)).CountNot(test::kWhite), 100);
}

TEST_F(PaintTest, OpaqueGapsHaveTheAuxiliaryColour) {
  const std::string opaque = Element(3, 4, I({0})) + Element(3, 3, std::string("\0\xFF\0", 3));
  const std::string dashed = Element(2, 3, I({0})) + Element(5, 3, I({4})) + Element(5, 2, I({2})) +
                             Element(5, 4, "\xFF" + std::string(2, '\0'));
  const std::string line = Element(4, 1, I({0, 50, 100, 50}));
  Canvas gaps(Metafile(opaque + dashed + line)), clear(Metafile(dashed + line));
  const Rgb green{0, 255, 0};
  EXPECT_EQ(gaps.CountNot(test::kWhite), 400);
  const int red = 10000 - gaps.CountNot(kRed), filled = 10000 - gaps.CountNot(green);
  EXPECT_EQ(red + filled, 400);
  EXPECT_EQ(red, 10000 - clear.CountNot(kRed));
  EXPECT_EQ(clear.CountNot(test::kWhite), red) << "nothing lies in clear gaps";
  // An edge's gaps and the box of a text.
  Canvas edge(Metafile(Element(2, 5, I({0})) + Element(5, 30, I({1})) + Element(5, 28, I({4})) +
                       Element(5, 27, I({2})) + opaque + Element(4, 11, I({20, 20, 80, 80}))));
  EXPECT_LT(edge.CountNot(green), 100 * 100);
  const std::string text = Element(5, 15, I({20})) + Element(5, 14, std::string(3, '\0')) +
                           Element(4, 4, I({10, 50, 1}) + S("HH"));
  Canvas box(Metafile(opaque + text)), bare(Metafile(text));
  EXPECT_LT(box.CountNot(green), 100 * 100 - 400);
  EXPECT_EQ(bare.CountNot(green), 100 * 100);
}

TEST_F(PaintTest, WhatSaysLittleIsDrawnAllTheSame) {
  const std::string wide =
      Element(2, 3, I({0})) + Element(5, 3, I({6})) + Element(5, 4, "\xFF" + std::string(2, '\0'));
  Canvas dot(Metafile(wide + Element(4, 1, I({50, 50, 50, 50}))));
  EXPECT_EQ(dot.CountNot(test::kWhite), 36) << "a line without length is as long as it is wide";
  EXPECT_EQ(dot.At(50, 50), kRed);
  // A picture whose body is not begun.
  const std::string bodiless =
      Element(0, 1, S("test")) + Element(1, 1, I({1})) + Element(0, 3, S("picture")) +
      Element(2, 2, I({1})) + Element(2, 6, I({0, 0, 100, 100})) + kRedFill +
      Element(4, 11, I({10, 20, 30, 40})) + Element(0, 5, "") + Element(0, 2, "");
  EXPECT_EQ(Canvas(bodiless).CountNot(test::kWhite), 400);
}

// ---------------------------------------------------------------- graphics in files

test::Record Symbol(int level, const char* location, const char* bound) {
  test::Record record = test::GraphicRecord();
  record.Set("SDLVL", level).Set("SLOC", location).Set("SBND1", "0000000000").Set("SBND2", bound);
  return record;
}

TEST_F(PaintTest, GraphicsAreDrawnOverAndUnderImages) {
  test::ImageForm form{.width = 40, .height = 40};
  test::Record image = test::ImageRecord(form);
  image.Set("IDLVL", 2);
  NitfBuilder file;
  file.Image(image, std::string(1600, '\x40'));
  const std::string square = Metafile(kRedFill + Element(4, 11, I({0, 0, 100, 100})));
  file.Graphic(Symbol(1, "0000000000", "0005000050"), square)
      .Graphic(Symbol(3, "0001000020", "0000500005"),
               Metafile(kRedFill + Element(4, 11, I({0, 95, 5, 100}))));
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

// ---------------------------------------------------------------- looks

const std::string kBlack(3, '\0');

TEST_F(PaintTest, HatchesAndPatternsLeaveGaps) {
  const std::string square = Element(4, 11, I({20, 20, 80, 80}));
  for (const int hatch : {1, 2, 3, 4, 5, 6}) {
    const std::string look = Element(5, 22, I({3})) + Element(5, 24, I({hatch})) + Element(5, 23, kBlack);
    const int inked = Canvas(Metafile(look + square)).CountNot(test::kWhite);
    EXPECT_GT(inked, 3600 / 20) << hatch;
    EXPECT_LT(inked, 3600 * 3 / 4) << hatch;
  }
  // A pattern of a red and a blue cell, repeated.
  const std::string table = Element(5, 32, I({7, 2, 1, 8}) + std::string("\xFF\0\0\0\0\xFF", 6));
  Canvas patterned(Metafile(table + Element(5, 22, I({2})) + Element(5, 25, I({7})) +
                            Element(5, 33, I({0, 20, 20, 0})) + square));
  int red = 0, blue = 0;
  for (uint32_t x = 20; x < 80; ++x) {
    red += patterned.At(x, 50) == kRed;
    blue += patterned.At(x, 50) == Rgb{0, 0, 255};
  }
  EXPECT_NEAR(red, 30, 4);
  EXPECT_NEAR(blue, 30, 4);
  EXPECT_EQ(patterned.At(10, 50), test::kWhite);
  EXPECT_EQ(Canvas(Metafile(Element(5, 22, I({4})) + square)).CountNot(test::kWhite), 0) << "empty";
}

TEST_F(PaintTest, CellArraysShowTheirCells) {
  const std::string corners = I({20, 20, 80, 80, 80, 20, 2, 2, 8, 1});
  const std::string cells = std::string("\xFF\0\0\0\xFF\0", 6) + std::string("\0\0\xFF\0\0\0", 6);
  Canvas packed(Metafile(Element(4, 9, corners + cells)));
  EXPECT_EQ(packed.At(35, 65), kRed) << "the first cell lies at the first corner";
  EXPECT_EQ(packed.At(65, 65), (Rgb{0, 255, 0})) << "the first row runs to the third corner";
  EXPECT_EQ(packed.At(35, 35), (Rgb{0, 0, 255}));
  EXPECT_EQ(packed.At(65, 35), Rgb{});
  EXPECT_EQ(packed.At(10, 10), test::kWhite);
  // Runs: two red cells, then one green and one blue.
  const std::string runs = I({2}) + std::string("\xFF\0\0", 3) + '\0' + I({1}) +
                           std::string("\0\xFF\0", 3) + I({1}) + std::string("\0\0\xFF", 3);
  Canvas run(Metafile(Element(4, 9, I({20, 20, 80, 80, 80, 20, 2, 2, 8, 0}) + runs)));
  EXPECT_EQ(run.At(35, 65), kRed);
  EXPECT_EQ(run.At(65, 65), kRed);
}

TEST_F(PaintTest, MarkersStandOnTheirPoints) {
  for (const int type : {1, 2, 3, 4, 5}) {
    const std::string look =
        Element(5, 6, I({type})) + Element(5, 7, std::string("\0\x02\0\0", 4)) + Element(5, 8, kBlack);
    Canvas canvas(Metafile(look + Element(4, 3, I({30, 50}))));
    int inside = 0;
    for (uint32_t y = 40; y < 61; ++y) {
      for (uint32_t x = 20; x < 41; ++x) inside += canvas.At(x, y) != test::kWhite;
    }
    EXPECT_GT(inside, 0) << type;
    EXPECT_EQ(inside, canvas.CountNot(test::kWhite)) << type;
  }
}

TEST_F(PaintTest, TextPathsAndBoxesAreKept) {
  const std::string look = Element(5, 15, I({10})) + Element(5, 14, kBlack);
  // The rectangle of what is painted: left, top, right, bottom.
  const auto reach = [&](const std::string& more, const std::string& text) {
    Canvas canvas(Metafile(look + more + text));
    std::array<int, 4> box = {100, 100, -1, -1};
    for (int y = 0; y < 100; ++y) {
      for (int x = 0; x < 100; ++x) {
        if (canvas.At(static_cast<uint32_t>(x), static_cast<uint32_t>(y)) == test::kWhite) continue;
        box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x), std::max(box[3], y)};
      }
    }
    return box;
  };
  const std::string text = Element(4, 4, I({50, 50, 1}) + S("HHH"));
  const auto right = reach("", text), left = reach(Element(5, 17, I({1})), text);
  const auto up = reach(Element(5, 17, I({2})), text), down = reach(Element(5, 17, I({3})), text);
  EXPECT_GE(right[0], 49);
  EXPECT_LE(left[2], 51);
  EXPECT_LE(up[3], 51);
  EXPECT_GE(down[1], 49);
  EXPECT_GT(up[3] - up[1], 2 * (up[2] - up[0])) << "one above the other";
  EXPECT_NEAR(right[2] - right[0], left[2] - left[0], 2);
  const auto spaced = reach(Element(5, 13, std::string("\0\x01\0\0", 4)), text);
  EXPECT_NEAR(spaced[2] - spaced[0], right[2] - right[0] + 20, 3)
      << "a height of space after each letter";
  const auto boxed = reach("", Element(4, 5, I({15, 12, 50, 50, 1}) + S("HHHHHH")));
  EXPECT_LE(boxed[2] - boxed[0], 16) << "squeezed into its width";
}

TEST_F(PaintTest, WorkIsBoundedByTheCanvas) {
  // A dotted line and a letter a thousand times the size of what is seen of them.
  const std::string wide = I({0, 0, 1, 1});
  const std::string dotted =
      Element(5, 2, I({3})) + Element(5, 4, kBlack) + Element(4, 1, I({-32000, 0, 32000, 1}));
  const std::string letter = Element(5, 15, I({32000})) + Element(4, 4, I({0, 0, 1}) + S("W"));
  Canvas line(Metafile(dotted, "", wide));
  EXPECT_GT(line.CountNot(test::kWhite), 0);
  Canvas glyph(Metafile(letter, "", wide));
  std::string many;
  for (int i = 0; i < 2000; ++i) many += dotted + letter;
  Canvas crowded(Metafile(many, "", wide));
  EXPECT_GT(crowded.CountNot(test::kWhite), 0) << "and it comes to an end";
}

}  // namespace
