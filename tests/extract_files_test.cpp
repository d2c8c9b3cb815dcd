// Files of samples, read back by something that shares no code with what wrote them.
#include <cstring>

#include <tiffio.h>

#include "core/pictures/sample_files.h"
#include "hostkit/hostkit.h"
#include "tests/support/extract.h"
#include "tests/support/raster.h"
#include "tests/support/samples.h"

namespace {

using core::SampleImage;
using test::ExtractTest;
using test::ImageForm;
using namespace std::string_literals;

// A file of samples, read back by libtiff.
struct TiffFacts {
  uint32_t width = 0, height = 0;
  uint16_t bits = 0, bands = 1, format = SAMPLEFORMAT_UINT, photometric = 0;
  std::string rows;
};
TiffFacts ReadBack(const SampleImage& image) {
  const test::TempFile out("", ".tif");
  std::FILE* file = std::fopen(out.Path().c_str(), "w+b");
  EXPECT_TRUE(core::WriteTiff(file, image));
  std::fclose(file);
  TiffFacts facts;
  TIFF* tiff = TIFFOpen(out.Path().c_str(), "r");
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &facts.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &facts.height);
  TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &facts.bits);
  TIFFGetField(tiff, TIFFTAG_SAMPLESPERPIXEL, &facts.bands);
  TIFFGetField(tiff, TIFFTAG_SAMPLEFORMAT, &facts.format);
  TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &facts.photometric);
  std::string row(static_cast<size_t>(TIFFScanlineSize(tiff)), '\0');
  for (uint32_t y = 0; y < facts.height; ++y) {
    EXPECT_EQ(TIFFReadScanline(tiff, row.data(), y, 0), 1);
    facts.rows += row;
  }
  TIFFClose(tiff);
  return facts;
}

TEST_F(ExtractTest, TiffHoldsEveryDepth) {
  struct Row {
    int bits, bands;
    const char *type, *representation;
    uint16_t stored, format, photometric;
  };
  for (const Row& row : {Row{1, 1, "B", "MONO", 1, SAMPLEFORMAT_UINT, PHOTOMETRIC_MINISBLACK},
                         Row{8, 3, "INT", "RGB", 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_RGB},
                         Row{12, 1, "INT", "MONO", 16, SAMPLEFORMAT_UINT, PHOTOMETRIC_MINISBLACK},
                         Row{16, 7, "SI", "MULTI", 16, SAMPLEFORMAT_INT, PHOTOMETRIC_MINISBLACK},
                         Row{32, 1, "R", "MONO", 32, SAMPLEFORMAT_IEEEFP, PHOTOMETRIC_MINISBLACK},
                         Row{64, 1, "C", "MONO", 64, SAMPLEFORMAT_COMPLEXIEEEFP, PHOTOMETRIC_MINISBLACK},
                         Row{8, 3, "INT", "YCbCr601", 8, SAMPLEFORMAT_UINT, PHOTOMETRIC_YCBCR}}) {
    ImageForm form{.width = 11, .height = 3, .bands = row.bands, .bits = row.bits};
    form.representation = row.representation;
    form.pixelType = row.type;
    SampleImage image;
    ASSERT_FALSE(Read(form, test::PackSamples(form, row.bits), image).Met());
    const TiffFacts facts = ReadBack(image);
    EXPECT_EQ(facts.width, 11u);
    EXPECT_EQ(facts.bits, row.stored);
    EXPECT_EQ(facts.bands, row.bands);
    EXPECT_EQ(facts.format, row.format);
    EXPECT_EQ(facts.photometric, row.photometric);
    const std::string samples(image.samples.begin(), image.samples.end());
    if (row.bits != 1) {
      EXPECT_EQ(facts.rows, samples) << row.bits;
    } else {
      for (size_t i = 0; i < samples.size(); ++i)
        EXPECT_EQ(facts.rows[i / 11 * 2 + i % 11 / 8] >> (7 - i % 11 % 8) & 1, samples[i]) << i;
    }
  }
}

