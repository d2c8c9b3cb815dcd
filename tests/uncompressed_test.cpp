// Uncompressed image data: every mode, with and without masks.
#include "tests/support/support.h"

namespace {

using test::ImageForm;
using test::MaskForm;
using test::NitfBuilder;
using test::Rgb;

constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr int kWidth = 4, kHeight = 3;  // of a block

// The sample of band b at pixel (x, y) of an image.
int Sample(int x, int y, int band) { return (40 * band + 7 * y + x + 1) & 255; }

// Data of one block in a mode with blocks of their own.
std::string BlockData(const std::string& mode, int bands, int left, int top) {
  std::string data(static_cast<size_t>(kWidth * kHeight * bands), 0);
  for (int b = 0; b < bands; ++b) {
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        const int at = mode == "P"   ? (y * kWidth + x) * bands + b
                       : mode == "R" ? (y * bands + b) * kWidth + x
                                     : (b * kHeight + y) * kWidth + x;
        data[static_cast<size_t>(at)] = static_cast<char>(Sample(left + x, top + y, b));
      }
    }
  }
  return data;
}

struct Layout {
  std::string mode;
  int bands;
  bool masked;  // block 1 of 2 x 2 is left out
};
std::ostream& operator<<(std::ostream& out, const Layout& layout) {
  return out << layout.mode << layout.bands << (layout.masked ? "masked" : "");
}

// The data of 2 x 2 blocks; `offsets` receives where each block begins.
std::string ImageData(const Layout& layout, std::vector<uint32_t>& offsets) {
  std::string data;
  const int passes = layout.mode == "S" ? layout.bands : 1;
  for (int pass = 0; pass < passes; ++pass) {
    for (int n = 0; n < 4; ++n) {
      const bool absent = layout.masked && n == 1;
      // A band-sequential plane has room for every block between the first stored one and the last.
      if (pass == 0) offsets.push_back(absent ? kNone : static_cast<uint32_t>(data.size()));
      if (absent && layout.mode != "S") continue;
      std::string block = BlockData(layout.mode, layout.bands, n % 2 * kWidth, n / 2 * kHeight);
      if (layout.mode == "S")
        block = block.substr(static_cast<size_t>(pass * kWidth * kHeight), kWidth * kHeight);
      data += block;
    }
  }
  return data;
}

class ImageModes : public test::ModuleTest, public testing::WithParamInterface<Layout> {};

ImageForm FormOf(const Layout& layout) {
  ImageForm form{.width = kWidth,
                 .height = kHeight,
                 .blocksAcross = 2,
                 .blocksDown = 2,
                 .bands = layout.bands,
                 .compression = layout.masked ? "NM" : "NC",
                 .representation = layout.bands == 3   ? "RGB"
                                   : layout.bands == 1 ? "MONO"
                                                       : "MULTI",
                 .mode = layout.mode};
  if (layout.bands == 5) form.bandCodes = {"", "G", "R", "", "B"};
  return form;
}

