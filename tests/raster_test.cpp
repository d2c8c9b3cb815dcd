// Picture files read piece by piece, against what was put into them.
#include <cstring>

#include <png.h>
#include <tiffio.h>

#include "tests/support/raster.h"
#include "tests/support/support.h"

namespace {

using core::SampleKind;
using test::ReadRaster;
using test::TempFile;
using test::WholeRaster;
using namespace std::string_literals;

std::string Why(const std::string& bytes, std::optional<uint32_t> page = {}) {
  const TempFile file(bytes, ".tif");
  try {
    (void)ReadRaster(file.Path(), page);
  } catch (const core::PictureError& error) {
    return error.what();
  }
  return "";
}

// The value of a sample, by a rule that every reader of it knows.
uint64_t ValueOf(uint32_t x, uint32_t y, uint32_t band, uint32_t bits) {
  const uint64_t value = (x * 7919u + y * 104729u + band * 1299709u + 17u) * 2654435761u;
  return bits == 64 ? value : value & ((uint64_t{1} << bits) - 1);
}

struct TiffPlan {
  uint16_t bits = 8, bands = 1, format = SAMPLEFORMAT_UINT, planar = PLANARCONFIG_CONTIG;
  bool tiled = false;
  const char* mode = "w";
  uint16_t photometric = PHOTOMETRIC_MINISBLACK;
  int pages = 1;
  uint16_t compression = COMPRESSION_NONE;
};
constexpr uint32_t kWidth = 37, kHeight = 21, kTile = 16;

// Rows of samples as TIFF packs them: the high bit first, bytes in host order.
std::string PackRow(const TiffPlan& plan, uint32_t left, uint32_t y, uint32_t columns, uint32_t plane) {
  const bool separate = plan.planar == PLANARCONFIG_SEPARATE;
  std::string row;
  uint64_t held = 0;
  uint32_t count = 0;
  for (uint32_t x = left; x < left + columns; ++x) {
    for (uint32_t band = separate ? plane : 0; band < (separate ? plane + 1 : plan.bands); ++band) {
      const uint64_t value = ValueOf(x, y, band, plan.bits);
      if (plan.bits % 8 == 0 && plan.bits != 24) {
        row.append(reinterpret_cast<const char*>(&value), plan.bits / 8);
        continue;
      }
      for (uint32_t bit = plan.bits; bit-- > 0;) {
        held = held << 1 | (value >> bit & 1);
        if (++count % 8 == 0) row += static_cast<char>(held);
      }
    }
  }
  if (count % 8 != 0) row += static_cast<char>(held << (8 - count % 8));
  return row;
}

std::string MakeTiff(const TiffPlan& plan) {
  const TempFile file("", ".tif");
  TIFF* tiff = TIFFOpen(file.Path().c_str(), plan.mode);
  for (int page = 0; page < plan.pages; ++page) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kHeight);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, plan.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, plan.bands);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, plan.format);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, plan.planar);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, plan.photometric);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, plan.compression);
    const uint16_t planes = plan.planar == PLANARCONFIG_SEPARATE ? plan.bands : 1;
    if (plan.tiled) {
      TIFFSetField(tiff, TIFFTAG_TILEWIDTH, kTile);
      TIFFSetField(tiff, TIFFTAG_TILELENGTH, kTile);
      for (uint16_t plane = 0; plane < planes; ++plane) {
        for (uint32_t top = 0; top < kHeight; top += kTile) {
          for (uint32_t left = 0; left < kWidth; left += kTile) {
            std::string tile;
            for (uint32_t y = top; y < top + kTile; ++y) tile += PackRow(plan, left, y, kTile, plane);
            TIFFWriteTile(tiff, tile.data(), left, top, 0, plane);
          }
        }
      }
    } else {
      TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 5);
      for (uint16_t plane = 0; plane < planes; ++plane) {
        for (uint32_t y = 0; y < kHeight; ++y) {
          std::string row = PackRow(plan, 0, y, kWidth, plane);
          TIFFWriteScanline(tiff, row.data(), y, plane);
        }
      }
    }
    TIFFWriteDirectory(tiff);
  }
  TIFFClose(tiff);
  return file.Contents();
}

// Every sample of a file of a plan is read as it was made.
void ExpectSamples(const TiffPlan& plan) {
  SCOPED_TRACE(std::to_string(plan.bits) + " bits, format " + std::to_string(plan.format) + ", tiled " +
               std::to_string(plan.tiled) + plan.mode + std::to_string(plan.planar));
  const TempFile file(MakeTiff(plan), ".tif");
  const WholeRaster picture = ReadRaster(file.Path());
  ASSERT_EQ(picture.form.bands, plan.bands);
  ASSERT_EQ(picture.form.bits, plan.bits);
  const size_t bytes = picture.form.sampleBytes;
  size_t at = 0;
  for (uint32_t y = 0; y < kHeight; ++y) {
    for (uint32_t x = 0; x < kWidth; ++x) {
      for (uint32_t band = 0; band < plan.bands; ++band, at += bytes) {
        uint64_t value = 0, wanted = ValueOf(x, y, band, plan.bits);
        std::memcpy(&value, &picture.samples[at], bytes);
        if (plan.format == SAMPLEFORMAT_INT && (wanted >> (plan.bits - 1) & 1) != 0)
          wanted |= ~uint64_t{0} << plan.bits;
        if (bytes < 8) wanted &= (uint64_t{1} << (8 * bytes)) - 1;
        ASSERT_EQ(value, wanted) << x << ' ' << y << ' ' << band;
      }
    }
  }
}

