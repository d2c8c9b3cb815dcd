// Samples as they are stored: every mode, depth and compression, against what the file was made of.
#include <algorithm>
#include <cstring>
#include <numeric>

#include "tests/support/encoders.h"
#include "tests/support/extract.h"
#include "tests/support/samples.h"
#include "tests/support/support.h"
#include "tests/support/vq.h"

namespace {

using core::SampleImage;
using test::ExtractTest;
using test::ImageForm;
using test::NitfBuilder;
using namespace std::string_literals;

TEST_F(ExtractTest, EveryModeAndDepth) {
  for (const char* mode : {"B", "P", "R", "S"}) {
    for (const int bits : {1, 3, 8, 12, 16, 24, 32, 64}) {
      for (const int bands : {1, 2, 3, 11}) {
        if (mode == "S"s && bands == 1) continue;
        ImageForm form{
            .width = 5, .height = 3, .blocksAcross = 2, .blocksDown = 2, .bands = bands, .bits = bits};
        form.representation = bands == 1 ? "MONO" : "MULTI";
        form.mode = mode;
        form.pixelType = bits == 1 ? "B" : bits == 64 ? "R" : bits == 32 ? "SI" : "INT";
        NitfBuilder file;
        // Two columns and a row of the blocks are no part of the image.
        file.Image(form, test::PackSamples(form, bits))
            .images[0]
            .subheader.Set("NCOLS", 8)
            .Set("NROWS", 5);
        SampleImage image;
        const core::SampleFault fault = Read(file, image);
        ASSERT_FALSE(fault.Met()) << mode << bits << bands << fault.words;
        ASSERT_EQ(image.width, 8u);
        ASSERT_EQ(image.height, 5u);
        for (uint32_t y = 0; y < 5; ++y) {
          for (uint32_t x = 0; x < 8; ++x) {
            for (int band = 0; band < bands; ++band) {
              ASSERT_EQ(At(image, x, y, static_cast<uint32_t>(band)),
                        test::SampleOf(static_cast<int>(x), static_cast<int>(y), band, bits))
                  << mode << ' ' << bits << " bits, band " << band << " of " << bands << " at " << x
                  << ", " << y;
            }
          }
        }
        file.images[0].data.pop_back();
        EXPECT_EQ(Read(file, image).Code(), -7);
      }
    }
  }
}

// Images of every compression and some modes, of three bands and blocks where they may have them.
std::vector<std::pair<ImageForm, std::string>> ImagesForWindows() {
  constexpr int kSide = test::kSide;
  std::vector<std::pair<ImageForm, std::string>> images;
  for (const auto& [mode, bits] : {std::pair("B", 1), {"B", 12}, {"P", 8}, {"R", 16}, {"S", 24}}) {
    ImageForm form{
        .width = 13, .height = 9, .blocksAcross = 2, .blocksDown = 3, .bands = 3, .bits = bits};
    form.representation = "MULTI";
    form.mode = mode;
    images.emplace_back(form, test::PackSamples(form, bits));
  }
  std::string jpeg;
  for (int block = 0; block < 4; ++block) jpeg += test::BlockStream(block, 2, {0, 1, 2}, true);
  images.emplace_back(test::BlockForm("C3", 2, 2, 3, "RGB", "P"), jpeg);
  images.emplace_back(test::BlockForm("C8", 1, 1, 3, "RGB"),
                      test::EncodeJpeg2000(kSide, kSide, {0, 1, 2}));
  const test::VqForm form{.bands = 3, .stored = {true, true}};
  images.emplace_back(test::VqImage(form, "C4", 2, 1), test::VqData(form));
  return images;
}

TEST_F(ExtractTest, WindowsAndBandsAreThoseOfTheWhole) {
  for (const auto& [form, data] : ImagesForWindows()) {
    const test::TempFile nitf(NitfBuilder().Image(form, data).Bytes());
    const core::Survey survey(nitf.Path());
    const core::SurveyedPart& part = *survey.Find(core::PartKind::Image, 0);
    for (const uint32_t reduce : {0u, 1u, 2u}) {
      SampleImage whole, piece;
      core::SampleRequest request;
      request.reduce = reduce;
      ASSERT_EQ(core::ReadSamples(survey, part, request, whole).words, "") << form.compression;
      request.row = 4, request.column = 8, request.rows = 5, request.columns = 1000,
      request.bands = {2, 0};
      ASSERT_EQ(core::ReadSamples(survey, part, request, piece).words, "") << form.compression;
      const uint32_t top = 4u >> reduce, left = 8u >> reduce;
      ASSERT_EQ(piece.bands, 2u);
      ASSERT_EQ(piece.width, whole.width - left) << form.compression << reduce;
      ASSERT_EQ(piece.height, (5u + (1u << reduce) - 1) >> reduce);
      for (uint32_t y = 0; y < piece.height; ++y) {
        for (uint32_t x = 0; x < piece.width; ++x) {
          ASSERT_EQ(At(piece, x, y, 0), At(whole, left + x, top + y, 2)) << form.compression << form.mode;
          ASSERT_EQ(At(piece, x, y, 1), At(whole, left + x, top + y, 0)) << form.compression << form.mode;
        }
      }
      request.column = 100000;
      EXPECT_EQ(core::ReadSamples(survey, part, request, piece).Code(), -13);
      request.column = 0, request.bands = {7};
      EXPECT_EQ(core::ReadSamples(survey, part, request, piece).Code(), -13);
    }
  }
}

TEST_F(ExtractTest, MasksLeaveTheirValue) {
  ImageForm form{.width = 2,
                 .height = 2,
                 .blocksAcross = 2,
                 .bands = 2,
                 .bits = 16,
                 .compression = "NM",
                 .representation = "MULTI",
                 .mode = "P"};
  const std::string table = test::Big(20, 4) + test::Big(4, 2) + test::Big(0, 2) + test::Big(16, 2) +
                            "\x12\x34" + test::Big(0xFFFFFFFF, 4) + test::Big(0, 4);
  SampleImage image;
  ASSERT_FALSE(Read(form, table + std::string(16, 'x'), image).Met());
  EXPECT_EQ(image.noData, 0x1234u);
  EXPECT_EQ(At(image, 1, 1, 1), 0x1234u) << "not stored";
  EXPECT_EQ(At(image, 2, 0, 0), 0x7878u);
  ASSERT_EQ(Read(form, table + std::string(15, 'x'), image).Code(), -7);
  // Of band-sequential images every block of every band has a record.
  form.mode = "S";
  const std::string sequential = test::MaskBytes({{8, 0xFFFFFFFF, 0, 16}, {}, -1});
  ASSERT_FALSE(
      Read(form, sequential + std::string(8, 'a') + std::string(8, 'b') + std::string(8, 'c'), image)
          .Met());
  EXPECT_EQ(At(image, 0, 0, 0), 0x6262u);
  EXPECT_EQ(At(image, 2, 0, 0), 0u);
  EXPECT_EQ(At(image, 0, 0, 1), 0x6161u);
  EXPECT_EQ(At(image, 3, 1, 1), 0x6363u);
}

// How far the samples are from the picture that was encoded, of which each stands for a square.
std::vector<int> Differences(const SampleImage& image, int scale) {
  std::vector<int> differences;
  for (uint32_t y = 0; y < image.height; ++y) {
    for (uint32_t x = 0; x < image.width; ++x) {
      for (uint32_t band = 0; band < image.bands; ++band) {
        const uint8_t* at = image.Pixel(x, y) + size_t{band} * image.sampleBytes;
        int wanted = 0;
        for (int i = 0; i < scale * scale; ++i)
          wanted += test::Sample(static_cast<int>(x) * scale + i % scale,
                                 static_cast<int>(y) * scale + i / scale, static_cast<int>(band));
        differences.push_back(std::abs(at[0] - wanted / (scale * scale)));
      }
    }
  }
  return differences;
}
int Farthest(const SampleImage& image, int scale = 1) {
  const std::vector<int> differences = Differences(image, scale);
  return *std::max_element(differences.begin(), differences.end());
}
int MeanDifference(const SampleImage& image, int scale) {
  const std::vector<int> differences = Differences(image, scale);
  return std::accumulate(differences.begin(), differences.end(), 0) /
         static_cast<int>(differences.size());
}

TEST_F(ExtractTest, JpegBlocksOfEveryMode) {
  constexpr int kSide = test::kSide;
  SampleImage image;
  std::string grey, colour, sequential;
  for (int block = 0; block < 4; ++block) grey += test::BlockStream(block, 2, {0});
  for (int block = 0; block < 4; ++block) colour += test::BlockStream(block, 2, {0, 1, 2}, true);
  for (int band = 0; band < 3; ++band) {
    for (int block = 0; block < 4; ++block) sequential += test::BlockStream(block, 2, {band});
  }
  ASSERT_FALSE(Read(test::BlockForm("C3", 2, 2, 1, "MONO"), grey, image).Met());
  EXPECT_EQ(image.width, 2u * kSide);
  EXPECT_LE(Farthest(image), 20);
  ASSERT_FALSE(Read(test::BlockForm("C3", 2, 2, 3, "RGB", "P"), colour, image).Met());
  EXPECT_LE(Farthest(image), 20);
  ASSERT_FALSE(Read(test::BlockForm("C3", 2, 2, 3, "RGB", "S"), sequential, image).Met());
  EXPECT_LE(Farthest(image), 20);
  ASSERT_FALSE(Read(test::BlockForm("C3", 2, 2, 3, "RGB", "P"), colour, image, 3).Met());
  EXPECT_EQ(image.width, 2u * kSide / 8);
  EXPECT_LE(Farthest(image, 8), 20) << "an eighth of the picture";
  EXPECT_EQ(Read(test::BlockForm("C3", 2, 2, 1, "MONO"), grey, image, 4).Code(), -16);
  EXPECT_EQ(Read(test::BlockForm("C3", 2, 2, 1, "MONO"), "no stream", image).Code(), -9);
  // One of the masked blocks is not there.
  ImageForm masked = test::BlockForm("M3", 2, 1, 1, "MONO");
  const std::string one = test::BlockStream(1, 2, {0});
  ASSERT_FALSE(Read(masked, test::MaskBytes({{0xFFFFFFFF, 0}, {}, 77}) + one, image).Met());
  EXPECT_EQ(At(image, 3, 3, 0), 77u);
  EXPECT_LE(std::abs(static_cast<int>(At(image, kSide + 9, 9, 0)) - test::Sample(kSide + 9, 9, 0)), 20);
}

TEST_F(ExtractTest, ProgressiveStreams) {
  constexpr int kSide = test::kSide;
  SampleImage image;
  const std::string stream =
      test::EncodeJpeg(test::Samples(0, 0, kSide, kSide, {0, 1, 2}), kSide, kSide, 3, true, true);
  for (const uint32_t reduce : {0u, 3u}) {
    ASSERT_EQ(Read(test::BlockForm("C3", 1, 1, 3, "RGB", "P"), stream, image, reduce).words, "");
    EXPECT_EQ(image.width, static_cast<uint32_t>(kSide) >> reduce);
  }
}

TEST_F(ExtractTest, CodestreamsAtTheirDepthAndReduced) {
  constexpr int kSide = test::kSide;
  SampleImage image;
  ImageForm form = test::BlockForm("C8", 1, 1, 3, "RGB");
  ASSERT_FALSE(Read(form, test::EncodeJpeg2000(kSide, kSide, {0, 1, 2}), image).Met());
  EXPECT_LE(Farthest(image), 1);
  ASSERT_FALSE(Read(form, test::EncodeJpeg2000(kSide, kSide, {0, 1, 2}), image, 2).Met());
  EXPECT_EQ(image.width, kSide / 4u);
  EXPECT_LE(Farthest(image, 4), 128);
  EXPECT_LE(MeanDifference(image, 4), 20);
  ImageForm deep = test::BlockForm("C8", 1, 1, 1, "MONO");
  deep.bits = 16;
  deep.significantBits = 12;
  ASSERT_FALSE(Read(deep, test::EncodeJpeg2000(kSide, kSide, {0}, {.precision = 12}), image).Met());
  EXPECT_EQ(image.sampleBytes, 2u);
  uint64_t most = 0;
  for (uint32_t x = 0; x < image.width; ++x) most = std::max(most, At(image, x, 7, 0));
  EXPECT_GT(most, 255u) << "12 bits, none of them shown away";
  for (const bool declared : {false, true}) {
    const std::string file =
        test::EncodeJpeg2000(kSide, kSide, {0, 1, 2}, {.jp2 = true, .declared = declared});
    ASSERT_FALSE(Read(form, file, image).Met()) << "a file around the codestream";
    EXPECT_LE(Farthest(image), 1);
  }
  EXPECT_EQ(Read(form, "no codestream", image).Code(), -9);
  EXPECT_EQ(Read(form, test::EncodeJpeg2000(kSide, kSide, {0}), image).Code(), -9)
      << "one component of three";
}

TEST_F(ExtractTest, FacsimileRows) {
  constexpr int kSide = test::kSide;
  SampleImage image;
  for (const bool twoDimensional : {false, true}) {
    ImageForm fax = test::BlockForm("C1", 1, 1, 1, "MONO");
    fax.bits = 1;
    fax.pixelType = "B";
    fax.rate = twoDimensional ? "2DS" : "1D";
    ASSERT_FALSE(Read(fax, test::EncodeFacsimile(kSide, kSide, twoDimensional), image).Met());
    for (uint32_t y = 0; y < image.height; ++y) {
      for (uint32_t x = 0; x < image.width; ++x)
        ASSERT_EQ(At(image, x, y, 0), test::IsBlack(static_cast<int>(x), static_cast<int>(y)) ? 0u : 1u);
    }
    EXPECT_EQ(Read(fax, std::string(40, '\0'), image).Code(), -9);
    ASSERT_FALSE(Read(fax, test::EncodeFacsimile(kSide, kSide, twoDimensional), image, 2).Met());
    EXPECT_EQ(image.width, kSide / 4u);
    EXPECT_EQ(At(image, 3, 5, 0), test::IsBlack(12, 20) ? 0u : 1u) << "every fourth sample";
  }
}

TEST_F(ExtractTest, VectorQuantisedBlocks) {
  SampleImage image;
  for (const test::VqForm& form :
       {test::VqForm{.stored = {true, true}}, test::VqForm{.bits = 16, .stored = {true, true}},
        test::VqForm{.bands = 3, .stored = {true, true}}}) {
    const std::string data = test::VqData(form);
    ASSERT_FALSE(Read(test::VqImage(form, "C4", 2, 1), data, image).Met());
    for (uint32_t y = 0; y < image.height; ++y) {
      for (uint32_t x = 0; x < image.width; ++x) {
        const uint32_t block = x / form.blockWidth, column = x % form.blockWidth;
        const uint32_t n = block * form.codeRows * form.codesPerRow +
                           y / form.VectorHeight() * form.codesPerRow + column / form.VectorWidth();
        const std::string entry = test::VqEntry(form, test::VqCode(n));
        const size_t at = (y % form.VectorHeight() * form.VectorWidth() + column % form.VectorWidth()) *
                          form.ValueBytes();
        for (uint32_t band = 0; band < image.bands; ++band) {
          uint64_t wanted = static_cast<uint8_t>(entry[at + band]);
          if (form.bits == 16) wanted = wanted << 8 | static_cast<uint8_t>(entry[at + 1]);
          ASSERT_EQ(At(image, x, y, band), wanted) << x << ", " << y;
        }
      }
    }
    EXPECT_EQ(Read(test::VqImage(form, "C4", 2, 1), data.substr(0, data.size() - 3), image).Code(), -7);
  }
}

// Blocks of one place are decoded once, however many they are.
TEST_F(ExtractTest, BlocksMayShareTheirData) {
  SampleImage image;
  ImageForm dots = test::BlockForm("M1", 300, 300, 1, "MONO");
  dots.width = dots.height = dots.bits = 1;
  dots.pixelType = "B";
  dots.rate = "1D";
  const std::string all = test::MaskBytes({std::vector<uint32_t>(90000, 0), {}, -1});
  ASSERT_FALSE(
      Read(dots, all + test::EncodeFacsimile(8, 8, false) + std::string(1 << 20, '\0'), image).Met());
  EXPECT_EQ(At(image, 299, 299, 0), At(image, 0, 0, 0));
  ASSERT_FALSE(Read(test::BlockForm("M3", 2, 2, 1, "MONO"),
                    test::MaskBytes({{0, 0, 0xFFFFFFFF, 0}, {}, 9}) + test::BlockStream(0, 1, {0}), image)
                   .Met());
  EXPECT_EQ(At(image, test::kSide + 3, test::kSide + 5, 0), At(image, 3, 5, 0));
  EXPECT_EQ(At(image, 3, test::kSide + 5, 0), 9u);
}

// Sizes that overflow, and blocks that lie nowhere: each ends at once.
TEST_F(ExtractTest, HostileBlocksEndAtOnce) {
  SampleImage image;
  ImageForm vectors{.width = 0, .height = 0, .bands = 2, .compression = "C4", .representation = "MULTI"};
  NitfBuilder overflow;
  const std::string tables = test::Big(1, 4) + test::Big(1, 4) + test::Big(8, 1) + test::Big(1, 2) +
                             test::Big(32768, 2) + std::string(8, '\0') + test::Big(0, 2) +
                             test::Big(0x80000000, 4);
  overflow.Image(vectors, tables + std::string(1 << 20, '\0'));
  overflow.images[0].subheader.Set("NROWS", 131072).Set("NCOLS", 65536);
  EXPECT_TRUE(Read(overflow, image).Met());
  ImageForm fax = test::BlockForm("C1", 9999, 9999, 1, "MONO");
  fax.width = fax.height = 1;
  fax.bits = 1;
  fax.pixelType = "B";
  EXPECT_EQ(Read(fax, std::string(1 << 20, '\xAA'), image).Code(), -16);
  // Many blocks, all of one stream, of a small image.
  ImageForm jpeg = test::BlockForm("M3", 100, 100, 1, "MONO");
  NitfBuilder masked;
  const std::string mask = test::MaskBytes({std::vector<uint32_t>(10000, 0), {}, -1});
  masked.Image(jpeg, mask + test::BlockStream(0, 1, {0}))
      .images[0]
      .subheader.Set("NROWS", 64)
      .Set("NCOLS", 64);
  EXPECT_EQ(Read(masked, image).Code(), -9);
  // A stream list without an end.
  std::string many;
  for (int i = 0; i < 100000; ++i) many += "\xFF\xD8\xFF\xD9";
  EXPECT_EQ(Read(test::BlockForm("C3", 1, 1, 1, "MONO"), many, image).Code(), -9);
  // Fill bytes in front of a stream are legal.
  EXPECT_FALSE(
      Read(test::BlockForm("C3", 1, 1, 1, "MONO"), "\xFF\xFF" + test::BlockStream(0, 1, {0}), image)
          .Met());
}

// What claims more than there is ends before memory is taken for it.
TEST_F(ExtractTest, ClaimsAreHeldAgainstTheBytes) {
  SampleImage image;
  ImageForm huge{.width = 8192, .height = 8192, .blocksAcross = 9999, .blocksDown = 9999};
  EXPECT_EQ(Read(huge, "few", image).Code(), -7);
  huge.compression = "NM";
  EXPECT_EQ(Read(huge, test::MaskBytes({{}, {}, -1}) + "few", image).Code(), -7);
  huge.blocksAcross = huge.blocksDown = 9;
  const std::vector<uint32_t> none(81, 0xFFFFFFFF);
  EXPECT_EQ(Read(huge, test::MaskBytes({none, {}, -1}) + "few", image).Code(), -1);
  NitfBuilder cut;
  cut.Image({}, std::string(64, 'p'));
  const test::TempFile file(cut.Bytes().substr(0, 500));
  const core::Survey survey(file.Path());
  EXPECT_EQ(core::ReadSamples(survey, survey.parts.at(1), 0, image).Code(), -7);
}

}  // namespace
