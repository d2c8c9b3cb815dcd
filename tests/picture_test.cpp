// Drawings saved as pictures of their own.
#include <array>

#include "tests/support/metafile.h"
#include "tests/support/objects.h"

namespace {

using test::Element;
using test::I;
using test::Metafile;

using PictureTest = test::ModuleTest;

struct Picture {
  int width = 0, height = 0, rows = 0, painted = 0;
  std::vector<uint8_t> rgba;
};

// What is painted of a drawing; its border has to be empty.
Picture PaintedPicture(const test::Drawing& drawing, int32_t longerSide) {
  Picture picture;
  const auto take = [](const uint8_t* rgba, uint32_t width, uint32_t height, void* userData)
                        ORB_CALL -> int32_t {
    auto& taken = *static_cast<Picture*>(userData);
    taken.width = static_cast<int>(width);
    taken.height = static_cast<int>(height);
    for (int x = 0; x < taken.width; ++x) {
      const bool marked = rgba[4 * x + 3] != 0;
      taken.painted += marked;
      EXPECT_FALSE(marked &&
                   (x == 0 || x == taken.width - 1 || taken.rows == 0 || taken.rows == taken.height - 1))
          << "cut off";
    }
    taken.rgba.insert(taken.rgba.end(), rgba, rgba + 4 * width);
    ++taken.rows;
    return 1;
  };
  EXPECT_EQ(HostkitPaintDrawing(&drawing.handle, longerSide, take, &picture), 1);
  EXPECT_EQ(picture.rows, picture.height);
  return picture;
}

TEST_F(PictureTest, SavedPicturesShowWholeDrawings) {
  const auto sizeOf = [](const std::string& cgm, int32_t longerSide, int& painted) {
    const test::Drawing drawing(cgm);
    const Picture picture = PaintedPicture(drawing, longerSide);
    painted = picture.painted;
    return std::array{picture.width, picture.height};
  };
  int painted = 0;
  const std::string wide = Element(3, 6, I({0})) + Element(2, 3, I({0})) + Element(5, 3, I({10})) +
                           Element(5, 4, std::string(3, '\0'));
  EXPECT_EQ(sizeOf(Metafile(wide + Element(4, 1, I({0, 50, 100, 50}))), 0, painted),
            (std::array{102, 12}));
  EXPECT_EQ(painted, 1000);
  EXPECT_EQ(sizeOf(Metafile(wide + Element(4, 1, I({0, 50, 100, 50}))), 300, painted),
            (std::array{302, 32}));
  EXPECT_EQ(sizeOf(Metafile(Element(4, 1, I({3, 3, 8, 3}))), 0, painted)[0], 66) << "64 at the least";
  const auto longLine = Element(3, 6, I({0})) + Element(4, 1, I({-32000, 0, 32000, 0}));
  EXPECT_EQ(sizeOf(Metafile(longLine), 0, painted)[0], 4098) << "4096 at the most";
  const std::string real =
      Metafile(Element(3, 6, I({0})) +
                   Element(4, 1, test::Big(0, 8) + test::Big(1 << 15, 4) + test::Big(1 << 14, 4)),
               Element(1, 3, I({1})), test::Big(0, 8) + test::Big(1 << 16, 4) + test::Big(1 << 16, 4));
  const auto unit = sizeOf(real, 0, painted);
  EXPECT_NEAR(unit[0], 1026, 2);
  EXPECT_NEAR(unit[1], 514, 2);
}

}  // namespace
