// Samples of every depth in one block and in several: how long rows are, how samples become pixels, and
// which bytes of masked images they are.
#include <limits>

#include "tests/support/objects.h"

namespace {

using test::Grey;
using test::ImageForm;
using test::MaskForm;
using test::NitfBuilder;
using test::Rgb;
using namespace std::string_literals;

constexpr uint32_t kNone = 0xFFFFFFFF;

// The red of a picture's pixels, row by row.
std::vector<int> Reds(const test::Picture& picture) {
  EXPECT_EQ(picture.status, 1);
  std::vector<int> reds;
  for (const Rgb& pixel : picture.pixels) reds.push_back(pixel.red);
  return reds;
}

using SamplesTest = test::ModuleTest;

// ---------------------------------------------------------------- twelve bits

// Samples packed two in three bytes, each row for itself.
std::string Packed(const std::vector<std::vector<int>>& rows) {
  std::string bytes;
  for (const std::vector<int>& row : rows) {
    uint64_t held = 0;
    int bits = 0;
    for (const int sample : row) {
      held = held << 12 | static_cast<uint64_t>(sample);
      for (bits += 12; bits >= 8; bits -= 8) bytes += static_cast<char>(held >> (bits - 8));
    }
    if (bits != 0) bytes += static_cast<char>(held << (8 - bits));
  }
  return bytes;
}

TEST_F(SamplesTest, TwelveBitSamplesStandTwoInThreeBytes) {
  const std::vector<std::vector<int>> rows = {{0x123, 0x456, 0x789, 0xABC, 0xDEF},
                                              {0xFED, 0x010, 0x321, 0x0FF, 0xCBA}};
  for (const char* representation : {"MONO", "NODISPLY"}) {
    for (const int width : {4, 5}) {
      for (const int blocks : {1, 2}) {
        ImageForm form{.width = width, .height = 2, .blocksAcross = blocks, .bits = 12};
        form.representation = representation;
        auto cut = rows;
        for (auto& row : cut) row.resize(static_cast<size_t>(width));
        std::string data;
        for (int block = 0; block < blocks; ++block) data += Packed(cut);
        const auto picture = test::RenderImage(form, data);
        ASSERT_EQ(picture.status, 1) << representation << width << blocks;
        for (int y = 0; y < 2; ++y) {
          for (int x = 0; x < width * blocks; ++x) {
            const int sample = rows[static_cast<size_t>(y)][static_cast<size_t>(x % width)];
            EXPECT_EQ(picture.At(static_cast<uint32_t>(x), static_cast<uint32_t>(y)), Grey(sample >> 4))
                << representation << width << blocks << ": " << x << ',' << y;
          }
        }
        EXPECT_EQ(test::RenderImage(form, data.substr(0, data.size() - 1)).status, ORB_SHORT_READ)
            << "no byte less will do";
      }
    }
  }
}

// ---------------------------------------------------------------- row lengths of one block

TEST_F(SamplesTest, RowsOfOneBlockHaveTheLengthOfTheirDepth) {
  // How many bytes lie between two rows: each row's first byte names it.
  const struct {
    int bits, width;
    const char* representation;
    size_t length;
  } cases[] = {{1, 10, "MONO", 4},     {2, 40, "MONO", 12},  {4, 10, "MONO", 8},    {7, 3, "MONO", 3},
               {4, 10, "RGB/LUT", 8},  {8, 5, "MONO", 5},    {8, 5, "NODISPLY", 5}, {16, 5, "MONO", 10},
               {16, 5, "NODISPLY", 5}, {16, 2, "NVECTOR", 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.representation) + std::to_string(c.bits));
    ImageForm form{.width = c.width, .height = 3, .bits = c.bits};
    form.representation = c.representation;
    std::string data(3 * c.length, '\0');
    const uint8_t marks[] = {0x40, 0xC0, 0x80};
    for (size_t row = 0; row < 3; ++row) data[row * c.length] = static_cast<char>(marks[row]);
    const auto picture = test::RenderImage(form, data);
    ASSERT_EQ(picture.status, 1);
    for (uint32_t row = 0; row < 3; ++row) {
      const int top = marks[row] >> (8 - std::min(c.bits, 8));
      const int full = (1 << std::min(c.bits, 8)) - 1;
      EXPECT_EQ(picture.At(0, row), Grey(c.bits < 8 ? top * 255 / full : top)) << row;
    }
    EXPECT_EQ(test::RenderImage(form, data.substr(0, data.size() - 1)).status, ORB_SHORT_READ);
  }
}

