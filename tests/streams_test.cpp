// Streams of compressed images: which bytes belong to which block, and what decoded ones become.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "tests/support/encoders.h"
#include "tests/support/objects.h"

namespace {

using test::BlockForm;
using test::BlockStream;
using test::EncodeJpeg2000;
using test::ImageForm;
using test::kSide;
using test::NitfBuilder;
using test::Rgb;
using test::Sample;

using StreamsTest = test::ModuleTest;

// Whether a picture shows three bands within `tolerance` in the middle of block (column, row).
void ExpectBlock(const test::Picture& picture, int column, int row, std::array<int, 3> bands,
                 int tolerance = 12) {
  const int x = column * kSide + 21, y = row * kSide + 40;
  const Rgb got = picture.At(static_cast<uint32_t>(x), static_cast<uint32_t>(y));
  EXPECT_NEAR(got.red, Sample(x, y, bands[0]), tolerance);
  EXPECT_NEAR(got.green, Sample(x, y, bands[1]), tolerance);
  EXPECT_NEAR(got.blue, Sample(x, y, bands[2]), tolerance);
}

TEST_F(StreamsTest, MaskedColourBlocksHaveOneRecordEach) {
  std::string data;
  std::vector<uint32_t> records;
  for (int block = 0; block < 4; ++block) {
    records.push_back(block == 2 ? 0xFFFFFFFF : static_cast<uint32_t>(data.size()));
    if (block != 2) data += BlockStream(block, 2, {0, 1, 2}, true);
  }
  // The table is read with a record for each band; behind the blocks' own stand the first stream's bytes.
  const auto picture = test::RenderBytes(
      NitfBuilder()
          .Image(BlockForm("M3", 2, 2, 3, "RGB", "P"), test::MaskBytes({.blocks = records}) + data)
          .Bytes());
  ASSERT_EQ(picture.status, 1);
  ExpectBlock(picture, 0, 0, {0, 1, 2});
  ExpectBlock(picture, 1, 0, {0, 1, 2});
  ExpectBlock(picture, 1, 1, {0, 1, 2});
  EXPECT_EQ(picture.At(10, kSide + 10), Rgb{});
}

// ---------------------------------------------------------------- band-sequential streams

TEST_F(StreamsTest, BandsThatAreMissingShowTheLastStream) {
  std::string data;
  for (int band = 0; band < 2; ++band) {
    for (int block = 0; block < 2; ++block) data += BlockStream(block, 2, {band});
  }
  const auto picture = test::RenderBytes(
      NitfBuilder().Image(BlockForm("C3", 2, 1, 3, "RGB", "S"), data + std::string(2000, '\0')).Bytes());
  ASSERT_EQ(picture.status, 1);
  // Streams 4 and 5 are not there: the last one, band 1 of block 1, stands for them.
  const auto at = [](int x, int band) { return Sample(x, 20, band); };
  EXPECT_NEAR(picture.At(30, 20).red, at(30, 0), 12);
  EXPECT_NEAR(picture.At(30, 20).green, at(30, 1), 12);
  EXPECT_NEAR(picture.At(30, 20).blue, at(kSide + 30, 1), 12);
  EXPECT_NEAR(picture.At(kSide + 30, 20).blue, at(kSide + 30, 1), 12);
}

TEST_F(StreamsTest, AMarkerNearTheEndDoesNotMakeTheSearchQuadratic) {
  const std::string stream = BlockStream(0, 1, {0});
  ASSERT_LT(stream.size(), 1021u * 4);
  ImageForm form = BlockForm("C3", 16, 16, 3, "RGB", "S");
  form.width = form.height = 8;
  // One stream, megabytes of nothing, and a last start of an image too near the end for a whole chunk.
  const std::string data = stream + std::string(4 << 20, 'x') + "\xFF\xD8\xFF" + std::string(1018, 'y');
  const test::TempFile file(NitfBuilder().Image(form, data).Bytes());
  HostkitArmFault(kFaultRead, 0);
  (void)test::Render(file);
  EXPECT_LT(HostkitFaultCalls(kFaultRead), 3 * data.size() / 1021 + 20000);
}

TEST_F(StreamsTest, ComponentsOfBandsAreTakenAsTheyAre) {
  // What the decoder of each band's streams is told.
  static std::vector<uint32_t> flags;
  const auto load = [](const void* bytes, KernelBitmap* bitmap, uint32_t recordSize, uint32_t bits,
                       uint32_t order, uint32_t count, const HostLoadOptions* options, HostFileInfo* info)
                        ORB_CALL -> int32_t {
    flags.push_back(options->flags);
    return FileFormatLoadMemory(bytes, bitmap, recordSize, bits, order, count, options, info);
  };
  for (const auto& [representation, mode, expected] :
       std::initializer_list<std::tuple<const char*, const char*, uint32_t>>{{"RGB", "S", 0x4000},
                                                                             {"MULTI", "S", 0x4000},
                                                                             {"YCbCr601", "S", 0},
                                                                             {"RGB", "P", 0x4000},
                                                                             {"MULTI", "P", 0x8000},
                                                                             {"YCbCr601", "P", 0}}) {
    flags.clear();
    std::string data;
    const bool sequential = mode == std::string("S");
    for (int stream = 0; stream < (sequential ? 6 : 2); ++stream)
      data += BlockStream(stream % 2, 2,
                          sequential ? std::vector<int>{stream / 2} : std::vector<int>{0, 1, 2});
    const test::TempFile file(
        NitfBuilder().Image(BlockForm("C3", 2, 1, 3, representation, mode), data).Bytes());
    EXPECT_EQ(test::Render(file, {.loadMemory = load}).status, 1) << representation << mode;
    EXPECT_EQ(flags, std::vector<uint32_t>(sequential ? 6 : 2, expected)) << representation << mode;
  }
}

TEST_F(StreamsTest, LaterMultispectralBlocksHaveTheFirstOnesSegmentInFront) {
  static std::vector<std::string> fronts;
  const auto load = [](const void* bytes, KernelBitmap* bitmap, uint32_t recordSize, uint32_t bits,
                       uint32_t order, uint32_t count, const HostLoadOptions* options, HostFileInfo* info)
                        ORB_CALL -> int32_t {
    fronts.emplace_back(static_cast<const char*>(bytes), 29);
    return FileFormatLoadMemory(bytes, bitmap, recordSize, bits, order, count, options, info);
  };
  using namespace std::string_literals;
  const std::string segment =
      "\xFF\xD8\xFF\xE6\x00\x19NITF\x00\x02\x00\x42\x00\x02\x00\x02\x03\x08\x00\x01\x00\x03\x08\x01\x01"s;
  ASSERT_EQ(segment.size(), 27u);
  ImageForm form = BlockForm("M3", 4, 1, 4, "MULTI", "P");
  std::string data;
  std::vector<uint32_t> records;
  for (int block = 0; block < 4; ++block) {
    // Block 0 is no image and block 2 is not stored: block 1 is the first that is decoded.
    records.push_back(block == 2 ? 0xFFFFFFFF : static_cast<uint32_t>(data.size()));
    if (block == 0) data += "\xFF\xD8\xFF" + std::string(1500, 'x');
    if (block % 2 == 1) data += BlockStream(block, 4, {0, 1, 2, 3});
  }
  fronts.clear();
  const test::TempFile file(
      NitfBuilder().Image(form, test::MaskBytes({.blocks = records}) + data).Bytes());
  const auto picture = test::Render(file, {.loadMemory = load});
  ASSERT_EQ(picture.status, 1);
  ASSERT_EQ(fronts.size(), 2u);
  EXPECT_EQ(fronts[0].substr(0, 3), "\xFF\xD8\xFF"s);
  EXPECT_NE(fronts[0].substr(0, 27), segment);
  EXPECT_EQ(fronts[1], segment + "\xFF\xD8");
  ExpectBlock(picture, 3, 0, {0, 1, 2});
}

// ---------------------------------------------------------------- lookup tables

TEST_F(StreamsTest, LookupTablesColourDecodedStreams) {
  ImageForm form = BlockForm("C8", 1, 1, 1, "RGB/LUT");
  form.bandCodes = {"LU"};
  form.lookupTables = 3;
  for (int i = 0; i < 256; ++i) form.lookup += static_cast<char>(255 - i);
  form.lookup += std::string(256, '\x07');
  for (int i = 0; i < 256; ++i) form.lookup += static_cast<char>(i);
  const auto expect = [](const test::Picture& picture, int tolerance) {
    ASSERT_EQ(picture.status, 1);
    const int sample = Sample(9, 5, 0);
    EXPECT_NEAR(picture.At(9, 5).red, 255 - sample, tolerance);
    EXPECT_EQ(picture.At(9, 5).green, 7);
    EXPECT_NEAR(picture.At(9, 5).blue, sample, tolerance);
  };
  expect(test::RenderBytes(NitfBuilder().Image(form, EncodeJpeg2000(kSide, kSide, {0})).Bytes()), 0);
  form.compression = "C3";
  expect(test::RenderBytes(NitfBuilder().Image(form, BlockStream(0, 1, {0})).Bytes()), 12);
}

// ---------------------------------------------------------------- what streams are

TEST_F(StreamsTest, ThreeUndeclaredComponentsAreLuminanceAndChrominance) {
  for (const int chromaStep : {1, 2}) {
    const std::string stream = EncodeJpeg2000(kSide, kSide, {0, 1, 2}, {.chromaStep = chromaStep});
    const auto shown = [&](const char* representation) {
      const auto picture = test::RenderBytes(
          NitfBuilder().Image(BlockForm("C8", 1, 1, 3, representation), stream).Bytes());
      EXPECT_EQ(picture.status, 1);
      return picture.At(8, 4);
    };
    const double y = Sample(8, 4, 0), cb = Sample(8, 4, 1) - 128.0, cr = Sample(8, 4, 2) - 128.0;
    const auto byte = [](double value) { return std::clamp(value, 0.0, 255.0); };
    const Rgb converted = shown("YCbCr601");
    EXPECT_NEAR(converted.red, byte(y + 1.402 * cr), 1.5) << chromaStep;
    EXPECT_NEAR(converted.green, byte(y - 0.344136 * cb - 0.714136 * cr), 1.5) << chromaStep;
    EXPECT_NEAR(converted.blue, byte(y + 1.772 * cb), 1.5) << chromaStep;
    const Rgb same = {static_cast<uint8_t>(Sample(8, 4, 0)), static_cast<uint8_t>(Sample(8, 4, 1)),
                      static_cast<uint8_t>(Sample(8, 4, 2))};
    EXPECT_EQ(shown("RGB"), same) << "the flag for components as they are";
    EXPECT_EQ(shown("MULTI"), same) << "selected bands are no colours";
  }
  const std::string declared = EncodeJpeg2000(kSide, kSide, {0, 1, 2}, {.jp2 = true});
  const auto picture =
      test::RenderBytes(NitfBuilder().Image(BlockForm("C8", 1, 1, 3, "YCbCr601"), declared).Bytes());
  ASSERT_EQ(picture.status, 1);
  ExpectBlock(picture, 0, 0, {0, 1, 2}, 0);
}

TEST_F(StreamsTest, AFileWithWrongBoxesIsDecodedFromItsCodestream) {
  const std::string good = EncodeJpeg2000(kSide, kSide, {0}, {.jp2 = true});
  const size_t header = good.find("ihdr") + 4, colour = good.find("colr");
  std::string sizes = good, boxes = good, count = good;
  sizes.replace(header, 8, test::Big(7, 4) + test::Big(9, 4));
  count.replace(header + 8, 2, test::Big(3, 2));
  boxes.replace(colour - 4, 4, test::Big(0xFFFF, 4));  // longer than the file
  for (const std::string& stream : {good, sizes, count, boxes}) {
    const auto picture =
        test::RenderBytes(NitfBuilder().Image(BlockForm("C8", 1, 1, 1, "MONO"), stream).Bytes());
    ASSERT_EQ(picture.status, 1);
    ASSERT_EQ(picture.width, static_cast<uint32_t>(kSide));
    ExpectBlock(picture, 0, 0, {0, 0, 0}, 0);
  }
}

TEST_F(StreamsTest, FillBytesMayStandInFrontOfAStream) {
  for (const char* compression : {"C3", "M3"}) {
    const bool masked = compression[0] == 'M';
    std::string data;
    std::vector<uint32_t> records;
    for (int block = 0; block < (masked ? 2 : 1); ++block) {
      records.push_back(static_cast<uint32_t>(data.size()));
      data += "\xFF\xFF\xFF" + BlockStream(block, masked ? 2 : 1, {0});
    }
    const auto picture =
        test::RenderBytes(NitfBuilder()
                              .Image(BlockForm(compression, masked ? 2 : 1, 1, 1, "MONO"),
                                     masked ? test::MaskBytes({.blocks = records}) + data : data)
                              .Bytes());
    ASSERT_EQ(picture.status, 1) << compression;
    ExpectBlock(picture, 0, 0, {0, 0, 0});
    if (masked) ExpectBlock(picture, 1, 0, {0, 0, 0});
  }
}

TEST_F(StreamsTest, StreamsBeyondTwoGigabytesAreRead) {
  if (sizeof(void*) == 4) GTEST_SKIP() << "no such memory";
  const std::string front = NitfBuilder()
                                .Image(BlockForm("C3", 1, 1, 1, "MONO"), BlockStream(0, 1, {0}))
                                .Patch("LI0", "2200000000")
                                .Bytes();
  const test::TempFile file(front);
  std::filesystem::resize_file(file.Path(), front.size() + 2200000000u);  // holes
  const auto picture = test::Render(file);
  ASSERT_EQ(picture.status, 1);
  ExpectBlock(picture, 0, 0, {0, 0, 0});
}

}  // namespace