TEST_F(ExtractTest, TablesArePalettes) {
  ImageForm form{
      .width = 4, .height = 1, .representation = "RGB/LUT", .bandCodes = {"LU"}, .lookupTables = 3};
  form.lookup =
      "\x0A\x0B\x0C"
      "\x1A\x1B\x1C"
      "\x2A\x2B\x2C";
  SampleImage image;
  ASSERT_FALSE(Read(form, "\0\1\2\1"s, image).Met());
  EXPECT_EQ(ReadBack(image).photometric, PHOTOMETRIC_PALETTE);
  const test::TempFile out("", ".png");
  std::FILE* file = std::fopen(out.Path().c_str(), "w+b");
  ASSERT_EQ(core::WhyNotAs("png", image), "");
  EXPECT_TRUE(core::WritePng(file, image));
  std::fclose(file);
  const test::WholeRaster picture = test::ReadRaster(out.Path());
  EXPECT_EQ(picture.samples, "\0\1\2\1"s);
  EXPECT_EQ(std::string(picture.form.palette.begin(), picture.form.palette.begin() + 9),
            "\x0A\x1A\x2A\x0B\x1B\x2B\x0C\x1C\x2C");
}

TEST_F(ExtractTest, PngAndRawHoldWhatTheyCan) {
  ImageForm form{.width = 3, .height = 2, .bands = 3, .bits = 16, .representation = "RGB", .mode = "P"};
  SampleImage image;
  const std::string data = test::PackSamples(form, 16);
  ASSERT_FALSE(Read(form, data, image).Met());
  const test::TempFile out("", ".png");
  std::FILE* file = std::fopen(out.Path().c_str(), "w+b");
  EXPECT_TRUE(core::WritePng(file, image));
  std::fclose(file);
  const test::WholeRaster picture = test::ReadRaster(out.Path());
  EXPECT_EQ(picture.form.bits, 16u);
  EXPECT_EQ(picture.samples, std::string(image.samples.begin(), image.samples.end()));
  file = std::fopen(out.Path().c_str(), "w+b");
  EXPECT_TRUE(core::WriteRaw(file, image));
  std::fclose(file);
  EXPECT_EQ(out.Contents(), data) << "as pixel-interleaved data stands in the file";
  image.bands = 2;
  EXPECT_NE(core::WhyNotAs("png", image), "");
  image.bands = 1;
  image.kind = core::SampleKind::Real;
  EXPECT_NE(core::WhyNotAs("png", image), "");
}

TEST_F(ExtractTest, SignsAndPartsOfNumbersAreKept) {
  SampleImage image;
  ImageForm form{.width = 2, .height = 1, .bits = 12, .pixelType = "SI"};
  ASSERT_FALSE(Read(form, "\xFF\xF7\xFF", image).Met());
  EXPECT_EQ(At(image, 0, 0, 0), 0xFFFFu) << "-1";
  EXPECT_EQ(At(image, 1, 0, 0), 0x07FFu) << "2047";
  form.bits = 64;
  form.pixelType = "C";
  const std::string numbers = "\x3F\x80\0\0\x40\0\0\0\0\0\0\0\xBF\x80\0\0"s;  // 1 + 2i, -i
  ASSERT_FALSE(Read(form, numbers, image).Met());
  float parts[4];
  std::memcpy(parts, image.samples.data(), sizeof parts);
  EXPECT_EQ(parts[0], 1.0f);
  EXPECT_EQ(parts[1], 2.0f);
  EXPECT_EQ(parts[3], -1.0f);
  EXPECT_EQ(ReadBack(image).rows, std::string(image.samples.begin(), image.samples.end()));
  const test::TempFile out("", ".raw");
  std::FILE* file = std::fopen(out.Path().c_str(), "w+b");
  EXPECT_TRUE(core::WriteRaw(file, image));
  std::fclose(file);
  EXPECT_EQ(out.Contents(), numbers);
  form.bits = 8;
  EXPECT_EQ(Read(form, "ab", image).Code(), -16) << "no complex numbers of 8 bits";
  form.pixelType = "R";
  EXPECT_EQ(Read(form, "ab", image).Code(), -16);
}

TEST_F(ExtractTest, PngShowsColourDifferencesAsColours) {
  ImageForm form{.width = 3, .height = 1, .bands = 3, .mode = "P"};
  form.representation = "YCbCr601";
  SampleImage image;
  ASSERT_FALSE(Read(form, "\x80\x80\x80\x4C\x55\xFF\x1D\xFF\x6B"s, image).Met());
  const test::TempFile out("", ".png");
  std::FILE* file = std::fopen(out.Path().c_str(), "w+b");
  EXPECT_TRUE(core::WritePng(file, image));
  std::fclose(file);
  const test::WholeRaster picture = test::ReadRaster(out.Path());
  const std::vector<int> wanted = {128, 128, 128, 254, 0, 0, 0, 0, 254};
  ASSERT_EQ(picture.samples.size(), wanted.size());
  for (size_t i = 0; i < wanted.size(); ++i)
    EXPECT_NEAR(static_cast<uint8_t>(picture.samples[i]), wanted[i], 1) << i;
}

}  // namespace