TEST_F(SamplesTest, RowsOfSeveralBlocksAreWholeBytes) {
  for (const auto& [bits, width, length] : {std::array{1, 10, 2}, {2, 5, 2}, {4, 3, 2}, {7, 3, 3}}) {
    ImageForm form{.width = width, .height = 2, .blocksAcross = 2, .bits = bits};
    std::string data(static_cast<size_t>(4 * length), '\0');
    data[static_cast<size_t>(3 * length)] = '\x80';  // row 1 of block 1
    const auto picture = test::RenderImage(form, data);
    ASSERT_EQ(picture.status, 1) << bits;
    EXPECT_NE(picture.At(static_cast<uint32_t>(width), 1), Grey(0)) << bits;
    EXPECT_EQ(picture.At(static_cast<uint32_t>(width), 0), Grey(0)) << bits;
    EXPECT_EQ(test::RenderImage(form, data.substr(0, data.size() - 1)).status, ORB_SHORT_READ) << bits;
  }
}

// ---------------------------------------------------------------- ranges

std::string Words(const std::vector<uint32_t>& values) {
  std::string bytes;
  for (const uint32_t value : values) bytes += test::Big(value, 4);
  return bytes;
}

TEST_F(SamplesTest, RangesComeFromSignedSamplesOfAllOfTheData) {
  ImageForm form{.width = 3, .height = 1, .bits = 32, .significantBits = 24};
  EXPECT_EQ(Reds(test::RenderImage(form, Words({100, 355, 227}))), (std::vector{0, 255, 127}));
  // A negative low end is one of signed samples; the samples themselves count as unsigned.
  EXPECT_EQ(Reds(test::RenderImage(form, Words({0, 10, 0xFFFFFFFB}))), (std::vector{85, 255, 0}));
  // A masked image's own table counts as samples.
  form.compression = "NM";
  const std::string table = test::MaskBytes({});
  ASSERT_EQ(table.size(), 10u);
  // In words from the table on: 10, 0, 100, 355, 227. Of 255 sample / 355 the lowest byte is shown:
  // 4707515, 16711680 and 10686060.
  EXPECT_EQ(Reds(test::RenderImage(form, table + Words({100 << 16, 355 << 16, 227 << 16}))),
            (std::vector{187, 0, 108}));
}

TEST_F(SamplesTest, RowsOfBitsMayFillTheirWords) {
  for (const int width : {31, 32, 33, 64}) {
    ImageForm form{.width = width, .height = 2, .bits = 1};
    form.pixelType = "B";
    const std::string data(static_cast<size_t>(2 * width + 7) / 8, '\xFF');
    const auto picture = test::RenderImage(form, data);
    ASSERT_EQ(picture.status, 1) << width;
    EXPECT_EQ(picture.At(static_cast<uint32_t>(width) - 1, 1), test::kWhite) << width;
  }
}

TEST_F(SamplesTest, RangesReachBeyondOnePieceOfTheData) {
  // 50000 bytes are one piece; the extremes lie in the second and in the last.
  ImageForm form{.width = 200, .height = 130, .bits = 32, .significantBits = 30};
  std::vector<uint32_t> samples(200 * 130, 200);
  samples[13000] = 100;
  samples[25999] = 355;
  samples[0] = 227;
  const auto reds = Reds(test::RenderImage(form, Words(samples)));
  EXPECT_EQ(reds[0], 127);
  EXPECT_EQ(reds[13000], 0);
  EXPECT_EQ(reds[25999], 255);
  // A range may begin or end with -1, which is no sign that there is none yet.
  for (const bool low : {true, false}) {
    samples.assign(samples.size(), low ? 100 : static_cast<uint32_t>(-100));
    samples[0] = 0xFFFFFFFF;
    samples[1] = low ? 254 : static_cast<uint32_t>(-256);
    EXPECT_EQ(Reds(test::RenderImage(form, Words(samples)))[low ? 13000 : 1], low ? 101 : 0);
  }
}

// ---------------------------------------------------------------- lookup tables

