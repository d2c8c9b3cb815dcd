// Pictures of files by the published standard: parts, sizes and depths of them, on files made at random.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "core/pictures/picture.h"
#include "media/work.h"
#include "tests/support/encoders.h"
#include "tests/support/random_files.h"
#include "tests/support/raster.h"
#include "tests/support/samples.h"
#include "tests/support/view.h"

namespace {

using core::ViewRequest;
using test::Draw;
using test::Drawn;
using test::ImageForm;
using test::NitfBuilder;
using test::RandomFile;

ViewRequest AsStored() {
  ViewRequest request;
  request.stretch.by = core::Stretch::By::None;
  return request;
}

// How often random cases are tried; more with ORBNTF_MANY.
int Times(int few, int many) { return std::getenv("ORBNTF_MANY") != nullptr ? many : few; }

class ViewTest : public test::ModuleTest {
 protected:
  std::mt19937 random_{20261};
  uint32_t Below(uint32_t count) { return static_cast<uint32_t>(random_() % count); }
  // A window of a picture.
  ViewRequest Window(const Drawn& whole) {
    ViewRequest request;
    request.row = Below(whole.height);
    request.column = Below(whole.width);
    request.rows = 1 + Below(whole.height - static_cast<uint32_t>(request.row));
    request.columns = 1 + Below(whole.width - static_cast<uint32_t>(request.column));
    return request;
  }
};

TEST_F(ViewTest, APartIsThePartOfTheWhole) {
  const int windows = 10;
  for (int i = 0; i < Times(120, 2000); ++i) {
    const RandomFile file = test::MakeRandomFile(random_);
    SCOPED_TRACE(file.family + ", file " + std::to_string(i));
    const core::Survey survey{std::string_view(file.bytes)};
    const Drawn whole = Draw(survey, {});
    ASSERT_EQ(whole.fault.words, "");
    ASSERT_TRUE(whole.missing.empty()) << whole.missing[0].words;
    for (int n = 0; n < windows; ++n) {
      const ViewRequest request = Window(whole);
      const Drawn part = Draw(survey, request);
      ASSERT_EQ(part.fault.words, "");
      ASSERT_EQ(part.width, request.columns);
      for (uint32_t y = 0; y < part.height; ++y)
        ASSERT_TRUE(std::equal(part.At(0, y), part.At(0, y) + size_t{3} * part.width,
                               whole.At(request.column, request.row + y)))
            << request.row << ',' << request.column << ' ' << part.height << " x " << part.width
            << " row " << y;
    }
  }
}

TEST_F(ViewTest, SmallerPicturesAreMeansOfTheWhole) {
  for (int i = 0; i < Times(40, 500); ++i) {
    const RandomFile file = test::MakeRandomFile(random_);
    SCOPED_TRACE(file.family);
    const core::Survey survey{std::string_view(file.bytes)};
    const Drawn whole = Draw(survey, {});
    ViewRequest request;
    request.scale = 2 + Below(6);
    const Drawn squares = Draw(survey, request);
    ASSERT_EQ(squares.width, (whole.width + request.scale - 1) / request.scale);
    request = {};
    request.size = 1 + Below(std::max(whole.width, whole.height));
    const Drawn areas = Draw(survey, request);
    ASSERT_EQ(std::max(areas.width, areas.height), request.size);
    for (int n = 0; n < 20; ++n) {
      const uint32_t x = Below(areas.width), y = Below(areas.height), c = Below(3);
      // Shares of pixels, in parts of the whole's sides.
      double sum = 0;
      const auto share = [](uint64_t n2, uint64_t side, uint64_t small, uint64_t at) {
        const uint64_t low = std::max(n2 * side, at * small),
                       high = std::min((n2 + 1) * side, (at + 1) * small);
        return high > low ? static_cast<double>(high - low) : 0.0;
      };
      for (uint32_t v = 0; v < whole.height; ++v) {
        for (uint32_t u = 0; u < whole.width; ++u)
          sum += share(x, whole.width, areas.width, u) * share(y, whole.height, areas.height, v) *
                 whole.At(u, v)[c];
      }
      ASSERT_EQ(areas.At(x, y)[c], static_cast<int>(sum / whole.width / whole.height + 0.5));
    }
    request.fast = true;
    const Drawn nearest = Draw(survey, request);
    ASSERT_EQ(nearest.width, areas.width);
    ASSERT_EQ(nearest.height, areas.height);
  }
}

// A picture's file of a form, as a reader of pictures takes it.
test::WholeRaster ThroughFile(const Drawn& drawn, core::PictureForm form) {
  test::TempFile out("", core::EndingOf(form));
  std::FILE* file = std::fopen(out.Path().c_str(), "wb+");
  const auto writer = core::StartPicture(form, file, drawn.width, drawn.height);
  for (uint32_t y = 0; y < drawn.height; ++y) EXPECT_TRUE(writer->PutRow(drawn.At(0, y)));
  EXPECT_TRUE(writer->Finish());
  std::fclose(file);
  return test::ReadRaster(out.Path());
}

TEST_F(ViewTest, EveryFormHasTheSamePixels) {
  for (int i = 0; i < Times(30, 300); ++i) {
    const RandomFile file = test::MakeRandomFile(random_);
    SCOPED_TRACE(file.family);
    const Drawn drawn = Draw(file.bytes);
    for (const auto form : {core::PictureForm::Png, core::PictureForm::Ppm, core::PictureForm::Tiff}) {
      SCOPED_TRACE(core::EndingOf(form));
      const test::WholeRaster picture = ThroughFile(drawn, form);
      ASSERT_EQ(picture.form.width, drawn.width);
      ASSERT_EQ(picture.form.height, drawn.height);
      ASSERT_EQ(picture.form.bands, 3u);
      ASSERT_TRUE(std::equal(drawn.rgb.begin(), drawn.rgb.end(), picture.samples.begin(),
                             picture.samples.end(),
                             [](uint8_t a, char b) { return a == static_cast<uint8_t>(b); }));
    }
  }
}

// Where none of what sets them apart is in a file, both draw the same bytes.
TEST_F(ViewTest, TheModuleDrawsTheSameWhereNothingSetsThemApart) {
  int same = 0, apart[7] = {};
  for (int i = 0; i < Times(300, 4000); ++i) {
    const RandomFile file = test::MakeRandomFile(random_);
    SCOPED_TRACE(file.family);
    const bool reasons[] = {file.hasFill, file.hasAbsence, file.isPixelwise,   file.isDeep,
                            file.isOdd,   file.hasGraphic, file.hasDifferences};
    const int count = static_cast<int>(std::count(std::begin(reasons), std::end(reasons), true));
    if (count > 1) continue;
    const Drawn mine = Draw(file.bytes, AsStored());
    const test::Picture theirs = test::RenderBytes(file.bytes);
    ASSERT_EQ(mine.fault.words, "");
    std::vector<uint8_t> rgb;
    for (const test::Rgb& pixel : theirs.pixels)
      rgb.insert(rgb.end(), {static_cast<uint8_t>(pixel.red), static_cast<uint8_t>(pixel.green),
                             static_cast<uint8_t>(pixel.blue)});
    const bool isSame = theirs.status == 1 && theirs.width == mine.width &&
                        theirs.height == mine.height && rgb == mine.rgb;
    if (count == 0) {
      ASSERT_TRUE(isSame) << theirs.status << ' ' << theirs.width << " x " << theirs.height;
      ++same;
    } else if (!isSame) {
      ++apart[std::find(std::begin(reasons), std::end(reasons), true) - std::begin(reasons)];
    }
  }
  EXPECT_GT(same, Times(50, 500));
  for (size_t reason = 0; reason < std::size(apart); ++reason)
    EXPECT_GT(apart[reason], 0) << "reason " << reason << " never showed";
}

// Almost 10 GB of samples, almost all of them a hole: what is asked for is all that is read.
TEST_F(ViewTest, PartsAndOverviewsOfVastImagesAreDrawn) {
  constexpr uint64_t kSide = 98304, kBlock = 1024, kAcross = kSide / kBlock;
  ImageForm form{.width = 1024, .height = 1024, .blocksAcross = 96, .blocksDown = 96};
  NitfBuilder file;
  file.Image(form, "").Patch("LI0", test::Digits(kSide * kSide, 10));
  const std::string front = file.Bytes();
  const test::TempFile vast(front);
  std::filesystem::resize_file(vast.Path(), front.size() + kSide * kSide);
  // A white pixel, and one in the middle of a pixel of the overview.
  const auto mark = [&](uint64_t x, uint64_t y) {
    const uint64_t block = y / kBlock * kAcross + x / kBlock;
    std::fstream stream(vast.Path(), std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(static_cast<std::streamoff>(front.size() + block * kBlock * kBlock +
                                             y % kBlock * kBlock + x % kBlock));
    stream.put('\xFF');
  };
  mark(90000, 91000);
  mark(kSide / 2 + 48, 48);
  const core::Survey survey(vast.Path());
  ViewRequest request;
  request.row = 90990;
  request.column = 89980;
  request.rows = request.columns = 64;
  const Drawn part = Draw(survey, request);
  ASSERT_EQ(part.fault.words, "");
  for (uint32_t y = 0; y < 64; ++y) {
    for (uint32_t x = 0; x < 64; ++x)
      ASSERT_EQ(part.At(x, y)[1], x == 20 && y == 10 ? 255 : 0) << x << ',' << y;
  }
  request = {};
  request.size = 1024;
  request.fast = true;
  const Drawn overview = Draw(survey, request);
  ASSERT_EQ(overview.fault.words, "");
  ASSERT_EQ(overview.width, 1024u);
  EXPECT_EQ(overview.At(512, 0)[0], 255);
  EXPECT_EQ(std::count(overview.rgb.begin(), overview.rgb.end(), 255), 3);
}

}  // namespace
