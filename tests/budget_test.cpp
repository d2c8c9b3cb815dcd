// What little data may cost: refused beyond its budget, and never more decoded than is shown.
#include "tests/support/encoders.h"
#include "tests/support/metafile.h"
#include "tests/support/objects.h"
#include "tests/support/vq.h"

namespace {

using test::Big;
using test::Element;
using test::I;
using test::ImageForm;
using test::NitfBuilder;

class BudgetTest : public test::CodecTest {
 protected:
  void TearDown() override {
    HostkitLiftWorkLimit();
    CodecTest::TearDown();
  }
};

// A decoded stream of which at most a width and height are wanted.
struct Decoded {
  Decoded(const std::string& stream, uint32_t width, uint32_t height) {
    KernelInitialiseBitmap(&record, kBitmapRecordSize, width, height, 0);
    status = FileFormatLoadMemory(stream.data(), &record, kBitmapRecordSize, 0, kOrderAsDecoded,
                                  static_cast<uint32_t>(stream.size()), nullptr, nullptr);
  }
  ~Decoded() { KernelFreeBitmap(&record); }
  Decoded(const Decoded&) = delete;
  Decoded& operator=(const Decoded&) = delete;
  KernelBitmap record;
  int32_t status;
};

void ExpectCropped(const std::string& stream) {
  Decoded whole(stream, 0, 0);
  Decoded part(stream, 40, 23);
  ASSERT_EQ(whole.status, kHostOk);
  ASSERT_EQ(part.status, kHostOk);
  EXPECT_EQ(part.record.width, 40u);
  EXPECT_EQ(part.record.height, 23u);
  const size_t bytes = size_t{40} * part.record.bitsPerPixel / 8;
  for (uint32_t y = 0; y < part.record.height; ++y) {
    auto expected = test::RowOf(whole.record, y), found = test::RowOf(part.record, y);
    expected.resize(bytes);
    found.resize(bytes);
    ASSERT_EQ(found, expected) << "row " << y;
  }
}

TEST_F(BudgetTest, StreamsAreDecodedAsFarAsTheyAreWanted) {
  const int side = test::kSide;
  ExpectCropped(test::EncodeJpeg(test::Samples(0, 0, side, side, {0}), side, side, 1));
  ExpectCropped(test::EncodeJpeg(test::Samples(0, 0, side, side, {0, 1, 2}), side, side, 3));
  ExpectCropped(test::EncodeJpeg2000(side, side, {0}));
  ExpectCropped(test::EncodeJpeg2000(side, side, {0, 1, 2}, {.precision = 12}));
}

TEST_F(BudgetTest, LargeCodestreamsAreDecodedInParts) {
  // More samples than are decoded at once, in rows that do not divide evenly.
  constexpr int kWidth = 1500, kHeight = 1501;
  const std::string stream = test::EncodeJpeg2000(kWidth, kHeight, {0});
  Decoded picture(stream, 0, 0);
  ASSERT_EQ(picture.status, kHostOk);
  for (uint32_t y = 0; y < kHeight; y += 7) {
    const auto row = test::RowOf(picture.record, y);
    for (uint32_t x = 0; x < kWidth; x += 11)
      ASSERT_EQ(row[x], test::Sample(static_cast<int>(x), static_cast<int>(y), 0)) << x << ',' << y;
  }
}

TEST_F(BudgetTest, TablesOfACodestreamAreWeighedBeforeTheyAreMade) {
  const ImageForm form{.width = 2040, .height = 2040, .compression = "C8"};
  std::string stream = test::EncodeJpeg2000(test::kSide, test::kSide, {0});
  const std::string tiny = Big(8, 4), side = Big(2040, 4);
  stream.replace(8, 8, side + side);
  stream.resize(std::max<size_t>(stream.size(), 2000));
  stream.replace(24, 8, tiny + tiny);
  HostkitPeakBytes(1);
  EXPECT_EQ(test::RenderImage(form, stream).status, kHostOverBudget);
  // Precincts of two by two samples.
  stream.replace(24, 8, side + side);
  const size_t style = stream.find("\xFF\x52");
  ASSERT_NE(style, std::string::npos);
  const std::string precincts =
      Big(0xFF52, 2) + Big(13, 2) + Big(1, 1) + stream.substr(style + 5, 9) + '\x11';
  EXPECT_EQ(
      test::RenderImage(form, stream.substr(0, style) + precincts + stream.substr(style + 14)).status,
      kHostOverBudget);
  EXPECT_LT(HostkitPeakBytes(0), 2040u * 2040 * 5);
}

TEST_F(BudgetTest, PixelsOfCodecsCountAgainstTheMost) {
  const std::string stream = test::EncodeJpeg2000(test::kSide, test::kSide, {0});
  HostkitSetMaxPixels(1000);
  EXPECT_EQ(Decoded(stream, 0, 0).status, kHostNoMemory);
  EXPECT_EQ(Decoded(stream, 20, 20).status, kHostOk) << "what is made of it counts";
  HostkitSetMaxPixels(0);
}

TEST_F(BudgetTest, CodebooksTakeWhatTheFileHoldsOfThem) {
  test::VqForm form{.blockWidth = 8192,
                    .blockHeight = 4,
                    .codeRows = 1,
                    .codesPerRow = 1,
                    .tables = 1,
                    .entries = 60000,
                    .codeBits = 16};
  HostkitPeakBytes(1);
  EXPECT_EQ(test::RenderImage(test::VqImage(form, "C4", 1, 1), test::VqData(form)).status, ORB_SUCCESS);
  EXPECT_LT(HostkitPeakBytes(0), 4u << 20);
}

TEST_F(BudgetTest, BlocksAreReadInStrips) {
  // Modes whose blocks have as many rows as it takes for several strips.
  for (const char* mode : {"B", "P"}) {
    ImageForm form{.width = 2000, .height = 1000, .bands = 3, .representation = "RGB", .mode = mode};
    std::string data;
    for (int i = 0; i < 6'000'000; ++i) data += static_cast<char>(i / 977 * 31 + i);
    HostkitPeakBytes(1);
    const auto picture = test::RenderBytes(NitfBuilder().Image(form, data).Bytes());
    ASSERT_EQ(picture.status, ORB_SUCCESS);
    EXPECT_LT(HostkitPeakBytes(0), 2 * 6'000'000u + (5u << 20));
    const bool interleaved = mode[0] == 'P';
    for (uint32_t y = 0; y < 1000; y += 3) {
      const uint32_t shown = interleaved ? std::min(y, 998u) : y;
      const size_t at = (size_t{shown} * 2000 + 1234) * (interleaved ? 3 : 1);
      const size_t band = interleaved ? 1 : 2'000'000;
      const auto sample = [&](size_t i) { return static_cast<uint8_t>(data[i]); };
      ASSERT_EQ(picture.At(1234, y), (test::Rgb{sample(at), sample(at + band), sample(at + 2 * band)}))
          << mode << y;
    }
  }
}

TEST_F(BudgetTest, BlankImagesAreShownOnce) {
  ImageForm form{.width = 1000,
                 .height = 1000,
                 .blocksAcross = 2,
                 .compression = "NM",
                 .lookup = "\x50q",
                 .lookupTables = 1};
  const std::string none = test::MaskBytes({.blocks = {0xFFFFFFFF, 0xFFFFFFFF}});
  NitfBuilder file;
  for (int i = 0; i < 200; ++i) {
    form.level = i + 1;
    file.Image(form, none);
  }
  // The last one lies elsewhere, with another colour.
  form.level = 201;
  form.location = "0010000100";
  form.lookup = "\x70q";
  file.Image(form, none);
  HostkitLimitWork(0, 0, 5);
  const auto picture = test::RenderBytes(file.Bytes());
  ASSERT_EQ(picture.status, ORB_SUCCESS);
  EXPECT_EQ(picture.At(99, 99), test::Grey(0x50));
  EXPECT_EQ(picture.At(100, 100), test::Grey(0x70));
  EXPECT_EQ(picture.At(2050, 1050), test::Grey(0x70));
  // Where its one colour is left out, a blank image is not there.
  form.location = "0000000000";
  file.images.clear();
  const std::string pad = test::MaskBytes({.blocks = {0xFFFFFFFF, 0xFFFFFFFF}, .padCode = 0});
  EXPECT_EQ(test::RenderBytes(file.Image(form, pad).Bytes()).At(5, 5), test::kWhite);
}

// What a device context shows of a file's objects.
test::Rgb DrawnAt(const NitfBuilder& builder, uint32_t x, uint32_t y, int32_t expected) {
  const test::TempFile file(builder.Bytes());
  const test::Handle handle(file);
  test::Bitmap canvas(200, 100, 24, 0xFFFFFF);
  HDC dc = KernelCreateBitmapDc(&canvas.record);
  EXPECT_EQ(Orb_NitfDrawObjects(nullptr, dc, &canvas.record, handle), expected);
  KernelDeleteBitmapDc(dc);
  const std::vector<uint8_t> row = test::RowOf(canvas.record, y);
  return {row[3 * x + 2], row[3 * x + 1], row[3 * x]};
}

TEST_F(BudgetTest, BlankImagesAreShownWhereTheNextOneFails) {
  ImageForm form{.width = 100,
                 .height = 100,
                 .blocksAcross = 2,
                 .compression = "NM",
                 .lookup = "\x50q",
                 .lookupTables = 1};
  const std::string none = test::MaskBytes({.blocks = {0xFFFFFFFF, 0xFFFFFFFF}});
  NitfBuilder file;
  file.Image(form, none);
  EXPECT_EQ(DrawnAt(file, 150, 50, ORB_SUCCESS), test::Grey(0x50));
  // One that has no reader, one whose data is missing; both would cover the first.
  for (const char* compression : {"M0", "NC"}) {
    NitfBuilder two = file;
    form.level = 2;
    form.compression = compression;
    two.Image(form, compression[0] == 'M' ? none : std::string(10, 'x'));
    EXPECT_EQ(DrawnAt(two, 150, 50, compression[0] == 'M' ? ORB_UNSUPPORTED : ORB_SHORT_READ),
              test::Grey(0x50))
        << compression;
  }
}

TEST_F(BudgetTest, MarkersCostWhatTheirLinesDo) {
  // Rings of 300 pixels: a fifth of a millisecond each.
  std::string points;
  for (int i = 0; i < 8000; ++i)
    points += Big(static_cast<uint64_t>(i * 37 % 2048), 2) + Big(static_cast<uint64_t>(i * 91 % 2048), 2);
  std::string body = test::Element(5, 6, test::I({4})) + test::Element(2, 4, test::I({0})) +
                     test::Element(5, 7, test::I({300})) + Big(4 << 12 | 3 << 5 | 31, 2) +
                     Big(points.size(), 2) + points;
  const test::Drawing drawing(test::Metafile(body, "", test::I({0, 0, 2047, 2047})));
  test::Bitmap canvas(2048, 2048, 24);
  HDC dc = KernelCreateBitmapDc(&canvas.record);
  const RECT place = {0, 0, 2048, 2048};
  EXPECT_EQ(VectorPaint(dc, &drawing.handle, 2048, 2048, 0, 0, &place, nullptr, 0), kHostOverBudget);
  KernelDeleteBitmapDc(dc);
}

TEST_F(BudgetTest, LargeCanvasesThatHaveTheirDataAreDrawn) {
  const std::string far = "0420004100", data(64, 'x');
  const auto draw = [](const NitfBuilder& file) {
    const test::TempFile onDisk(file.Bytes());
    const test::Handle handle(onDisk);
    KernelBitmap bitmap;
    KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 0);
    const int32_t status = Orb_NtfRenderBitmap(&bitmap, handle);
    EXPECT_EQ(bitmap.height, 4208u);
    KernelFreeBitmap(&bitmap);
    return status;
  };
  EXPECT_EQ(draw(NitfBuilder().Image({.location = far}, data).Image({.level = 2}, data)), ORB_SUCCESS);
  // What is in front of an image whose data cannot be told tells nothing of it.
  const ImageForm masked{.compression = "NM", .location = far};
  EXPECT_EQ(draw(NitfBuilder().Image(masked, test::MaskBytes({.blocks = {0}}) + data)), ORB_SUCCESS);
  test::Record symbol = test::GraphicRecord();
  NitfBuilder drawing;
  EXPECT_EQ(
      draw(drawing.Graphic(symbol.Set("SFMT", "B"), "symbol").Image({.level = 2, .location = far}, data)),
      ORB_SUCCESS);
}

