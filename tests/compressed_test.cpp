// Compressed image data. The streams are made here with the codecs' own encoders.
#include <random>

#if defined(HAS_WIDE_JPEG)
#include <dcmtk/config/osconfig.h>

#include <dcmtk/dcmjpeg/djcparam.h>
#include <dcmtk/dcmjpeg/djeijg12.h>
#include <dcmtk/dcmjpeg/djeijg8.h>
#endif

#include "tests/support/encoders.h"
#include "tests/support/objects.h"
#include "tests/support/vq.h"

namespace {

using test::BlockForm;
using test::BlockStream;
using test::EncodeFacsimile;
using test::EncodeJpeg;
using test::EncodeJpeg2000;
using test::ImageForm;
using test::IsBlack;
using test::kSide;
using test::NitfBuilder;
using test::Rgb;
using test::Sample;
using test::Samples;

void ExpectSamples(const test::Picture& picture, const std::vector<int>& shown, int tolerance,
                   const std::function<bool(int, int)>& isEmpty = nullptr) {
  ASSERT_EQ(picture.status, 1);
  for (uint32_t y = 0; y < picture.height; ++y) {
    for (uint32_t x = 0; x < picture.width; ++x) {
      const Rgb got = picture.At(x, y);
      const int ix = static_cast<int>(x), iy = static_cast<int>(y);
      if (isEmpty && isEmpty(ix, iy)) {
        ASSERT_EQ(got, Rgb{}) << x << ',' << y;
        continue;
      }
      ASSERT_NEAR(got.red, Sample(ix, iy, shown[0]), tolerance) << x << ',' << y;
      ASSERT_NEAR(got.green, Sample(ix, iy, shown[1]), tolerance) << x << ',' << y;
      ASSERT_NEAR(got.blue, Sample(ix, iy, shown[2]), tolerance) << x << ',' << y;
    }
  }
}

using CompressedTest = test::ModuleTest;

TEST_F(CompressedTest, SingleJpegStreamsReplaceTheBitmap) {
  ExpectSamples(test::RenderImage(BlockForm("C3", 1, 1, 1, "MONO"), BlockStream(0, 1, {0})), {0, 0, 0},
                12);
  ExpectSamples(test::RenderImage(BlockForm("C3", 1, 1, 3, "RGB"), BlockStream(0, 1, {0, 1, 2}, true)),
                {0, 1, 2}, 12);
  // A downsampled stream is shown at its own size.
  const auto small = test::RenderImage(BlockForm("I1", 1, 1, 1, "MONO"),
                                       EncodeJpeg(Samples(0, 0, 32, 32, {0}), 32, 32, 1));
  ASSERT_EQ(small.status, 1);
  EXPECT_NEAR(small.At(31, 31).red, Sample(31, 31, 0), 12);
  EXPECT_EQ(small.At(32, 32), test::kWhite);
}

TEST_F(CompressedTest, BlocksAreCutAtTheirStartMarkers) {
  std::string data;
  for (int block = 0; block < 4; ++block) data += BlockStream(block, 2, {0});
  ExpectSamples(test::RenderImage(BlockForm("C3", 2, 2, 1, "MONO"), data), {0, 0, 0}, 12);
  data.clear();
  for (int block = 0; block < 4; ++block) data += BlockStream(block, 2, {0, 1, 2}, true);
  ExpectSamples(test::RenderImage(BlockForm("C3", 2, 2, 3, "RGB"), data), {0, 1, 2}, 12);
}

TEST_F(CompressedTest, BlocksWithoutAStreamAreShortData) {
  const std::string one = BlockStream(0, 2, {0}), two = one + BlockStream(1, 2, {0});
  EXPECT_EQ(test::RenderImage(BlockForm("C3", 2, 1, 1, "MONO"), one).status, ORB_SHORT_READ);
  ImageForm sequential = BlockForm("C3", 2, 1, 1, "MONO", "S");
  ExpectSamples(test::RenderImage(sequential, two), {0, 0, 0}, 12);
  const int32_t empty = test::RenderImage(BlockForm("C3", 1, 1, 1, "MONO"), "").status;
  EXPECT_LT(empty, 0) << "the host is asked, and refuses it";
  EXPECT_NE(empty, ORB_SHORT_READ);
}

TEST_F(CompressedTest, MaskedBlocksFollowTheirRecords) {
  std::string data;
  std::vector<uint32_t> records;
  for (int block = 0; block < 4; ++block) {
    records.push_back(block == 1 ? 0xFFFFFFFF : static_cast<uint32_t>(data.size()));
    if (block != 1) data += BlockStream(block, 2, {0});
  }
  ExpectSamples(
      test::RenderImage(BlockForm("M3", 2, 2, 1, "MONO"), test::MaskBytes({.blocks = records}) + data),
      {0, 0, 0}, 12, [](int x, int y) { return x >= kSide && y < kSide; });
}

TEST_F(CompressedTest, AStreamLargerThanItsBlockReachesIntoWhatIsAbsentBesideIt) {
  // One block of 2 x 2 is stored, with a stream of the size of all four.
  const std::string stream =
      EncodeJpeg(Samples(0, 0, 2 * kSide, 2 * kSide, {0}), 2 * kSide, 2 * kSide, 1);
  const std::vector<uint32_t> first = {0, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
  ExpectSamples(
      test::RenderImage(BlockForm("M3", 2, 2, 1, "MONO"), test::MaskBytes({.blocks = first}) + stream),
      {0, 0, 0}, 12);
  // The last block's ends where the image does.
  const std::vector<uint32_t> last = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0};
  const auto cut =
      test::RenderImage(BlockForm("M3", 2, 2, 1, "MONO"), test::MaskBytes({.blocks = last}) + stream);
  ASSERT_EQ(cut.status, 1);
  EXPECT_EQ(cut.At(kSide - 1, kSide - 1), Rgb{});
  EXPECT_NEAR(cut.At(kSide + 3, kSide + 5).red, Sample(3, 5, 0), 12);
}

TEST_F(CompressedTest, UnrecognisedBlocksStayEmpty) {
  std::string data;
  std::vector<uint32_t> records;
  for (int block = 0; block < 2; ++block) {
    records.push_back(static_cast<uint32_t>(data.size()));
    data += block == 0 ? "\xFF\xD8\xFF" + std::string(2000, 'x') : BlockStream(block, 2, {0});
  }
  ExpectSamples(
      test::RenderImage(BlockForm("M3", 2, 1, 1, "MONO"), test::MaskBytes({.blocks = records}) + data),
      {0, 0, 0}, 12, [](int x, int) { return x < kSide; });
}

TEST_F(CompressedTest, MultiSpectralBlocksShowTheSelectedBands) {
  ImageForm form = BlockForm("C3", 2, 1, 5, "MULTI");
  form.bandCodes = {"", "G", "R", "", "B"};
  std::string data;
  for (int block = 0; block < 2; ++block) data += BlockStream(block, 2, {0, 1, 2, 3, 4});
  ExpectSamples(test::RenderImage(form, data), {2, 1, 4}, 12);
  // What no band stands for is shown by the first.
  const std::pair<std::vector<std::string>, std::vector<int>> one[] = {
      {{"", "", "R"}, {2, 0, 0}}, {{"", "", "G"}, {0, 2, 0}}, {{"", "", "B"}, {0, 0, 2}}};
  for (const auto& [codes, shown] : one) {
    form.bandCodes = codes;
    form.bandCodes.resize(5);
    ExpectSamples(test::RenderImage(form, data), shown, 12);
  }
}

TEST_F(CompressedTest, BandSequentialStreamsAreMerged) {
  for (const bool masked : {false, true}) {
    ImageForm form = BlockForm(masked ? "M3" : "C3", 2, 1, 3, "RGB");
    form.mode = "S";
    std::string data;
    std::vector<uint32_t> records;
    for (int band = 0; band < 3; ++band) {
      for (int block = 0; block < 2; ++block) {
        records.push_back(static_cast<uint32_t>(data.size()));
        data += BlockStream(block, 2, {band});
      }
    }
    if (masked) data = test::MaskBytes({.blocks = records}) + data;
    ExpectSamples(test::RenderImage(form, data), {0, 1, 2}, 12);
  }
}

TEST_F(CompressedTest, SequentialBandsThatLackStreamsShowTheLastOne) {
  std::string data;
  for (const int band : {0, 1}) {
    for (int block = 0; block < 2; ++block) data += BlockStream(block, 2, {band});
  }
  const auto picture = test::RenderImage(BlockForm("C3", 2, 1, 3, "RGB", "S"), data);
  ASSERT_EQ(picture.status, 1);
  EXPECT_NEAR(picture.At(kSide + 5, 7).green, Sample(kSide + 5, 7, 1), 12);
  for (const uint32_t left : {0, kSide})
    EXPECT_NEAR(picture.At(left + 5, 7).blue, Sample(kSide + 5, 7, 1), 12);
  // Two bands are red and green.
  const auto two = test::RenderImage(BlockForm("C3", 2, 1, 2, "MULTI", "S"), data);
  ASSERT_EQ(two.status, 1);
  for (const int x : {5, kSide + 5}) {
    const Rgb got = two.At(static_cast<uint32_t>(x), 7);
    EXPECT_NEAR(got.red, Sample(x, 7, 0), 12);
    EXPECT_NEAR(got.green, Sample(x, 7, 1), 12);
    EXPECT_EQ(got.blue, 0);
  }
}

#if defined(HAS_WIDE_JPEG)
std::string EncodeWide(DJEncoder& encoder, const std::vector<uint16_t>& samples, int width, int height) {
  Uint8* out = nullptr;
  Uint32 size = 0;
  EXPECT_TRUE(encoder
                  .encode(static_cast<Uint16>(width), static_cast<Uint16>(height), EPI_Monochrome2, 1,
                          const_cast<Uint16*>(samples.data()), out, size)
                  .good());
  std::string bytes(reinterpret_cast<char*>(out), size);
  delete[] out;
  return bytes;
}

TEST_F(CompressedTest, WideAndLosslessJpegAreDecoded) {
  const DJCodecParameter parameters(ECC_monochrome, EDC_never, EUC_default, EPC_default);
  std::vector<uint16_t> samples;
  for (int i = 0; i < kSide * kSide; ++i) {
    samples.push_back(static_cast<uint16_t>(Sample(i % kSide, i / kSide, 0) << 4));
  }
  ImageForm form = BlockForm("C5", 1, 1, 1, "MONO");
  form.bits = 12;
  DJCompressIJG12Bit losslessEncoder(parameters, EJM_lossless, 1, 0);
  ExpectSamples(test::RenderImage(form, EncodeWide(losslessEncoder, samples, kSide, kSide)), {0, 0, 0},
                1);
  form.compression = "C3";
  DJCompressIJG12Bit sequential(parameters, EJM_sequential, 95);
  ExpectSamples(test::RenderImage(form, EncodeWide(sequential, samples, kSide, kSide)), {0, 0, 0}, 12);
}

TEST_F(CompressedTest, LosslessColourIsDecodedWhereItIsShown) {
  const DJCodecParameter parameters(ECC_lossyYCbCr, EDC_never, EUC_default, EPC_default);
  DJCompressIJG8Bit encoder(parameters, EJM_lossless, 1, 0);
  std::string samples = Samples(0, 0, kSide, kSide, {0, 1, 2});
  Uint8* out = nullptr;
  Uint32 size = 0;
  ASSERT_TRUE(
      encoder.encode(kSide, kSide, EPI_RGB, 3, reinterpret_cast<Uint8*>(samples.data()), out, size)
          .good());
  const std::string stream(reinterpret_cast<char*>(out), size);
  delete[] out;
  ExpectSamples(test::RenderImage(BlockForm("C5", 1, 1, 3, "RGB"), stream), {0, 1, 2}, 0);
}
#endif

TEST_F(CompressedTest, Jpeg2000IsOneStreamForAllBlocks) {
  ExpectSamples(
      test::RenderImage(BlockForm("C8", 2, 2, 3, "RGB"), EncodeJpeg2000(2 * kSide, 2 * kSide, {0, 1, 2})),
      {0, 1, 2}, 0);
  ExpectSamples(test::RenderImage(BlockForm("C8", 1, 1, 1, "MONO"), EncodeJpeg2000(kSide, kSide, {0})),
                {0, 0, 0}, 0);
  ImageForm deep = BlockForm("C8", 1, 1, 1, "MONO");
  deep.bits = 12;
  ExpectSamples(test::RenderImage(deep, EncodeJpeg2000(kSide, kSide, {0}, {.precision = 12})), {0, 0, 0},
                1);
  const std::string masked =
      test::MaskBytes({.blocks = {0, 0, 0, 0}}) + EncodeJpeg2000(2 * kSide, 2 * kSide, {0});
  ExpectSamples(test::RenderImage(BlockForm("M8", 2, 2, 1, "MONO"), masked), {0, 0, 0}, 0);
  ImageForm multi = BlockForm("C8", 1, 1, 5, "MULTI");
  multi.bandCodes = {"", "G", "R", "", "B"};
  ExpectSamples(test::RenderImage(multi, EncodeJpeg2000(kSide, kSide, {0, 1, 2, 3, 4})), {2, 1, 4}, 0);
}

TEST_F(CompressedTest, FacsimileIsDecodedInItsDimensions) {
  for (const char* rate : {"1D", "2DS", "2DH"}) {
    for (const bool masked : {false, true}) {
      ImageForm form = BlockForm(masked ? "M1" : "C1", 1, 1, 1, "MONO");
      form.bits = 1;
      form.pixelType = "B";
      form.rate = rate;
      const std::string data = EncodeFacsimile(kSide, kSide, form.rate != "1D");
      // The pad pixel code 0 names black pixels: they show the background.
      const auto picture =
          test::RenderImage(form, (masked ? test::MaskBytes({.padCode = 1}) : "") + data);
      ASSERT_EQ(picture.status, 1) << rate;
      for (uint32_t y = 0; y < kSide; ++y) {
        for (uint32_t x = 0; x < kSide; ++x) {
          const bool black = IsBlack(static_cast<int>(x), static_cast<int>(y));
          ASSERT_EQ(picture.At(x, y), black && !masked ? Rgb{} : test::kWhite) << x << ',' << y << rate;
        }
      }
    }
  }
}

TEST_F(CompressedTest, FacsimileTakesTheColoursOfItsLookupTable) {
  ImageForm form = BlockForm("C1", 1, 1, 1, "RGB/LUT");
  form.bits = 1;
  form.pixelType = "B";
  form.rate = "1D";
  form.lookup = std::string("\x01\x02\x11\x12\x21\x22", 6);
  form.lookupTables = 3;
  const auto picture = test::RenderImage(form, EncodeFacsimile(kSide, kSide, false));
  ASSERT_EQ(picture.status, 1);
  EXPECT_TRUE(IsBlack(0, 0));
  EXPECT_EQ(picture.At(0, 0), (Rgb{0x02, 0x12, 0x22})) << "black is sample 1";
  EXPECT_EQ(picture.At(5, 0), (Rgb{0x01, 0x11, 0x21}));
}

// ---------------------------------------------------------------- damage and faults

struct Encoded {
  const char* name;
  ImageForm form;
  std::string data;
};

std::vector<Encoded> OneOfEach() {
  ImageForm fax = BlockForm("C1", 1, 1, 1, "MONO");
  fax.bits = 1;
  fax.pixelType = "B";
  fax.rate = "2DS";
  ImageForm sequential = BlockForm("C3", 2, 1, 3, "RGB");
  sequential.mode = "S";
  std::string bands, blocks;
  for (int band = 0; band < 3; ++band) bands += BlockStream(0, 2, {band}) + BlockStream(1, 2, {band});
  for (int block = 0; block < 4; ++block) blocks += BlockStream(block, 2, {0});
  const test::VqForm vq;
  return {{"single", BlockForm("C3", 1, 1, 1, "MONO"), BlockStream(0, 1, {0})},
          {"blocks", BlockForm("C3", 2, 2, 1, "MONO"), blocks},
          {"sequential", sequential, bands},
          {"jpeg2000", BlockForm("C8", 1, 1, 3, "RGB"), EncodeJpeg2000(kSide, kSide, {0, 1, 2})},
          {"facsimile", fax, EncodeFacsimile(kSide, kSide, true)},
          {"vq", test::VqImage(vq, "C4", 1, 1), test::VqData(vq)}};
}

TEST_F(CompressedTest, DamagedStreamsEndWithAStatus) {
  std::mt19937 random(7);
  for (const Encoded& encoded : OneOfEach()) {
    for (int round = 0; round < 60; ++round) {
      std::string data = encoded.data;
      if (round % 3 == 0) data.resize(random() % data.size());
      for (int i = 0; i < 4 && !data.empty(); ++i)
        data[random() % data.size()] = static_cast<char>(random());
      if (round % 5 == 0) data += encoded.data;
      (void)test::RenderImage(encoded.form, data);
      test::ExpectNoLeaks();
    }
  }
}

TEST_F(CompressedTest, AbsurdSizesAreRefusedBeforeTheyAreDecoded) {
  std::string jpeg = BlockStream(0, 1, {0});
  const size_t frame = jpeg.find("\xFF\xC0");
  ASSERT_NE(frame, std::string::npos);
  jpeg.replace(frame + 5, 4, "\xFF\xDC\xFF\xDC");
  HostkitPeakBytes(1);
  EXPECT_EQ(test::RenderImage(BlockForm("C3", 1, 1, 1, "MONO"), jpeg).status, ORB_BAD_STRUCTURE);
  std::string j2k = EncodeJpeg2000(kSide, kSide, {0});
  j2k.replace(8, 8, test::Big(60000, 4) + test::Big(60000, 4));
  EXPECT_EQ(test::RenderImage(BlockForm("C8", 1, 1, 1, "MONO"), j2k).status, ORB_BAD_STRUCTURE);
  EXPECT_LT(HostkitPeakBytes(0), 1u << 20);
}

TEST_F(CompressedTest, StreamsThatShowTwoFramesAreRefused) {
  // A restart marker has no length: a scan that gives it one finds another frame than the decoder.
  const std::string hidden("\xFF\xD0\x00\x0D\xFF\xC0\x00\x0B\x08\x00\x08\x00\x08\x01\x01", 15);
  const std::string whole = BlockStream(0, 1, {0});
  const std::string stream = whole.substr(0, 2) + hidden + whole.substr(2);
  EXPECT_EQ(test::RenderImage(BlockForm("C3", 1, 1, 1, "MONO"), stream).status, -20);
}

TEST_F(CompressedTest, AMaskedFacsimileLooksTheSameEveryTime) {
  ImageForm form = BlockForm("M1", 1, 1, 1, "MONO");
  form.bits = 1;
  form.pixelType = "B";
  form.rate = "1D";
  const std::string data = test::MaskBytes({.padCode = 1}) + EncodeFacsimile(kSide, kSide, false);
  const test::TempFile file(NitfBuilder().Image(form, data).Bytes());
  NitfHandle handle = nullptr;
  ASSERT_EQ(Orb_NITFCreate(&handle, file.Wide()), 1);
  std::string rows[2];
  KernelBitmap bitmap = {};
  for (std::string& picture : rows) {
    ASSERT_EQ(Orb_NtfRenderBitmap(&bitmap, handle), 1);
    const std::vector<uint8_t> row = test::RowOf(bitmap, 5);
    picture.assign(row.begin(), row.end());
  }
  KernelFreeBitmap(&bitmap);
  EXPECT_EQ(rows[0], rows[1]);
  ImageHeader header = {};
  ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &header), 1);
  EXPECT_EQ(header.TPXCD[0], 1);
  Orb_NITFFreeImageHeader(&header);
  Orb_NITFDestroy(&handle);
}