TEST(RasterTest, TiffsOfEveryForm) {
  using Kind = std::pair<uint16_t, uint16_t>;
  constexpr Kind kKinds[] = {
      {1, SAMPLEFORMAT_UINT},    {4, SAMPLEFORMAT_UINT},          {8, SAMPLEFORMAT_INT},
      {11, SAMPLEFORMAT_UINT},   {12, SAMPLEFORMAT_INT},          {16, SAMPLEFORMAT_UINT},
      {24, SAMPLEFORMAT_UINT},   {32, SAMPLEFORMAT_INT},          {32, SAMPLEFORMAT_IEEEFP},
      {64, SAMPLEFORMAT_IEEEFP}, {64, SAMPLEFORMAT_COMPLEXIEEEFP}};
  for (const bool tiled : {false, true}) {
    for (const uint16_t planar : {PLANARCONFIG_CONTIG, PLANARCONFIG_SEPARATE}) {
      for (const char* mode : {"wl", "wb", "wl8"}) {
        for (const auto& [bits, format] : kKinds) {
          // The library turns complex numbers as if they were one number, and does not turn 24 bits:
          // written so, both would be other ones.
          const bool isTurned = mode[1] == 'b';
          if (format == SAMPLEFORMAT_COMPLEXIEEEFP && isTurned) continue;
          if (bits == 24 && !isTurned) continue;
          ExpectSamples({bits, 5, format, planar, tiled, mode});
        }
      }
    }
  }
}

TEST(RasterTest, TiffsOfSeveralKinds) {
  const TempFile inverse(
      MakeTiff({8, 1, SAMPLEFORMAT_UINT, PLANARCONFIG_CONTIG, false, "w", PHOTOMETRIC_MINISWHITE}),
      ".tif");
  EXPECT_EQ(static_cast<uint8_t>(ReadRaster(inverse.Path()).samples[0]), 255 - ValueOf(0, 0, 0, 8));
  TiffPlan plan;
  plan.pages = 3;
  EXPECT_NE(Why(MakeTiff(plan)).find("it has 3 pages; --page N"), std::string::npos);
  EXPECT_EQ(Why(MakeTiff(plan), 2), "");
  EXPECT_NE(Why(MakeTiff(plan), 3), "");
  plan.pages = 1;
  plan.format = SAMPLEFORMAT_COMPLEXINT;
  plan.bits = 32;
  EXPECT_NE(Why(MakeTiff(plan)).find("complex"), std::string::npos);
  plan.format = SAMPLEFORMAT_IEEEFP;
  plan.bits = 16;
  EXPECT_NE(Why(MakeTiff(plan)).find("32 or 64"), std::string::npos);
  plan = {};
  plan.compression = COMPRESSION_ADOBE_DEFLATE;
  const std::string packed = MakeTiff(plan);
  EXPECT_EQ(Why(packed), "");
  EXPECT_NE(Why(packed.substr(0, packed.size() / 2)), "") << "cut off";
  EXPECT_NE(Why("II*\0"s), "");
}

// A PNG file of a row of pixels each of whose samples is given.
std::string MakePng(int colour, int bits, uint32_t width, uint32_t height, const std::string& rows,
                    bool interlaced = false, const std::string& alpha = "") {
  const TempFile file("", ".png");
  std::FILE* out = std::fopen(file.Path().c_str(), "wb");
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, out);
  png_set_IHDR(png, info, width, height, bits, colour,
               interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  const png_color palette[] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
  if (colour == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, 4);
  if (!alpha.empty())
    png_set_tRNS(png, info, reinterpret_cast<png_const_bytep>(alpha.data()),
                 static_cast<int>(alpha.size()), nullptr);
  const size_t stride = rows.size() / height;
  std::vector<png_bytep> pointers;
  for (uint32_t y = 0; y < height; ++y)
    pointers.push_back(reinterpret_cast<png_bytep>(const_cast<char*>(&rows[y * stride])));
  png_set_rows(png, info, pointers.data());
  png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
  png_destroy_write_struct(&png, &info);
  std::fclose(out);
  return file.Contents();
}