TEST_F(SamplesTest, LookupTablesColourDeepSamples) {
  for (const auto& [bits, significant, blocks] :
       {std::array{12, 12, 1}, {12, 12, 2}, {16, 16, 1}, {16, 16, 2}}) {
    SCOPED_TRACE(bits);
    const int entries = bits == 12 ? 4096 : 1000;
    ImageForm form{.width = 2,
                   .height = 1,
                   .blocksAcross = blocks,
                   .bits = bits,
                   .significantBits = significant,
                   .representation = "MONO"};
    form.lookupTables = 3;
    for (int table = 0; table < 3; ++table) {
      for (int i = 0; i < entries; ++i) form.lookup += static_cast<char>((i >> (4 * table)) & 0xFF);
    }
    std::string data;
    for (int block = 0; block < blocks; ++block)
      data += bits == 12 ? Packed({{0x123, 0x3A7}}) : test::Big(0x123, 2) + test::Big(0x3A7, 2);
    const auto picture = test::RenderImage(form, data);
    ASSERT_EQ(picture.status, 1);
    EXPECT_EQ(picture.At(0, 0), (Rgb{0x23, 0x12, 0x01}));
    EXPECT_EQ(picture.At(static_cast<uint32_t>(2 * blocks - 1), 0), (Rgb{0xA7, 0x3A, 0x03}));
  }
  ImageForm beyond{.width = 2, .height = 1, .bits = 16};
  beyond.lookupTables = 1;
  beyond.lookup = "\x11\x22"s;
  EXPECT_EQ(Reds(test::RenderImage(beyond, test::Big(1, 2) + test::Big(0x8000, 2))),
            (std::vector{0x22, 0x80}))
      << "samples without an entry keep their grey";
}

TEST_F(SamplesTest, TheLastBandWithLookupTablesGivesThePalette) {
  ImageForm form{.width = 2, .height = 1, .bands = 2, .mode = "B"};
  form.lookupTables = 1;
  form.lookup = "\x11\x22"s;
  test::Record record = test::ImageRecord(form);
  record.Set("NLUTS1", 1)
      .InsertAfter("NLUTS1", "NELUT1", "00003")
      .InsertAfter("NELUT1", "LUTD1", "\x31\x32\x33");
  const test::TempFile file(NitfBuilder().Image(record, std::string(12, '\x05')).Bytes());
  const test::Handle handle(file);
  const ImageSubheader& image = *handle->images.At(0);
  ASSERT_EQ(image.palette.size(), 3u);
  EXPECT_EQ(image.palette[2].red, 0x33);
  EXPECT_EQ(image.bands[0].NELUT.value, 2u);
  // What a save writes for every band.
  const std::string saved = test::Saved(handle);
  const size_t at = saved.find("100002");
  EXPECT_EQ(saved.substr(at + 6, 2), "\x31\x32");
  EXPECT_EQ(saved.substr(saved.find("100003") + 6, 3), "\x31\x32\x33");
}

// ---------------------------------------------------------------- masks

TEST_F(SamplesTest, StoredBlocksOfOneBandFollowOneAnother) {
  ImageForm form{.width = 2, .height = 1, .blocksAcross = 3, .blocksDown = 2, .compression = "NM"};
  // The records only say which blocks are stored: the k-th stored one is the k-th in the data.
  const MaskForm mask{.blocks = {4, kNone, 0, kNone, 999, 2}};
  const auto picture = test::RenderImage(form, test::MaskBytes(mask) + "aabbccdd");
  ASSERT_EQ(picture.status, 1);
  std::string row;
  for (uint32_t n = 0; n < 6; ++n) row += static_cast<char>(picture.At(n % 3 * 2, n / 3).red);
  EXPECT_EQ(row, "a\0b\0\0c"s);
}

TEST_F(SamplesTest, MaskedPlanesCoverTheExtentOfTheStoredBlocks) {
  // Three blocks across and two down: the counts run over NBPR outside and NBPC inside.
  ImageForm form{.width = 2,
                 .height = 1,
                 .blocksAcross = 3,
                 .blocksDown = 2,
                 .bands = 3,
                 .compression = "NM",
                 .representation = "RGB",
                 .mode = "S"};
  const auto colours = [&](std::vector<uint32_t> records, size_t plane) {
    records.resize(18, kNone);
    std::string data;
    for (const char band : {'r', 'g', 'b'}) data += std::string(plane, band);
    const auto picture = test::RenderImage(form, test::MaskBytes({.blocks = records}) + data);
    EXPECT_EQ(picture.status, 1);
    for (uint32_t n = 0; n < 6; ++n) {
      const bool stored = records[n] != kNone;
      const Rgb expected = stored ? Rgb{'r', 'g', 'b'} : Rgb{};
      EXPECT_EQ(picture.At(n % 3 * 2 + 1, n / 3), expected) << n;
    }
  };
  const uint32_t length = 2;
  // First stored block 0 (0, 0), last stored block 5 (2, 1): two by three blocks.
  colours({0, kNone, kNone, kNone, kNone, 2}, 6 * length);
  // First 1 (0, 1), last 4 (2, 0): an inner extent of 0 - 1 + 1 = 0 blocks leaves no plane.
  // First 2 (1, 0), last 3 (1, 1): one by two blocks.
  colours({kNone, kNone, 0, 2, kNone, kNone}, 2 * length);
}