int loads = 0, callbacks = 0;
int32_t ORB_CALL CountedLoad(const void* bytes, KernelBitmap* bitmap, uint32_t recordSize,
                             uint32_t bitsPerPixel, uint32_t colourOrder, uint32_t byteCount,
                             const HostLoadOptions* options, HostFileInfo* info) {
  ++loads;
  return FileFormatLoadMemory(bytes, bitmap, recordSize, bitsPerPixel, colourOrder, byteCount, options,
                              info);
}
HostLoadInfoCallback ORB_CALL CountedSetCallback(HostLoadInfoCallback callback, void* userData) {
  ++callbacks;
  return FileFormatSetLoadInfoCallback(callback, userData);
}

TEST_F(CompressedTest, TheHostsOwnEntryPointsAreUsedWhereItGivesThem) {
  ImageForm fax = BlockForm("C1", 1, 1, 1, "MONO");
  fax.bits = 1;
  fax.pixelType = "B";
  fax.rate = "1D";
  const test::TempFile file(NitfBuilder().Image(fax, EncodeFacsimile(kSide, kSide, false)).Bytes());
  const test::RenderRequest request = {.loadMemory = &CountedLoad,
                                       .setLoadCallback = &CountedSetCallback};
  loads = callbacks = 0;
  EXPECT_EQ(test::Render(file, request).status, 1);
  EXPECT_EQ(loads, 1);
  EXPECT_EQ(callbacks, 2) << "set, and put back";
  loads = callbacks = 0;
  NitfHandle handle = nullptr;
  ASSERT_EQ(Orb_NITFCreate(&handle, file.Wide()), 1);
  KernelBitmap bitmap = {};
  EXPECT_EQ(Orb_NtfRenderBitmap(&bitmap, handle), 1);
  EXPECT_EQ(loads + callbacks, 0);
  KernelFreeBitmap(&bitmap);
  Orb_NITFDestroy(&handle);
}

}  // namespace