TEST_P(ImageModes, ShowTheSelectedBands) {
  const Layout& layout = GetParam();
  std::vector<uint32_t> offsets;
  std::string data = ImageData(layout, offsets);
  offsets.resize(4 * static_cast<size_t>(layout.bands), kNone);
  if (layout.masked) data = test::MaskBytes({.blocks = offsets}) + data;
  const auto picture = test::RenderBytes(NitfBuilder().Image(FormOf(layout), data).Bytes());
  ASSERT_EQ(picture.status, 1);
  const std::array<int, 3> shown = layout.bands == 5   ? std::array{2, 1, 4}
                                   : layout.bands == 1 ? std::array{0, 0, 0}
                                                       : std::array{0, 1, 2};
  const bool skipsMasked = layout.masked && layout.mode != "R";
  for (int y = 0; y < 2 * kHeight; ++y) {
    for (int x = 0; x < 2 * kWidth; ++x) {
      // The last row of a pixel-interleaved block shows the row above it.
      const bool repeats = layout.mode == "P" && layout.bands > 2 && y % kHeight == kHeight - 1;
      const int from = repeats ? y - 1 : y;
      Rgb expected;
      if (!(skipsMasked && x >= kWidth && y < kHeight)) {
        expected = {static_cast<uint8_t>(Sample(x, from, shown[0])),
                    static_cast<uint8_t>(Sample(x, from, shown[1])),
                    static_cast<uint8_t>(Sample(x, from, shown[2]))};
      }
      EXPECT_EQ(picture.At(static_cast<uint32_t>(x), static_cast<uint32_t>(y)), expected)
          << x << ',' << y;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, ImageModes,
                         testing::Values(Layout{"B", 1, false}, Layout{"B", 1, true},
                                         Layout{"B", 3, false}, Layout{"B", 3, true},
                                         Layout{"B", 5, false}, Layout{"B", 5, true},
                                         Layout{"P", 3, false}, Layout{"P", 3, true},
                                         Layout{"P", 5, false}, Layout{"R", 3, false},
                                         Layout{"R", 5, false}, Layout{"S", 3, false},
                                         Layout{"S", 3, true}, Layout{"S", 5, false}));

using UncompressedTest = test::ModuleTest;

TEST_F(UncompressedTest, RowInterleavedBlocksLieWhereTheirRecordsPoint) {
  ImageForm form{.width = 2,
                 .height = 2,
                 .blocksAcross = 2,
                 .bands = 3,
                 .compression = "NM",
                 .representation = "RGB",
                 .mode = "R"};
  const std::string data = test::MaskBytes({.blocks = {kNone, 12, kNone, kNone, kNone, kNone}});
  const auto picture = test::RenderBytes(
      NitfBuilder().Image(form, data + std::string(12, '\x11') + std::string(12, '\x22')).Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.At(0, 0), Rgb{}) << "not stored";
  EXPECT_EQ(picture.At(2, 0), test::Grey(0x22));
}

TEST_F(UncompressedTest, PadRecordsGiveOffsetsWhenThereAreNoBlockRecords) {
  ImageForm form{.width = 2,
                 .height = 2,
                 .blocksAcross = 2,
                 .bands = 3,
                 .compression = "NM",
                 .representation = "RGB"};
  MaskForm mask;
  mask.pads = {12, kNone, kNone, kNone, kNone, kNone};
  const auto picture = test::RenderBytes(
      NitfBuilder()
          .Image(form, test::MaskBytes(mask) + std::string(12, '\x11') + std::string(12, '\x22'))
          .Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.At(0, 0), test::Grey(0x22)) << "block 0 from its record";
  EXPECT_EQ(picture.At(2, 0), test::Grey(0x22)) << "block 1 from its number";
}

TEST_F(UncompressedTest, BiLevelBlocksRunAcrossRowsAndAreFoundOneBehindTheOther) {
  ImageForm form{.width = 10, .height = 2, .blocksAcross = 2, .bits = 1, .pixelType = "B"};
  // Row 0 of block 0 has its first pixel set, row 1 its last; block 1 is the reverse. Three bytes each.
  const std::string data("\x80\x00\x10\x00\x60\x00", 6);
  const auto picture = test::RenderBytes(NitfBuilder().Image(form, data).Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.At(0, 0), test::kWhite);
  EXPECT_EQ(picture.At(9, 1), test::kWhite);
  EXPECT_EQ(picture.At(1, 0), test::Grey(0));
  EXPECT_EQ(picture.At(19, 0), test::kWhite);
  EXPECT_EQ(picture.At(10, 1), test::kWhite);
  EXPECT_EQ(picture.At(18, 0), test::Grey(0));
  EXPECT_EQ(test::RenderBytes(NitfBuilder().Image(form, data.substr(0, 5)).Bytes()).status,
            ORB_BAD_STRUCTURE);
}

TEST_F(UncompressedTest, BiLevelBlocksFollowTheirRecords) {
  ImageForm form{
      .width = 8, .height = 1, .blocksAcross = 3, .bits = 1, .compression = "NM", .pixelType = "B"};
  const auto row = [&](const MaskForm& mask, const std::string& bytes) {
    const auto picture =
        test::RenderBytes(NitfBuilder().Image(form, test::MaskBytes(mask) + bytes).Bytes());
    EXPECT_EQ(picture.status, 1);
    std::string bits;
    for (uint32_t x = 0; x < 24; x += 8) bits += picture.At(x, 0) == test::kWhite ? '1' : '0';
    return bits;
  };
  EXPECT_EQ(row({.blocks = {1, kNone, 0}}, "\x80\xFF"), "101");
  EXPECT_EQ(row({.blocks = {1, kNone, 0}}, std::string("\x80\x00", 2)), "001");
  EXPECT_EQ(row({.blocks = {1, 5000, 0}}, "\x80\xFF"), "101") << "a record beyond the data is not stored";
  EXPECT_EQ(row({.pads = {1, kNone, 0}}, std::string("\x80\x00\x80", 3)), "011");
}

TEST_F(UncompressedTest, LookupTablesColourTheImage) {
  ImageForm form{.width = 3,
                 .height = 1,
                 .representation = "RGB/LUT",
                 .lookup = "\x0A\x0B\x0C\x1A\x1B\x1C\x2A\x2B\x2C",
                 .lookupTables = 3};
  const auto picture =
      test::RenderBytes(NitfBuilder().Image(form, std::string("\x02\x00\x01", 3)).Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.At(0, 0), (Rgb{0x0C, 0x1C, 0x2C}));
  EXPECT_EQ(picture.At(1, 0), (Rgb{0x0A, 0x1A, 0x2A}));
  EXPECT_EQ(picture.At(2, 0), (Rgb{0x0B, 0x1B, 0x2B}));
}

TEST_F(UncompressedTest, PadPixelsShowWhatLiesBeneath) {
  ImageForm form{.width = 2, .height = 1, .compression = "NM"};
  NitfBuilder file;
  file.header.SetRaw("FBKGC", "\x01\x02\x03");
  file.Image(form, test::MaskBytes({.padCode = 9}) + "\x09\x08");
  const auto picture = test::RenderBytes(file.Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.At(0, 0), (Rgb{1, 2, 3}));
  EXPECT_EQ(picture.At(1, 0), test::Grey(8));
}

TEST_F(UncompressedTest, DeepSamplesAreShownThroughTheirHighBits) {
  const auto first = [](int nbpp, int abpp, const std::string& data, int blocks = 1) {
    ImageForm form{.width = 4, .height = 1, .blocksAcross = blocks, .bits = nbpp};
    test::Record record = test::ImageRecord(form);
    record.Set("ABPP", abpp);
    const auto picture = test::RenderBytes(NitfBuilder().Image(record, data).Bytes());
    EXPECT_EQ(picture.status, 1);
    return int{picture.At(0, 0).green};
  };
  const std::string words("\x0A\xBC\x00\x00\x00\x00\x00\x00", 8);
  EXPECT_EQ(first(16, 12, words), 0xAB);
  EXPECT_EQ(first(16, 16, words), 0x0A);
  EXPECT_EQ(first(16, 12, words + words, 2), 0xAB);
  EXPECT_EQ(first(12, 12, std::string("\xAB\xC0\x00\x00\x00\x00", 6) + std::string(6, 0), 2), 0xAB);
  const std::string longs =
      test::Big(1255, 4) + test::Big(1000, 4) + test::Big(1128, 4) + test::Big(1000, 4);
  EXPECT_EQ(first(32, 31, longs), 255);
  EXPECT_EQ(first(32, 31, test::Big(0x7FFFFFFF, 4) + std::string(28, 0), 2), 255);
  EXPECT_EQ(first(32, 32, test::Big(0xFFFFFFFF, 4) + std::string(28, 0), 2), 255);
  // Blocks lie as far apart as their samples take.
  for (const int bits : {32, 64}) {
    ImageForm form{.width = 4, .height = 1, .blocksAcross = 2, .bits = bits};
    const auto row = static_cast<size_t>(bits / 2);
    const std::string second(row, '\x7F');
    const auto picture =
        test::RenderBytes(NitfBuilder().Image(form, std::string(row, '\0') + second).Bytes());
    ASSERT_EQ(picture.status, 1);
    EXPECT_EQ(picture.At(3, 0), test::Grey(0)) << bits;
    EXPECT_NE(picture.At(4, 0), test::Grey(0)) << bits;
  }
}

TEST_F(UncompressedTest, BlocksOfMoreRowsThanAreReadAtOnceAreWhole) {
  // Strips of 256 KiB: the last one of a block has fewer rows.
  for (const int bands : {1, 3}) {
    ImageForm form{.width = 1024, .height = 300, .blocksDown = 2, .bands = bands};
    if (bands == 3) form.representation = "RGB";
    std::string data;
    for (int block = 0; block < 2; ++block) {
      for (int band = 0; band < bands; ++band) {
        for (int y = 0; y < 300; ++y)
          data.append(1024, static_cast<char>(Sample(0, 300 * block + y, band)));
      }
    }
    const auto picture = test::RenderBytes(NitfBuilder().Image(form, data).Bytes());
    ASSERT_EQ(picture.status, 1);
    for (int y = 0; y < 600; ++y) {
      const auto sample = [&](int band) {
        return static_cast<uint8_t>(Sample(0, y, bands == 1 ? 0 : band));
      };
      const Rgb expected = {sample(0), sample(1), sample(2)};
      ASSERT_EQ(picture.At(1023, static_cast<uint32_t>(y)), expected) << bands << ": " << y;
    }
  }
}

// How many of the allocations of drawing an image can fail without its failing.
int SpareAllocations(const ImageForm& form) {
  const test::TempFile file(NitfBuilder().Image(form, std::string(256, '\x01')).Bytes());
  int spare = 0;
  for (uint64_t n = 1;; ++n) {
    HostkitArmFault(kFaultAllocation, n);
    const int32_t status = test::Render(file).status;
    const bool met = HostkitFaultCalls(kFaultAllocation) >= n;
    HostkitArmFault(kFaultAllocation, 0);
    if (!met) return spare;
    spare += status == 1;
  }
}

TEST_F(UncompressedTest, AnImageIsReadAlsoWhereNoMemoryIsLeftForItsRange) {
  EXPECT_EQ(SpareAllocations({.bits = 32, .significantBits = 20}), SpareAllocations({.bits = 32}) + 1);
}

TEST_F(UncompressedTest, TwoBandImagesAreReadByTheOneBandReader) {
  ImageForm form{.width = 4, .height = 2, .bands = 2, .representation = "MULTI"};
  EXPECT_EQ(test::RenderBytes(NitfBuilder().Image(form, std::string(16, 'x')).Bytes()).status, 1);
}

TEST_F(UncompressedTest, ShortDataIsAShortRead) {
  for (const char* mode : {"B", "P", "R", "S"}) {
    ImageForm form{.bands = 3, .representation = "RGB", .mode = mode};
    EXPECT_EQ(test::RenderBytes(NitfBuilder().Image(form, std::string(150, 'x')).Bytes()).status,
              ORB_SHORT_READ)
        << mode;
  }
}

// A plane reaches from the first stored block to the last, whatever lies between.
TEST_F(UncompressedTest, BlocksOfLessThanAByteAPixelShareTheirPlace) {
  // Bitmaps of three and six bits have no whole byte from one block to the next.
  for (const int bits : {1, 2}) {
    ImageForm form{.width = kWidth,
                   .height = kHeight,
                   .blocksAcross = 4,
                   .blocksDown = 4,
                   .bands = 3,
                   .bits = bits,
                   .representation = "RGB"};
    const std::string data(3 * kWidth * kHeight, '\x01');
    EXPECT_EQ(test::RenderBytes(NitfBuilder().Image(form, data).Bytes()).status, 1) << bits;
    EXPECT_EQ(test::RenderBytes(NitfBuilder().Image(form, data.substr(0, kWidth)).Bytes()).status,
              ORB_SHORT_READ);
  }
}

TEST_F(UncompressedTest, PlanesOfMaskedImagesEndWithTheLastStoredBlock) {
  constexpr uint32_t kBlock = kWidth * kHeight;
  ImageForm form{.width = kWidth,
                 .height = kHeight,
                 .blocksAcross = 2,
                 .blocksDown = 2,
                 .bands = 3,
                 .compression = "NM",
                 .representation = "RGB",
                 .mode = "S",
                 .bandCodes = {"R", "G", "B"}};
  std::string data;
  for (const char band : {'r', 'g', 'b'})
    data += std::string(kBlock, band) + std::string(kBlock, static_cast<char>(band + 1));
  // The upper two blocks, and the right two.
  for (std::vector<uint32_t> records :
       {std::vector{0u, kBlock, kNone, kNone}, {kNone, 0u, kNone, kBlock}}) {
    const bool upper = records[0] == 0;
    records.resize(12, kNone);
    const auto picture = test::RenderImage(form, test::MaskBytes({.blocks = records}) + data);
    ASSERT_EQ(picture.status, 1);
    EXPECT_EQ(picture.At(upper ? 0 : kWidth, 0), (Rgb{'r', 'g', 'b'}));
    EXPECT_EQ(picture.At(kWidth, upper ? 0 : kHeight), (Rgb{'s', 'h', 'c'}));
  }
}

TEST_F(UncompressedTest, PadPixelsOfPalettesAndColourAreLeftOut) {
  ImageForm form{.width = 4, .height = 1, .compression = "NM", .representation = "RGB/LUT"};
  // Entries 0 and 2 have one colour: the pad code names it, and both are left out.
  form.lookup = std::string("\x50\x60\x50\x51\x61\x51\x52\x62\x52", 9);
  form.lookupTables = 3;
  NitfBuilder indexed;
  indexed.header.SetRaw("FBKGC", "\x01\x02\x03");
  const auto palette = test::RenderBytes(
      indexed.Image(form, test::MaskBytes({.padCode = 2}) + std::string("\0\1\2\1", 4)).Bytes());
  ASSERT_EQ(palette.status, 1);
  EXPECT_EQ(palette.At(0, 0), (Rgb{1, 2, 3}));
  EXPECT_EQ(palette.At(1, 0), (Rgb{0x60, 0x61, 0x62}));
  EXPECT_EQ(palette.At(2, 0), (Rgb{1, 2, 3}));
  // Without a palette black is left out, whatever the code.
  form = {};
  form.width = 2;
  form.height = 1;
  form.bands = 3;
  form.mode = "P";
  form.representation = "RGB";
  form.compression = "NM";
  form.blocksAcross = 2;
  form.mode = "B";
  NitfBuilder coloured;
  coloured.header.SetRaw("FBKGC", "\x01\x02\x03");
  const std::string block = std::string("\0\x09\0\x09\0\x09", 6);
  const auto colour =
      test::RenderBytes(coloured.Image(form, test::MaskBytes({.padCode = 9}) + block + block).Bytes());
  ASSERT_EQ(colour.status, 1);
  EXPECT_EQ(colour.At(0, 0), (Rgb{1, 2, 3}));
  EXPECT_EQ(colour.At(1, 0), test::Grey(9));
}

TEST_F(UncompressedTest, RecordsBeyondTheDataAreAbsentBlocks) {
  for (const char* mode : {"B", "P", "R"}) {
    for (const int bands : {1, 3}) {
      ImageForm form{.width = 2,
                     .height = 2,
                     .blocksAcross = 2,
                     .bands = bands,
                     .compression = "NM",
                     .representation = bands == 3 ? "RGB" : "MONO",
                     .mode = mode};
      const std::string block(static_cast<size_t>(4 * bands), 'x');
      std::vector<uint32_t> records = {0, 1000};
      records.resize(static_cast<size_t>(2 * bands), kNone);
      const auto picture = test::RenderBytes(
          NitfBuilder().Image(form, test::MaskBytes({.blocks = records}) + block + block).Bytes());
      ASSERT_EQ(picture.status, 1) << mode << bands;
      EXPECT_EQ(picture.At(0, 0), test::Grey('x')) << mode << bands;
      EXPECT_EQ(picture.At(2, 0), Rgb{}) << mode << bands;
    }
  }
}

}  // namespace
