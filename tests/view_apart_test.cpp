// Where the picture by the published standard differs from the one that the module draws for its host.
#include "tests/support/encoders.h"
#include "tests/support/metafile.h"
#include "tests/support/samples.h"
#include "tests/support/view.h"

namespace {

using test::Big;
using test::ImageForm;
using test::NitfBuilder;
using test::Picture;
using test::Rgb;
using namespace std::string_literals;

class ViewApartTest : public test::ModuleTest {
 protected:
  // Draws a file as the module does, or by the published standard.
  static Picture Draw(const std::string& bytes, bool byStandard) {
    if (!byStandard) return test::RenderBytes(bytes);
    core::ViewRequest request;
    request.stretch.by = core::Stretch::By::None;
    const test::Drawn drawn = test::Draw(bytes, request);
    Picture picture;
    for (size_t i = 0; i < drawn.rgb.size(); i += 3)
      picture.pixels.push_back({drawn.rgb[i], drawn.rgb[i + 1], drawn.rgb[i + 2]});
    picture.status = drawn.missing.empty() ? drawn.fault.Code() : ORB_SHORT_READ;
    picture.width = drawn.width;
    picture.height = drawn.height;
    return picture;
  }
};

ImageForm Colours(const std::string& mode, int across = 1) {
  return {.width = 4,
          .height = 3,
          .blocksAcross = across,
          .bands = 3,
          .representation = "RGB",
          .mode = mode,
          .bandCodes = {"R", "G", "B"}};
}

TEST_F(ViewApartTest, EveryVersionAndLevelIsRead) {
  NitfBuilder file;
  file.Image({}, std::string(64, 'p'));
  file.header.Set("FHDR", "NSIF").Set("FVER", "01.00").Set("CLEVEL", "06");
  EXPECT_EQ(Draw(file.Bytes(), false).status, -78);
  const Picture picture = Draw(file.Bytes(), true);
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.At(3, 3), test::Grey('p'));
}

// A bar of 20 x 4 units, 6 units from the origin, y downwards as the profile has it.
std::string Bar(const std::string& extent, int sign) {
  const std::string looks = test::Element(5, 22, test::I({1})) + test::Element(5, 23, "\xFF\0\0"s) +
                            test::Element(5, 30, test::I({0}));
  return test::Metafile(looks + test::Element(4, 11, test::I({6, 6 * sign, 26, 10 * sign})), "", extent);
}

TEST_F(ViewApartTest, DrawingsStandAtTheirOrigin) {
  if (!test::HostPaintsDrawings()) GTEST_SKIP();
  const Rgb red = {255, 0, 0};
  for (const auto& [extent, sign] :
       {std::pair{test::I({0, 32767, 32767, 0}), 1}, std::pair{test::I({0, 100, 100, 0}), 1},
        std::pair{test::I({0, -100, 100, 0}), -1}}) {
    NitfBuilder file;
    test::Record graphic = test::GraphicRecord();
    graphic.Set("SLOC", "0002000030").Set("SBND1", "0002600036").Set("SBND2", "0004000080");
    file.Graphic(graphic, Bar(extent, sign));
    const Picture picture = Draw(file.Bytes(), true);
    ASSERT_EQ(picture.status, 1);
    EXPECT_EQ(picture.width, 80u);
    EXPECT_EQ(picture.height, 40u);
    EXPECT_EQ(picture.At(38, 28), red) << "one unit a pixel from SLOC";
    EXPECT_EQ(picture.At(53, 28), red);
    EXPECT_EQ(picture.At(34, 28), test::kWhite);
    EXPECT_EQ(picture.At(58, 28), test::kWhite);
    EXPECT_EQ(picture.At(38, 24), test::kWhite);
    EXPECT_EQ(picture.At(38, 32), test::kWhite);
    // The module adds the bounds to the place and takes their first number for the column.
    const Picture own = Draw(file.Bytes(), false);
    EXPECT_EQ(own.width, 70u);
    EXPECT_EQ(own.height, 100u);
  }
}