TEST_F(BudgetTest, WorkBeyondTheLimitIsRefused) {
  const test::TempFile file(
      NitfBuilder().Image({.width = 500, .height = 500}, std::string(250000, 'x')).Bytes());
  EXPECT_EQ(test::Render(file).status, ORB_SUCCESS);
  HostkitLimitWork(0, 0, 0);
  EXPECT_EQ(test::Render(file).status, kHostOverBudget);
  HostkitLimitWork(0, 0, 100);
  EXPECT_EQ(test::Render(file).status, ORB_SUCCESS);
  HostkitLiftWorkLimit();
  EXPECT_EQ(test::Render(file).status, ORB_SUCCESS);
}

TEST_F(BudgetTest, DrawingsAreNotKeptUnlessTheirHandleIs) {
  test::Record record = test::GraphicRecord();
  record.Set("SBND2", "0001500015");
  std::string rectangles;
  for (int i = 0; i < 2000; ++i) rectangles += Element(4, 11, I({1, 1, 9, 9}));
  const test::TempFile file(NitfBuilder().Graphic(record, test::Metafile(rectangles)).Bytes());
  const test::Handle handle(file);
  const auto draw = [&] {
    KernelBitmap bitmap;
    KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 0);
    EXPECT_EQ(Orb_NtfRenderBitmap(&bitmap, handle), ORB_SUCCESS);
    KernelFreeBitmap(&bitmap);
  };
  draw();
  EXPECT_NE(VectorIsEmpty(&handle->graphics.At(0)->drawing.handle), 0);
  const VectorHandle* given = Orb_NITFGetVectorHandle(handle, 0);
  draw();
  EXPECT_EQ(VectorIsEmpty(given), 0) << "a caller has its handle";
}

