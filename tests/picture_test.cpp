// Drawings saved as pictures of their own, and how pictures are written.
#include <algorithm>
#include <array>
#include <cerrno>
#include <random>
#include <stdexcept>

#include "core/pictures/behind.h"
#include "core/pictures/load.h"
#include "media/drawing/picture.h"
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

media::Drawing DrawingOf(const std::string& metafile) {
  media::Drawing drawing;
  EXPECT_EQ(core::LoadDrawing(metafile, drawing), media::Outcome::Ok);
  return drawing;
}

// What is painted of a drawing; its border has to be empty.
Picture PaintedPicture(const std::string& metafile, int32_t longerSide) {
  Picture picture;
  const auto take = [&](const uint8_t* rgba, uint32_t width, uint32_t height) {
    picture.width = static_cast<int>(width);
    picture.height = static_cast<int>(height);
    for (int x = 0; x < picture.width; ++x) {
      const bool marked = rgba[4 * x + 3] != 0;
      picture.painted += marked;
      EXPECT_FALSE(marked && (x == 0 || x == picture.width - 1 || picture.rows == 0 ||
                              picture.rows == picture.height - 1))
          << "cut off";
    }
    picture.rgba.insert(picture.rgba.end(), rgba, rgba + 4 * width);
    ++picture.rows;
    return media::Outcome::Ok;
  };
  EXPECT_EQ(media::PaintPicture(DrawingOf(metafile), longerSide, take), media::Outcome::Ok);
  EXPECT_EQ(picture.rows, picture.height);
  return picture;
}

TEST_F(PictureTest, SavedPicturesShowWholeDrawings) {
  const auto sizeOf = [](const std::string& cgm, int32_t longerSide, int& painted) {
    const Picture picture = PaintedPicture(cgm, longerSide);
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

// Rectangles of one pixel.
std::string Rectangles(int count) {
  std::string all;
  for (int i = 0; i < count; ++i)
    all += Element(4, 11, I({i % 90, i / 90 % 90, i % 90 + 1, i / 90 % 90 + 1}));
  return Element(5, 22, I({1})) + all;
}

TEST_F(PictureTest, WhatIsKeptOfAFileOfLinesIsBounded) {
  const test::TempFile file("", ".svg");
  const auto save = [&](const std::string& metafile) {
    return media::SaveSvg(DrawingOf(metafile), file.Path().c_str(), 0);
  };
  EXPECT_EQ(save(Metafile(Rectangles(500))), media::Outcome::Ok);
  const std::string many = Metafile(Rectangles(40000));
  EXPECT_EQ(save(many), media::Outcome::OverBudget);
  EXPECT_GT(PaintedPicture(many, 0).painted, 1000) << "rows of pixels keep nothing";
}

TEST_F(PictureTest, StripsOfALargePictureHaveNoSeams) {
  // Circles over a picture of several strips, and the same one drawing at a size that is one strip.
  std::string body = Element(5, 22, I({1})) + Element(5, 23, "\xFF" + std::string(2, '\0'));
  for (int i = 0; i < 10; ++i) body += Element(4, 12, I({9 * i + 5, 9 * i + 7, 6}));
  const Picture large = PaintedPicture(Metafile(body), 2000);
  int inside = 0;
  for (int y = 1; y + 1 < large.height; ++y) {
    for (int x = 1; x + 1 < large.width; ++x) {
      const auto alpha = [&](int row) { return large.rgba[4 * size_t(row * large.width + x) + 3]; };
      // A pixel that differs from both of its neighbours, which are alike, would be a seam.
      inside += alpha(y) == 255;
      ASSERT_FALSE(alpha(y - 1) == 255 && alpha(y + 1) == 255 && alpha(y) < 200) << x << ',' << y;
    }
  }
  EXPECT_GT(inside, 100000);
}

TEST_F(PictureTest, APatternIsMadeOnce) {
  // Each shape would be worth its pattern's cells anew.
  const std::string pattern = Element(5, 32, I({1, 100, 100, 0}) + std::string(30000, 'p'));
  std::string body = pattern + Element(5, 22, I({2})) + Element(5, 25, I({1}));
  for (int i = 0; i < 30000; ++i) body += Element(4, 11, I({0, 0, 1, 1}));
  EXPECT_GT(PaintedPicture(Metafile(body), 64).painted, 0);
}

// Keeps what it is given, until it has had enough.
struct Kept {
  std::vector<uint8_t> bytes;
  size_t most = SIZE_MAX;
  bool throws = false;
  bool isFinished = false;
};
class KeepingWriter : public core::PictureWriter {
 public:
  KeepingWriter(Kept& kept, size_t stride) : kept_(kept), stride_(stride) {}
  bool PutRows(const uint8_t* rgb, uint32_t rows) override {
    if (kept_.bytes.size() + rows * stride_ > kept_.most) {
      if (kept_.throws) throw std::length_error("enough");
      errno = ENOSPC;
      return false;
    }
    kept_.bytes.insert(kept_.bytes.end(), rgb, rgb + rows * stride_);
    return true;
  }
  bool Finish() override { return kept_.isFinished = true; }

 private:
  Kept& kept_;
  size_t stride_;
};

// Puts rows until they are refused, and ends. Whether all was taken.
bool PutAll(Kept& kept, size_t stride, const std::vector<uint8_t>& bytes) {
  const auto writer = core::WriteBehind(std::make_unique<KeepingWriter>(kept, stride), stride);
  for (size_t at = 0; at < bytes.size(); at += stride) {
    if (!writer->PutRow(&bytes[at])) {
      EXPECT_EQ(errno, ENOSPC);
      return false;
    }
  }
  return writer->Finish();
}

TEST_F(PictureTest, RowsThatAreWrittenBehindArriveInTheirOrder) {
  std::mt19937 random(3);
  for (const size_t stride : {3u, 1000u, 300000u, 1u << 20}) {
    for (const size_t rows : {1u, 7u, 40u}) {
      std::vector<uint8_t> bytes(stride * rows * (stride < 100 ? 20000 : 1));
      std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<uint8_t>(random()); });
      Kept kept;
      EXPECT_TRUE(PutAll(kept, stride, bytes));
      EXPECT_TRUE(kept.isFinished);
      EXPECT_TRUE(kept.bytes == bytes) << stride << " x " << rows;
    }
  }
}

TEST_F(PictureTest, WhatIsNotWrittenBehindIsTold) {
  constexpr size_t kStride = 3000, kRows = 4000;
  std::vector<uint8_t> bytes(kStride * kRows);
  for (const size_t most : {size_t{0}, kStride * 1500, kStride * (kRows - 1)}) {
    Kept full;
    full.most = most;
    errno = 0;
    EXPECT_FALSE(PutAll(full, kStride, bytes)) << most;
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_FALSE(full.isFinished);
    Kept thrown;
    thrown.most = most;
    thrown.throws = true;
    EXPECT_THROW((void)PutAll(thrown, kStride, bytes), std::length_error) << most;
  }
}

}  // namespace
