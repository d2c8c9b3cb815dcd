// Drawings saved as pictures of their own.
#include <array>

#include <cairo.h>

#include "tests/support/metafile.h"
#include "tests/support/objects.h"

namespace {

using test::Element;
using test::I;
using test::Metafile;

using PictureTest = test::ModuleTest;

TEST_F(PictureTest, SavedPicturesShowWholeDrawings) {
  const auto sizeOf = [](const std::string& cgm, int32_t longerSide, int& painted) {
    const test::Drawing drawing(cgm);
    const test::TempFile file("", ".png");
    EXPECT_EQ(HostkitSaveDrawing(&drawing.handle, file.Path().c_str(), kDrawingPng, longerSide), 1);
    cairo_surface_t* surface = cairo_image_surface_create_from_png(file.Path().c_str());
    const std::array size = {cairo_image_surface_get_width(surface),
                             cairo_image_surface_get_height(surface)};
    painted = 0;
    for (int y = 0; y < size[1]; ++y) {
      const uint8_t* row =
          cairo_image_surface_get_data(surface) + y * cairo_image_surface_get_stride(surface);
      for (int x = 0; x < size[0]; ++x) {
        const bool marked = row[4 * x + 3] != 0;
        painted += marked;
        EXPECT_FALSE(marked && (x == 0 || y == 0 || x == size[0] - 1 || y == size[1] - 1)) << "cut off";
      }
    }
    cairo_surface_destroy(surface);
    return size;
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