TEST(RasterTest, PngsKeepTheirDepth) {
  const TempFile bits(MakePng(PNG_COLOR_TYPE_GRAY, 1, 10, 1, "\xA5\x40"), ".png");
  EXPECT_EQ(ReadRaster(bits.Path()).samples, "\1\0\1\0\0\1\0\1\0\1"s);
  EXPECT_EQ(ReadRaster(bits.Path()).form.bits, 1u);
  const TempFile deep(MakePng(PNG_COLOR_TYPE_GRAY, 16, 2, 1, "\x12\x34\xAB\xCD"), ".png");
  EXPECT_EQ(ReadRaster(deep.Path()).samples, "\x34\x12\xCD\xAB");
  const TempFile coloured(MakePng(PNG_COLOR_TYPE_PALETTE, 2, 4, 1, "\x1B", false, "\x00"s), ".png");
  const WholeRaster palette = ReadRaster(coloured.Path());
  EXPECT_EQ(palette.samples, "\0\1\2\3"s);
  EXPECT_EQ(palette.form.palette[10], 11);
  EXPECT_EQ(palette.form.paletteAlpha.size(), 1u);
  std::string samples;
  for (int i = 0; i < 9 * 7 * 4; ++i) samples += static_cast<char>(i * 37);
  const TempFile alpha(MakePng(PNG_COLOR_TYPE_RGB_ALPHA, 8, 9, 7, samples, true), ".png");
  EXPECT_EQ(ReadRaster(alpha.Path()).samples, samples) << "interlaced";
  EXPECT_TRUE(ReadRaster(alpha.Path()).form.hasAlpha);
  EXPECT_NE(Why(alpha.Contents().substr(0, 120)), "");
}

TEST(RasterTest, PlainFilesOfEveryKind) {
  const auto samples = [](const std::string& bytes) {
    const TempFile file(bytes, ".pnm");
    return ReadRaster(file.Path());
  };
  EXPECT_EQ(samples("P4\n10 1\n\xA5\x40").samples, "\0\1\0\1\1\0\1\0\1\0"s) << "1 is black";
  EXPECT_EQ(samples("P1 3 1\n101").samples, "\0\1\0"s);
  EXPECT_EQ(samples("P2\n# a comment\n2 1 255 7 200").samples, "\x07\xC8");
  EXPECT_EQ(samples("P5 2 1 1023\n\x03\xFF\x01\x02").samples, "\xFF\x03\x02\x01");
  EXPECT_EQ(samples("P5 2 1 1023\n\x03\xFF\x01\x02").form.bits, 10u);
  EXPECT_EQ(samples("P5 2 1 100\n\x64\x32").samples, "\xFF\x7F") << "scaled to all of its bits";
  EXPECT_EQ(samples("P6 1 1 255\nabc").form.bands, 3u);
  const WholeRaster pam =
      samples("P7\nWIDTH 1\nHEIGHT 2\nDEPTH 2\nMAXVAL 255\nTUPLTYPE GRAYSCALE_ALPHA\nENDHDR\nabcd");
  EXPECT_EQ(pam.samples, "abcd");
  EXPECT_TRUE(pam.form.hasAlpha);
  for (const char* bad :
       {"P5 2 2 255\nabc", "P5 2 2 0\nabcd", "P5 2 2 70000\nabcd", "P7\nWIDTH 1\n", "P9 1 1 255\na", ""})
    EXPECT_NE(Why(bad), "") << bad;
}

std::string Npy(const std::string& type, const std::string& shape, const std::string& data,
                const char* order = "False") {
  std::string header =
      "{'descr': '" + type + "', 'fortran_order': " + order + ", 'shape': " + shape + ", }";
  header.resize(118, ' ');
  return "\x93NUMPY\x01\x00\x76\x00"s + header + data;
}

TEST(RasterTest, ArraysOfEveryType) {
  const TempFile planes(Npy("<i2", "(2, 1, 2)", "\1\0\2\0\3\0\xFF\xFF"s), ".npy");
  const WholeRaster array = ReadRaster(planes.Path());
  EXPECT_EQ(array.form.kind, SampleKind::Signed);
  EXPECT_EQ(array.samples, "\1\0\3\0\2\0\xFF\xFF"s);
  const TempFile big(Npy(">f4", "(1, 1)", "\x3F\x80\0\0"s), ".npy");
  EXPECT_EQ(ReadRaster(big.Path()).samples, "\0\0\x80\x3F"s);
  EXPECT_NE(Why(Npy("<i2", "(1, 1)", "\1\0"s, "True")).find("fortran"), std::string::npos);
  EXPECT_NE(Why(Npy("<c16", "(1, 1)", std::string(16, 'x'))).find("not taken"), std::string::npos);
  EXPECT_NE(Why(Npy("<i2", "(3,)", "abcdef")), "");
  EXPECT_NE(Why(Npy("<i2", "(0, 1)", "")), "");
  EXPECT_NE(Why(Npy("<i2", "(2, 9)", "ab")), "");
}

}  // namespace