// What is attached moves with what it is attached to, and a drawing beyond its bounds makes the canvas
// larger, to twice the bounds at most.
TEST_F(ViewApartTest, BoundsCountFromTheAttachment) {
  if (!test::HostPaintsDrawings()) GTEST_SKIP();
  const auto size = [](const char* second) {
    NitfBuilder file;
    test::Record graphic = test::GraphicRecord();
    graphic.Set("SDLVL", 2).Set("SALVL", 1).Set("SBND2", second);
    file.Image(ImageForm{.location = "0001000100"}, std::string(64, 'p'));
    file.Graphic(graphic, Bar(test::I({0, 32767, 32767, 0}), 1));
    const Picture picture = Draw(file.Bytes(), true);
    return std::pair{picture.width, picture.height};
  };
  EXPECT_EQ(size("0002000040"), std::pair(140u, 30u));
  EXPECT_EQ(size("0002000020"), std::pair(126u, 30u));
  EXPECT_EQ(size("0002000009"), std::pair(118u, 30u));
}

TEST_F(ViewApartTest, TheLastRowsOfPixelInterleavedBlocksAreRead) {
  std::string data;
  for (int n = 0; n < 2 * 12; ++n) data += static_cast<char>(n) + Big(0x40, 1) + Big(0x80, 1);
  const std::string bytes = NitfBuilder().Image(Colours("P", 2), data).Bytes();
  const Picture own = Draw(bytes, false), whole = Draw(bytes, true);
  ASSERT_EQ(own.status + whole.status, 2);
  EXPECT_EQ(own.At(1, 2), (Rgb{5, 0x40, 0x80})) << "the row above";
  for (uint8_t n = 0; n < 24; ++n)
    EXPECT_EQ(whole.At(n % 4 + n / 12 * 4, n % 12 / 4), (Rgb{n, 0x40, 0x80})) << int{n};
  EXPECT_EQ(Draw(bytes.substr(0, bytes.size() - 1), true).status, -7);
}

TEST_F(ViewApartTest, ColourDifferencesAreShownInColour) {
  for (const char* mode : {"B", "P", "R"}) {
    ImageForm form = Colours(mode);
    form.representation = "YCbCr601";
    form.bandCodes = {"Y", "Cb", "Cr"};
    form.width = 1;
    form.height = 2;
    const std::string data = mode == "P"s   ? "\x4C\x55\xFF\x80\x80\x80"
                             : mode == "R"s ? "\x4C\x55\xFF\x80\x80\x80"
                                            : "\x4C\x80\x55\x80\xFF\x80";
    const std::string bytes = NitfBuilder().Image(form, data).Bytes();
    EXPECT_EQ(Draw(bytes, false).At(0, 0), (Rgb{0x4C, 0x55, 0xFF}));
    const Picture picture = Draw(bytes, true);
    EXPECT_EQ(picture.At(0, 0), (Rgb{254, 0, 0})) << mode;
    EXPECT_EQ(picture.At(0, 1), test::Grey(0x80));
  }
}

// An image of several deep bands, and which of them are red, green and blue.
struct DeepForm {
  ImageForm form;
  int shown[3];
};
DeepForm Deep(const char* mode, int bands, int stored, int significant) {
  DeepForm deep = {Colours(mode, 2), {0, 1, bands == 2 ? 1 : 2}};
  ImageForm& form = deep.form;
  form.width = 5;
  form.blocksDown = 2;
  form.bits = stored;
  form.significantBits = significant;
  form.bands = bands;
  form.representation = "MULTI";
  form.bandCodes = {};
  if (bands == 3) deep = {form, {2, 0, 1}};
  if (bands == 3) deep.form.bandCodes = {"G", "B", "R"};
  return deep;
}

TEST_F(ViewApartTest, DeepBandsShowTheirHighBits) {
  const auto expect = [](const char* mode, int bands, int stored, int significant) {
    const DeepForm deep = Deep(mode, bands, stored, significant);
    const std::string bytes =
        NitfBuilder().Image(deep.form, test::PackSamples(deep.form, significant)).Bytes();
    const Picture picture = Draw(bytes, true);
    ASSERT_EQ(picture.status, 1) << mode << stored << bands;
    const auto high = [&](int x, int y, int band) {
      return static_cast<uint8_t>(test::SampleOf(x, y, band, significant) >>
                                  (std::max(8, significant) - 8));
    };
    for (int n = 0; n < 60; ++n) {
      const int x = n % 10, y = n / 10;
      const Rgb expected = {high(x, y, deep.shown[0]), high(x, y, deep.shown[1]),
                            high(x, y, deep.shown[2])};
      ASSERT_EQ(picture.At(static_cast<uint32_t>(x), static_cast<uint32_t>(y)), expected)
          << mode << ' ' << stored << ' ' << bands << " at " << x << ", " << y;
    }
    if (stored == 16) {
      EXPECT_EQ(Draw(bytes, false).status, -700002);
    }
    if (bands == 3) {
      EXPECT_EQ(Draw(bytes.substr(0, bytes.size() - 1), true).status, -7);
    }
  };
  for (const char* mode : {"B", "P", "R", "S"}) {
    for (const int bands : {3, 5}) {
      for (const int significant : {16, 11}) expect(mode, bands, 16, significant);
      for (const int significant : {12, 7}) expect(mode, bands, 12, significant);
    }
  }
}