// ---------------------------------------------------------------- drawings

test::Record Whole(int side) {
  test::Record record = test::GraphicRecord();
  return record.Set("SBND2", test::Digits(side - 1, 5) + test::Digits(side - 1, 5));
}

int32_t RenderDrawing(int side, const std::string& body) {
  const std::string cgm = test::Metafile(body, "", I({0, 0, side - 1, side - 1}));
  return test::RenderBytes(NitfBuilder().Graphic(Whole(side), cgm).Bytes()).status;
}

TEST_F(BudgetTest, PaintingEndsWhereItIsWorthNoMore) {
  const std::string full = Element(4, 11, I({0, 0, 1999, 1999}));
  std::string hatched = Element(5, 22, I({3})), plain = Element(5, 22, I({1}));
  for (int i = 0; i < 3000; ++i) hatched += full, plain += full;
  EXPECT_EQ(RenderDrawing(2000, hatched), kHostOverBudget);
  EXPECT_EQ(RenderDrawing(2000, plain), ORB_SUCCESS) << "only the last one is seen";
}

TEST_F(BudgetTest, DrawingsPaintedInPiecesHaveNoSeams) {
  constexpr int kSide = 2300;
  const std::string body = Element(5, 22, I({3})) + Element(5, 24, I({1})) + Element(5, 30, I({1})) +
                           Element(4, 11, I({50, 60, 2250, 2240})) + Element(4, 12, I({1024, 1276, 40})) +
                           Element(4, 1, I({0, 0, 2299, 2299})) + Element(4, 3, I({1024, 1275}));
  const std::string cgm = test::Metafile(body, "", I({0, 0, kSide - 1, kSide - 1}));
  // The same drawing a little further down and right lies differently in the pieces.
  test::Record moved = Whole(kSide);
  moved.Set("SLOC", "0004000040");
  const auto here = test::RenderBytes(NitfBuilder().Graphic(Whole(kSide), cgm).Bytes());
  const auto there = test::RenderBytes(NitfBuilder().Graphic(moved, cgm).Bytes());
  ASSERT_EQ(here.status, ORB_SUCCESS);
  ASSERT_EQ(there.status, ORB_SUCCESS);
  // Edges that a piece cuts may be rounded otherwise.
  int furthest = 0;
  for (uint32_t y = 0; y < 2200; ++y) {
    for (uint32_t x = 0; x < 2200; ++x) {
      const test::Rgb a = here.At(x, y), b = there.At(x + 40, y + 40);
      furthest = std::max(
          {furthest, std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
    }
  }
  EXPECT_LE(furthest, 4);
}

}  // namespace
