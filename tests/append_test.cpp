// Appending segments.
#include "tests/support/metafile.h"
#include "tests/support/objects.h"

namespace {

using test::Bitmap;
using test::Handle;
using test::NitfBuilder;
using test::Saved;
using test::Square;
using namespace std::string_literals;

using AppendTest = test::ModuleTest;
using CompressedAppendTest = test::CodecTest;

TEST_F(CompressedAppendTest, AppendedImagesAreDescribedAndCounted) {
  const Handle handle;
  const Bitmap colour(20, 10, 24), grey(6, 4, 8);
  ASSERT_EQ(Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&colour.record), 182, 24, 2), 1);
  const ImageSubheader& image = *handle->images.At(0);
  EXPECT_EQ(handle->header.images.Current(0).subheader, 469u);
  EXPECT_EQ(handle->header.currentHeaderLength, 404u);
  EXPECT_EQ(handle->header.fileLength, 388 + 469 + 16 + handle->header.images.Current(0).data);
  EXPECT_STREQ(image.IREP.text, "RGB     ");
  EXPECT_STREQ(image.IC.text, "C3");
  EXPECT_EQ(image.IDLVL.value, 1u);
  EXPECT_EQ(image.BandCode(2), BandRepresentation::BANDREPRESENTATION_B);
  ASSERT_EQ(Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&colour.record), 10, 24, 2), 1);
  EXPECT_EQ(handle->images.At(1)->RepresentationCode(), Representation::YCbCr601);
  ASSERT_EQ(Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&grey.record), 10, 8, 2), 1);
  EXPECT_EQ(handle->header.images.Current(2).subheader, 443u);
  EXPECT_STREQ(handle->images.At(2)->IMODE.text, "B");
  EXPECT_EQ(handle->images.At(2)->IDLVL.value, 3u);
  const test::TempFile file(Saved(handle));
  EXPECT_EQ(test::Unsound(file.Contents()), "");
  const auto picture = test::Render(file);
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.width, 20u);
  EXPECT_NEAR(picture.At(15, 8).red, 0xC0, 4);
  EXPECT_NEAR(picture.At(15, 8).blue, 0x40, 4);
  EXPECT_EQ(Orb_NITFGetImageHeaderCount(handle), 3u);
}

TEST_F(CompressedAppendTest, SegmentDatesAreLoweredByOnePiece) {
  const Bitmap bitmap(4, 4, 8);
  const test::TempFile text("words", ".txt");
  const auto dates = [&](const std::string& fileDate) {
    NitfBuilder builder;
    builder.header.Set("FDT", fileDate);
    const test::TempFile file(builder.Bytes());
    const Handle handle(file);
    EXPECT_EQ(Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&bitmap.record), 182, 8, 255),
              1);
    EXPECT_EQ(Orb_NITFAppendTextSegment(handle, text.Wide()), 1);
    return std::pair<std::string, std::string>(handle->images.At(0)->IDATIM.text,
                                               handle->texts.At(0)->TXTDT.text);
  };
  EXPECT_EQ(dates("20261124123456"), std::pair("20261124123455"s, "20261124123356"s));
  EXPECT_EQ(dates("20261124120000"), std::pair("20261124110000"s, "20261124110000"s));
  // What is below 2 stays and the next larger piece is lowered, the century last.
  EXPECT_EQ(dates("20261124010101"), std::pair("20261123010101"s, "20261123010101"s));
  EXPECT_EQ(dates("20261101000000"), std::pair("20261001000000"s, "20261001000000"s));
  EXPECT_EQ(dates("20260101000000"), std::pair("20250101000000"s, "20250101000000"s));
  EXPECT_EQ(dates("20010101000000"), std::pair("19010101000000"s, "19010101000000"s));
  EXPECT_EQ(dates("20260200000000"), std::pair("20260100000000"s, "20260100000000"s));
  EXPECT_EQ(dates("01010101010101"), std::pair("01010101010101"s, "01010101010101"s));
  EXPECT_EQ(dates("--------------"), std::pair("--------------"s, "--------------"s));
}

TEST_F(AppendTest, SegmentsOfAFileWithoutADateHaveOneOfTheirOwn) {
  const test::TempFile text("words", ".txt");
  const Handle handle;
  handle->header.FDT.text[0] = 0;
  EXPECT_EQ(Orb_NITFAppendTextSegment(handle, text.Wide()), 1);
  EXPECT_STREQ(handle->texts.At(0)->TXTDT.text, "50020530010101");
}