TEST_F(SamplesTest, BlocksOfMaskedBandsLieWhereTheirRecordsPoint) {
  for (const char* mode : {"B", "P", "R"}) {
    ImageForm form{.width = 2,
                   .height = 2,
                   .blocksAcross = 2,
                   .bands = 3,
                   .compression = "NM",
                   .representation = "RGB",
                   .mode = mode};
    std::vector<uint32_t> records = {12, 0};
    records.resize(6, kNone);
    const auto picture = test::RenderImage(
        form, test::MaskBytes({.blocks = records}) + std::string(12, 'a') + std::string(12, 'b'));
    ASSERT_EQ(picture.status, 1) << mode;
    EXPECT_EQ(picture.At(0, 0), Grey('b')) << mode;
    EXPECT_EQ(picture.At(2, 0), Grey('a')) << mode;
  }
  // Pad pixel records alone are not for row-interleaved images.
  ImageForm form{.width = 2,
                 .height = 1,
                 .blocksAcross = 2,
                 .bands = 3,
                 .compression = "NM",
                 .representation = "RGB",
                 .mode = "R"};
  std::vector<uint32_t> records = {6, 0};
  records.resize(6, kNone);
  const auto picture = test::RenderImage(form, test::MaskBytes({.pads = records}) + "aaaaaabbbbbb");
  EXPECT_EQ(picture.At(0, 0), Grey('a'));
}

// ---------------------------------------------------------------- bands

TEST_F(SamplesTest, BlockLengthsOfFourBandsDependOnTheRepresentation) {
  // In B and R a block counts all bands only where the image is multispectral, else three.
  for (const char* mode : {"B", "P", "R", "S"}) {
    for (const char* representation : {"MULTI", "NODISPLY"}) {
      ImageForm form{.width = 2,
                     .height = 2,
                     .blocksAcross = 2,
                     .bands = 4,
                     .representation = representation,
                     .mode = mode};
      const bool all = representation == "MULTI"s || mode == "P"s;
      std::string data;
      for (int i = 0; i < 32; ++i) data += static_cast<char>('A' + i);
      const auto picture = test::RenderImage(form, data);
      ASSERT_EQ(picture.status, 1) << mode << representation;
      const int second = mode == "S"s ? 4 : all ? 16 : 12;
      EXPECT_EQ(picture.At(0, 0).red, 'A') << mode << representation;
      EXPECT_EQ(picture.At(2, 0).red, 'A' + second) << mode << representation;
    }
  }
}

TEST_F(SamplesTest, SelectionsStartFromTheirReadersValues) {
  // Only green is named: red and blue keep where the reader starts, 0 in B, bands 0 and 2 elsewhere.
  for (const char* mode : {"B", "P", "R", "S"}) {
    ImageForm form{.width = 1, .height = 2, .bands = 4, .representation = "MULTI", .mode = mode};
    form.bandCodes = {"", "", "", "G"};
    const auto picture = test::RenderImage(form, mode == "P"s || mode == "R"s ? "abcdabcd" : "aabbccdd");
    ASSERT_EQ(picture.status, 1) << mode;
    EXPECT_EQ(picture.At(0, 0), (Rgb{'a', 'd', static_cast<uint8_t>(mode == "B"s ? 'a' : 'c')})) << mode;
  }
}

TEST_F(SamplesTest, ChosenBandsAreRememberedForLaterPictures) {
  ImageForm form{.width = 1, .height = 1, .bands = 3, .representation = "MULTI", .mode = "B"};
  form.bandCodes = {"", "M", ""};
  const test::TempFile file(NitfBuilder().Image(form, "abc").Bytes());
  const test::Handle handle(file);
  KernelBitmap canvas = {};
  for (int i = 0; i < 2; ++i) {
    ASSERT_EQ(Orb_NtfRenderBitmap(&canvas, handle), 1);
    EXPECT_EQ(test::RowOf(canvas, 0)[0], 'b');
    handle->images.At(0)->bands[1].IREPBAND.code = 0;  // without representations the memory decides
  }
  KernelFreeBitmap(&canvas);
}

TEST_F(SamplesTest, PadColumnsArePainted) {
  ImageForm form{.width = 4, .height = 1, .blocksAcross = 2};
  test::Record record = test::ImageRecord(form);
  record.Set("NCOLS", 5).Set("NROWS", 1);
  const auto picture = test::RenderBytes(NitfBuilder().Image(record, "abcdefgh").Bytes());
  ASSERT_EQ(picture.status, 1);
  ASSERT_EQ(picture.width, 8u);
  EXPECT_EQ(picture.At(7, 0), Grey('h'));
}

}  // namespace