// Justified left, samples show the high bits of what is stored.
TEST_F(ViewApartTest, BitsMayStandLeft) {
  const DeepForm deep = Deep("P", 3, 16, 11);
  NitfBuilder file;
  file.Image(deep.form, test::PackSamples(deep.form, 16)).images[0].subheader.Set("PJUST", "L");
  EXPECT_EQ(Draw(file.Bytes(), true).At(3, 2).green,
            static_cast<uint8_t>(test::SampleOf(3, 2, deep.shown[1], 16) >> 8));
}

TEST_F(ViewApartTest, MasksHaveARecordABlock) {
  for (const char* mode : {"B", "P", "R"}) {
    const ImageForm form = [&] {
      ImageForm masked = Colours(mode, 3);
      masked.compression = "NM";
      return masked;
    }();
    const std::string table = test::MaskBytes({{0, 0xFFFFFFFF, 36}, {}, -1});
    const std::string bytes =
        NitfBuilder().Image(form, table + std::string(36, 'a') + std::string(36, 'b')).Bytes();
    const Picture picture = Draw(bytes, true);
    ASSERT_EQ(picture.status, 1) << mode;
    EXPECT_EQ(picture.At(1, 1), test::Grey('a'));
    EXPECT_EQ(picture.At(5, 1), test::kWhite) << "not stored: the background is seen";
    EXPECT_EQ(picture.At(9, 1), test::Grey('b'));
    EXPECT_EQ(picture.At(11, 2), test::Grey('b'));
  }
  ImageForm sequential = Colours("S", 2);
  sequential.compression = "NM";
  const std::string table = test::MaskBytes({{0, 12, 24, 36, 48, 60}, {}, -1});
  const std::string bytes = NitfBuilder().Image(sequential, table + std::string(72, 'a')).Bytes();
  EXPECT_EQ(Draw(bytes, false).pixels, Draw(bytes, true).pixels) << "one for each band there";
}

TEST_F(ViewApartTest, DownsampledImagesAreShownAtTheirFullSize) {
  constexpr int kSide = test::kSide;
  for (const int bands : {1, 3}) {
    ImageForm form =
        test::BlockForm("I1", 1, 1, bands, bands == 1 ? "MONO" : "RGB", bands == 1 ? "B" : "P");
    form.width = 2 * kSide;
    form.height = 3 * kSide;
    const std::vector<int> which = bands == 1 ? std::vector{0} : std::vector{0, 1, 2};
    const std::string bytes =
        NitfBuilder().Image(form, test::BlockStream(0, 1, which, bands == 3)).Bytes();
    const Picture own = Draw(bytes, false), whole = Draw(bytes, true);
    ASSERT_EQ(own.status + whole.status, 2);
    EXPECT_EQ(own.At(2 * kSide - 1, 1), test::kWhite) << "the background beside the decoded picture";
    // A pixel is what the mean of its neighbours' square is, as far as a straight line goes.
    int64_t difference = 0, count = 0;
    for (uint32_t y = 0; y < 3 * kSide; ++y) {
      for (uint32_t x = 0; x < 2 * kSide; ++x, ++count)
        difference += std::abs(whole.At(x, y).green - own.At(x / 2, y / 3).green);
    }
    EXPECT_LE(difference / count, 12) << "the same picture, smoothly";
    EXPECT_EQ(whole.At(10, 3 * 9 + 1).red, (own.At(4, 9).red + 3 * own.At(5, 9).red) / 4)
        << "a quarter of the way";
    EXPECT_EQ(whole.At(0, 0), own.At(0, 0)) << "corners stay";
    EXPECT_EQ(whole.At(2 * kSide - 1, 3 * kSide - 1), own.At(kSide - 1, kSide - 1));
  }
}

}  // namespace