TEST_F(AppendTest, RefusedAppendsChangeNothing) {
  const Handle handle;
  const Bitmap bitmap(4, 4, 24);
  auto* record = const_cast<KernelBitmap*>(&bitmap.record);
  KernelBitmap empty = {};
  Square square;
  VectorHandle nothing{};
  RECT rectangle = {0, 0, 50, 40};
  EXPECT_EQ(Orb_NITFAppendImageSegment(nullptr, record, 182, 24, 50), ORB_NULL_HANDLE);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, nullptr, 182, 24, 50), ORB_NO_BITMAP);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, &empty, 182, 24, 50), ORB_NO_BITMAP);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, record, 182, 16, 50), ORB_BAD_BITMAP_DEPTH);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, record, 182, 24, 1), ORB_BAD_QUALITY);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, record, 182, 24, 256), ORB_BAD_QUALITY);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, record, 11, 24, 255), ORB_BAD_STRUCTURE);
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(nullptr, &square.handle, &rectangle), ORB_NULL_HANDLE);
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, &square.handle, nullptr), ORB_NULL_HANDLE);
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, nullptr, &rectangle), ORB_NO_DATA);
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, &nothing, &rectangle), ORB_EMPTY_DRAWING);
  rectangle.right = 100000;
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, &square.handle, &rectangle), ORB_INVALID_PARAMETER)
      << "six digits do not fit";
  EXPECT_EQ(Orb_NITFAppendTextSegment(nullptr, u"x"), ORB_NULL_HANDLE);
  EXPECT_EQ(Orb_NITFAppendTextSegment(handle, u"/no/such/text"), ORB_TEXT_NOT_OPENED);
  EXPECT_EQ(Orb_NITFAppendTextSegmentA(handle, nullptr), ORB_OUT_OF_MEMORY);
  EXPECT_EQ(Orb_NITFAppendTextSegment(handle, test::TempFile(std::string(100000, 't')).Wide()),
            ORB_INVALID_PARAMETER);
  EXPECT_EQ(Orb_NITFGetStatus(handle), 3);
  EXPECT_EQ(handle->header.fileLength, 388u);
  EXPECT_EQ(Orb_NITFAppendTextSegment(handle, test::TempFile("a later one").Wide()), 1);
}

TEST_F(AppendTest, GraphicsAndTextsKeepTheHeaderInStep) {
  NitfBuilder base;
  test::Record record = test::ImageRecord({});
  record.Set("IDLVL", 5);
  base.Image(record, std::string(64, 'i')).Text("first");
  const test::TempFile file(base.Bytes());
  const Handle handle(file);
  const uint32_t header = handle->header.currentHeaderLength, length = handle->header.fileLength;
  Square square;
  const RECT rectangle = {8, 0, 52, 33};
  ASSERT_EQ(Orb_NITFAppendGraphicSegment(handle, &square.handle, &rectangle), 1);
  const test::TempFile words(std::string(100, 'w'), ".txt");
  ASSERT_EQ(Orb_NITFAppendTextSegment(handle, words.Wide()), 1);
  const uint32_t cgm = handle->header.graphics.Current(0).data;
  EXPECT_EQ(handle->header.currentHeaderLength, header + 10 + 9);
  EXPECT_EQ(handle->header.fileLength, length + 258 + 10 + cgm + 282 + 100 + 9);
  EXPECT_EQ(handle->graphics.At(0)->SDLVL.value, 6u);
  EXPECT_EQ(handle->graphics.At(0)->SALVL.value, 5u);
  EXPECT_EQ(handle->texts.At(1)->TXTALVL.value, 5u);
  EXPECT_STREQ(handle->graphics.At(0)->SBND2.text, "0005200033");
  // Texts of both origins.
  char buffer[101];
  uint32_t count = 0;
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 1, nullptr, &count), 1);
  EXPECT_EQ(count, 100u);
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 1, buffer, nullptr), 1);
  EXPECT_EQ(std::string(buffer), std::string(100, 'w'));
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 0, buffer, &count), 1);
  EXPECT_STREQ(buffer, "first") << "appended graphics do not move the file's texts";
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 2, buffer, &count), ORB_NO_SUCH_RECORD);
  const test::TempFile saved(Saved(handle));
  EXPECT_EQ(test::Unsound(saved.Contents()), "");
  if (!test::HostPaintsDrawings()) return;
  const auto picture = test::Render(saved);
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.width, 52u);
  EXPECT_EQ(picture.At(30, 15), test::Rgb{}) << "the square, drawn where the rectangle puts it";
  EXPECT_EQ(picture.At(45, 32), test::kWhite);
}

TEST_F(AppendTest, AnAppendBeforeGetAndSetStillSavesItsHeaderLength) {
  const test::TempFile file(test::FullFile().Bytes()), words("words", ".txt");
  const Handle handle(file);
  ASSERT_EQ(Orb_NITFAppendTextSegment(handle, words.Wide()), 1);
  NITFHeader header = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &header), 1);
  header.XHDL = 14;  // what Get leaves alone
  header.NUMDES = 2;
  EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &header), 1);
  Orb_NITFFreeNITFHeader(&header);
  EXPECT_EQ(test::Unsound(Saved(handle)), "");
}

