// What samples of every kind are shown as, and what is left out of a picture.
#include <bit>

#include "tests/support/encoders.h"
#include "tests/support/metafile.h"
#include "tests/support/view.h"

namespace {

using core::Stretch;
using core::ViewRequest;
using test::Big;
using test::ImageForm;
using test::NitfBuilder;

struct Shown {
  std::vector<int> pixels;  ///< red, green, blue of each
  core::SampleFault fault;
  std::vector<core::LeftOut> missing;
};

Shown Show(const std::string& bytes, const ViewRequest& request = {}) {
  test::Drawn drawn = test::Draw(bytes, request);
  return {{drawn.rgb.begin(), drawn.rgb.end()}, std::move(drawn.fault), std::move(drawn.missing)};
}

std::vector<int> Pixels(const ImageForm& form, const std::string& data,
                        Stretch::By by = Stretch::By::None, const std::vector<uint32_t>& bands = {}) {
  ViewRequest request;
  request.stretch.by = by;
  request.bands = bands;
  const Shown shown = Show(NitfBuilder().Image(form, data).Bytes(), request);
  EXPECT_EQ(shown.fault.words, "");
  for (const core::LeftOut& missing : shown.missing) ADD_FAILURE() << missing.words;
  return shown.pixels;
}

// The first of each pixel's colours, all three of which are the same.
std::vector<int> Greys(const std::vector<int>& pixels) {
  std::vector<int> greys;
  for (size_t i = 0; i < pixels.size(); i += 3) {
    EXPECT_TRUE(pixels[i] == pixels[i + 1] && pixels[i] == pixels[i + 2]);
    greys.push_back(pixels[i]);
  }
  return greys;
}

std::string Reals(const std::vector<float>& values) {
  std::string bytes;
  for (const float value : values) bytes += Big(std::bit_cast<uint32_t>(value), 4);
  return bytes;
}

std::string Words(const std::vector<uint32_t>& values, size_t bytes) {
  std::string text;
  for (const uint32_t value : values) text += Big(value, bytes);
  return text;
}

using ViewSamplesTest = test::ModuleTest;

TEST_F(ViewSamplesTest, WholeNumbersShowTheirHighBitsOrAreStretched) {
  ImageForm form{.width = 4, .height = 1, .bits = 16, .significantBits = 11};
  const std::string data = Words({0, 8, 1024, 2047}, 2);
  EXPECT_EQ(Greys(Pixels(form, data)), (std::vector{0, 1, 128, 255}));
  const std::string narrow = Words({1000, 1010, 1015, 1020}, 2);
  EXPECT_EQ(Greys(Pixels(form, narrow, Stretch::By::MinMax)), (std::vector{0, 128, 191, 255}));
  form.pixelType = "SI";
  form.significantBits = 16;
  EXPECT_EQ(Greys(Pixels(form, Words({0x8000, 0xFFFF, 0, 0x7FFF}, 2))), (std::vector{0, 127, 128, 255}));
  EXPECT_EQ(Greys(Pixels(form, Words({0xFFF6, 0, 10, 0xFFF6}, 2), Stretch::By::MinMax)),
            (std::vector{0, 128, 255, 0}));
  ImageForm wide{.width = 2, .height = 1, .bits = 64};
  EXPECT_EQ(Greys(Pixels(wide, Big(uint64_t{1} << 63, 8) + Big(~uint64_t{0}, 8))),
            (std::vector{128, 255}));
  ImageForm few{.width = 4, .height = 1, .bits = 2};
  EXPECT_EQ(Greys(Pixels(few, "\x1B")), (std::vector{0, 85, 170, 255})) << "the ramp of two bits";
}

TEST_F(ViewSamplesTest, PercentLeavesOutWhatIsFarFromTheRest) {
  ImageForm form{.width = 101, .height = 1, .bits = 16};
  std::vector<uint32_t> values(101);
  for (uint32_t i = 0; i < 101; ++i) values[i] = 100 + i;
  values[100] = 60000;
  const std::vector<int> greys = Greys(Pixels(form, Words(values, 2), Stretch::By::Percent));
  EXPECT_EQ(greys[2], 0) << "two percent are black";
  EXPECT_EQ(greys[98], 255) << "and two are white";
  EXPECT_EQ(greys[50], 128);
}

TEST_F(ViewSamplesTest, RealsAndComplexNumbersAreStretched) {
  ImageForm form{.width = 4, .height = 1, .bits = 32, .pixelType = "R"};
  EXPECT_EQ(Greys(Pixels(form, Reals({-1, 0, 1, 3}))), (std::vector{0, 64, 128, 255}));
  // What is no number is left out: the background is seen there.
  EXPECT_EQ(Greys(Pixels(form, Reals({-1, std::numeric_limits<float>::quiet_NaN(), 1, 3}))),
            (std::vector{0, 255, 128, 255}))
      << "on white";
  form = {.width = 3, .height = 1, .bits = 64, .pixelType = "C"};
  EXPECT_EQ(Greys(Pixels(form, Reals({0, 0, 3, 4, 6, 8}))), (std::vector{0, 128, 255}));
  form = {
      .width = 3, .height = 1, .bands = 2, .bits = 32, .representation = "NODISPLY", .pixelType = "R"};
  ViewRequest request;
  request.stretch.by = Stretch::By::MinMax;
  NitfBuilder radar;
  test::Record record = test::ImageRecord(form);
  record.Set("ISUBCAT0", "I").Set("ISUBCAT1", "Q");
  radar.Image(record, Reals({0, 3, 6, 0, 4, 8}));
  EXPECT_EQ(Show(radar.Bytes(), request).fault.words, "there is nothing in it to draw");
  request.image = 0;
  EXPECT_EQ(Greys(Show(radar.Bytes(), request).pixels), (std::vector{0, 128, 255}))
      << "the magnitude of two bands";
}

TEST_F(ViewSamplesTest, BandsAreChosenByCodeByWavelengthOrByOrder) {
  ImageForm form{.width = 1, .height = 1, .bands = 5, .representation = "MULTI"};
  const std::string data = "\x10\x20\x30\x40\x50";
  const std::vector<int> first = {0x10, 0x20, 0x30};
  EXPECT_EQ(Pixels(form, data), first);
  EXPECT_EQ(Pixels(form, data, Stretch::By::None, {4, 0, 2}), (std::vector{0x50, 0x10, 0x30}));
  EXPECT_EQ(Pixels(form, data, Stretch::By::None, {3}), (std::vector{0x40, 0x40, 0x40}));
  form.bandCodes = {"", "B", "", "G", "R"};
  EXPECT_EQ(Pixels(form, data), (std::vector{0x50, 0x40, 0x20}));
  form.bandCodes = {"", "", "M", "", ""};
  EXPECT_EQ(Pixels(form, data), (std::vector{0x30, 0x30, 0x30}));
  form.bandCodes = {};
  test::Record record = test::ImageRecord(form);
  const char* wavelengths[] = {"830", "660", "560", "480", "425"};
  for (int band = 0; band < 5; ++band) record.Set("ISUBCAT" + std::to_string(band), wavelengths[band]);
  EXPECT_EQ(Show(NitfBuilder().Image(record, data).Bytes()).pixels, (std::vector{0x20, 0x30, 0x40}));
  form.bands = 2;
  form.bandCodes = {"", "M"};
  EXPECT_EQ(Pixels(form, "\x10\x20"), (std::vector{0x20, 0x20, 0x20}));
  ViewRequest none;
  none.bands = {7};
  const Shown left = Show(NitfBuilder().Image(form, "\x10\x20").Bytes(), none);
  ASSERT_EQ(left.missing.size(), 1u);
  EXPECT_EQ(left.missing[0].words, "it has 2 bands, from 0");
}

TEST_F(ViewSamplesTest, TablesAndDifferencesBecomeColours) {
  ImageForm form{.width = 3,
                 .height = 1,
                 .representation = "RGB/LUT",
                 .bandCodes = {"LU"},
                 .lookup = std::string("\x01\x02\x11\x12\x21\x22", 6),
                 .lookupTables = 3};
  EXPECT_EQ(Pixels(form, std::string("\0\x01\x02", 3)),
            (std::vector{0x01, 0x11, 0x21, 0x02, 0x12, 0x22, 2, 2, 2}))
      << "a sample without an entry is shown as it is";
  // Of several bands each is shown through the first of its tables.
  form.width = 20;
  form.bands = 3;
  form.representation = "RGB";
  form.bandCodes = {"B", "G", "R"};
  const std::vector<int> shown = Pixels(form, std::string(60, '\x01'));
  ASSERT_EQ(shown.size(), 60u);
  for (size_t i = 0; i < shown.size(); ++i) EXPECT_EQ(shown[i], i % 3 == 2 ? 0x02 : 0x01) << i;
  // White, and a red, with the differences in any order.
  form = {
      .width = 2, .height = 1, .bands = 3, .representation = "YCbCr601", .bandCodes = {"Y", "Cb", "Cr"}};
  const std::vector<int> wanted = {200, 200, 200, 254, 0, 0};
  EXPECT_EQ(Pixels(form, "\xC8\x4C\x80\x55\x80\xFF"), wanted);
  form.bandCodes = {"Cr", "Cb", "Y"};
  EXPECT_EQ(Pixels(form, "\x80\xFF\x80\x55\xC8\x4C"), wanted);
}

TEST_F(ViewSamplesTest, MasksLeaveTheirPlaceToWhatLiesBelow) {
  ImageForm below{.width = 4, .height = 1},
      above{.width = 2, .height = 1, .blocksAcross = 2, .compression = "NM"};
  above.level = 2;
  const std::string ground = "\x01\x02\x03\x04";
  const auto show = [&](const test::MaskForm& mask, const std::string& data) {
    return Greys(
        Show(NitfBuilder().Image(below, ground).Image(above, test::MaskBytes(mask) + data).Bytes())
            .pixels);
  };
  EXPECT_EQ(show({.blocks = {0xFFFFFFFF, 0}}, "\x50\x60"), (std::vector{1, 2, 0x50, 0x60}));
  EXPECT_EQ(show({.blocks = {0, 0xFFFFFFFF}}, std::string("\0\x60", 2)), (std::vector{0, 0x60, 3, 4}))
      << "a black pixel is one";
  EXPECT_EQ(show({.padCode = 0x50}, "\x50\x51\x52\x50"), (std::vector{1, 0x51, 0x52, 4}));
  EXPECT_EQ(show({.pads = {0, 0xFFFFFFFF}, .padCode = 0x50}, "\x50\x51\x52\x50"),
            (std::vector{1, 0x51, 0x52, 0x50}))
      << "the second block has no pad pixels";
}

TEST_F(ViewSamplesTest, WhatCannotBeDrawnLeavesItsPlaceAndIsNamed) {
  ImageForm good{.width = 4, .height = 2}, bad{.width = 4, .height = 1, .compression = "C7"};
  bad.level = 2;
  ImageForm shortOne{.width = 2, .height = 2};
  shortOne.level = 3;
  const Shown shown = Show(NitfBuilder()
                               .Image(good, std::string(8, '\x07'))
                               .Image(bad, "xxxx")
                               .Image(shortOne, "abc")
                               .Bytes());
  EXPECT_EQ(shown.fault.words, "");
  EXPECT_EQ(Greys(shown.pixels), std::vector<int>(8, 7));
  ASSERT_EQ(shown.missing.size(), 2u);
  EXPECT_EQ(shown.missing[0].segment + shown.missing[1].segment, "image 1image 2");
  // Of a stream that ends early what is above its end is shown.
  const std::string jpeg = test::BlockStream(0, 1, {0});
  const Shown cut = Show(NitfBuilder().Image(test::BlockForm("C3", 2, 1, 1, "MONO"), jpeg).Bytes());
  ASSERT_EQ(cut.missing.size(), 1u);
  EXPECT_EQ(cut.missing[0].words, "the streams of some blocks are missing");
  const Shown graphic = Show(NitfBuilder()
                                 .Image(good, std::string(8, '\x07'))
                                 .Graphic(test::GraphicRecord(), "no metafile")
                                 .Bytes());
  ASSERT_EQ(graphic.missing.size(), 1u);
  EXPECT_EQ(graphic.missing[0].words, "the metafile does not decode");
}

TEST_F(ViewSamplesTest, PartsAndPicturesThatAreNotThereAreRefused) {
  const std::string bytes = NitfBuilder().Image(ImageForm{}, std::string(64, 'i')).Bytes();
  ViewRequest request;
  request.row = 8;
  EXPECT_EQ(Show(bytes, request).fault.outcome, media::Outcome::Invalid);
  request = {};
  request.image = 1;
  EXPECT_EQ(Show(bytes, request).fault.words, "there is no image 1");
  EXPECT_EQ(Show(NitfBuilder().Text("words").Bytes()).fault.outcome, media::Outcome::Invalid);
  // A small image far away asks for more than its file is worth.
  ImageForm far;
  far.location = "9999999999";
  EXPECT_EQ(Show(NitfBuilder().Image(far, std::string(64, 'i')).Bytes()).fault.outcome,
            media::Outcome::OverBudget);
  request = {};
  request.size = 100;
  request.fast = true;
  EXPECT_EQ(Show(NitfBuilder().Image(far, std::string(64, 'i')).Bytes(), request).pixels.size(), 30000u);
}

}  // namespace