TEST_F(CompressedAppendTest, ADocumentHoldsNineHundredNinetyNineOfEachKind) {
  const Handle handle;
  const Bitmap bitmap(2, 2, 8);
  const test::TempFile text("t", ".txt");
  Square square;
  const RECT rectangle = {0, 0, 60, 60};
  for (int i = 0; i < 999; ++i) {
    ASSERT_EQ(Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&bitmap.record), 182, 8, 200),
              1);
    ASSERT_EQ(Orb_NITFAppendTextSegment(handle, text.Wide()), 1);
    ASSERT_EQ(Orb_NITFAppendGraphicSegment(handle, &square.handle, &rectangle), 1);
  }
  EXPECT_EQ(handle->graphics.At(998)->SDLVL.value, 999u) << "display levels end there";
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, &square.handle, &rectangle), 0);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&bitmap.record), 182, 8, 200),
            0);
  EXPECT_EQ(Orb_NITFAppendTextSegment(handle, text.Wide()), 0);
  const test::TempFile file(Saved(handle));
  EXPECT_EQ(test::Unsound(file.Contents()), "");
  const Handle reopened(file);
  EXPECT_EQ(Orb_NITFGetImageHeaderCount(reopened), 999u);
  EXPECT_EQ(Orb_NITFGetTextHeaderCount(reopened), 999u);
  EXPECT_EQ(Orb_NITFGetGraphicHeaderCount(reopened), 999u);
  EXPECT_EQ(test::Render(file).status, 1);
}

TEST_F(CompressedAppendTest, EveryKindIsAppendedOrNothingWhenMemoryRunsOut) {
  const test::TempFile file(test::FullFile().Bytes()), text("appended", ".txt");
  // Paths and drawings of the test itself are made before memory runs out.
  const test::TempFile out;
  const Bitmap bitmap(8, 8, 24);
  Square square;
  const auto append = [&] {
    NitfHandle handle = nullptr;
    int32_t status = Orb_NITFCreate(&handle, file.Wide());
    if (status != 1) return status;
    const RECT rectangle = {0, 0, 60, 60};
    status = Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&bitmap.record), 182, 24, 20);
    if (status == 1) status = Orb_NITFAppendTextSegment(handle, text.Wide());
    if (status == 1) status = Orb_NITFAppendGraphicSegment(handle, &square.handle, &rectangle);
    if (status == 1) status = Orb_NITFSetVectorHandle(handle, 0, &square.handle);
    const uint32_t segments = Orb_NITFGetImageHeaderCount(handle) + Orb_NITFGetTextHeaderCount(handle);
    EXPECT_EQ(handle->header.images.Count() + handle->header.texts.Count(), segments);
    if (status == 1) status = Orb_NITFSaveFile(handle, out.Wide());
    Orb_NITFDestroy(&handle);
    return status;
  };
  const uint32_t held = HostkitOutstanding(nullptr, 0);
  for (HostkitFault fault : {kFaultAllocation, kFaultCodec}) {
    for (uint64_t n = 1;; ++n) {
      HostkitArmFault(fault, n);
      const int32_t status = append();
      const bool met = HostkitFaultCalls(fault) >= n;
      HostkitArmFault(fault, 0);
      ASSERT_EQ(HostkitOutstanding(nullptr, 0), held) << n;
      ASSERT_TRUE(status == (met ? (fault == kFaultCodec ? -16 : -1) : 1)) << n << ": " << status;
      if (!met) break;
    }
  }
}

TEST_F(AppendTest, ExtentsBeyondFiveDigitsAreRefused) {
  const Handle handle;
  const RECT rectangle = {0, 0, 60, 60};
  // 32-bit coordinates: a line to (x, y).
  const auto append = [&](int32_t x, int32_t y) {
    const std::string cgm =
        test::Metafile(test::Element(3, 1, test::I({32})) +
                       test::Element(4, 1,
                                     std::string(8, '\0') + test::Big(static_cast<uint32_t>(x), 4) +
                                         test::Big(static_cast<uint32_t>(y), 4)));
    test::Drawing drawing(cgm);
    VectorPoint least, before, after;
    VectorGetExtent(&drawing.handle, &least, &before);
    const int32_t status = Orb_NITFAppendGraphicSegment(handle, &drawing.handle, &rectangle);
    VectorGetExtent(&drawing.handle, &least, &after);
    EXPECT_TRUE(status == 1 || (before.x == after.x && before.y == after.y))
        << "a refused drawing is not moved";
    return status;
  };
  EXPECT_EQ(append(100000, 5), ORB_INVALID_PARAMETER);
  EXPECT_EQ(append(5, -100000), ORB_INVALID_PARAMETER);
  EXPECT_EQ(Orb_NITFGetGraphicHeaderCount(handle), 0u);
  EXPECT_EQ(handle->header.fileLength, 388u);
  EXPECT_EQ(append(99999, 5), 1);
}

}  // namespace
