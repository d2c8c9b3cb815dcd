// Saving, appending, replacing and reading content.
#include <filesystem>

#include "tests/support/layout.h"
#include "tests/support/metafile.h"
#include "tests/support/objects.h"

namespace {

using test::ImageForm;
using test::NitfBuilder;
using namespace std::string_literals;

using test::Bitmap;
using test::Handle;
using test::Saved;

// A drawing of one square.
class Square : public test::Drawing {
 public:
  explicit Square(const std::string& corner = std::string("\x00\x0A\x00\x0A\x00\x32\x00\x28", 8))
      : Drawing(std::string("\x00\x22\x01t", 4) + std::string("\x00\x62\x01p", 4) +
                std::string("\x20\x42\x00\x01", 4) + std::string("\x00\x80", 2) +
                std::string("\x52\xC2\x00\x01", 4) + std::string("\x41\x68", 2) + corner +
                std::string("\x00\xA0\x00\x40", 4)) {}
};

using SaveTest = test::ModuleTest;
/// Tests that have the host compress images.
class CompressedSaveTest : public test::ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    if (!test::HostHasCodecs()) GTEST_SKIP() << "the host toolkit of this build has no codecs";
  }
};

NitfBuilder FullFile() {
  NitfBuilder file;
  test::Record image = test::ImageRecord({});
  image.Set("UDIDL", 14)
      .InsertAfter("UDIDL", "UDI", "000TAGTWO00000")
      .Set("IXSHDL", 3)
      .InsertAfter("IXSHDL", "IXS", "001");
  file.header.Set("XHDL", 14).InsertAfter("XHDL", "XH", "000TAGONE00000");
  file.Image(image, std::string(64, 'i')).Image(ImageForm{}, std::string(64, 'j'));
  test::Record graphic = test::GraphicRecord();
  graphic.Set("SFMT", "B").Set("SXSHDL", 4).InsertAfter("SXSHDL", "SXS", "000x");
  file.Graphic(graphic, "symbol").Text("some text").Text("");
  file.extensions.push_back({test::DataExtensionRecord("TRE_OVERFLOW"), "overflow"});
  test::Record extension = test::DataExtensionRecord("OTHER");
  extension.Set("DESSHL", 5).InsertAfter("DESSHL", "DESSHF", "abcde");
  file.extensions.push_back({extension, ""});
  return file;
}

TEST_F(SaveTest, CopiesAreTheSameBytes) {
  std::vector<std::pair<std::string, std::string>> files = {{"full", FullFile().Bytes()},
                                                            {"empty", NitfBuilder().Bytes()}};
  const std::filesystem::path samples = std::filesystem::path(PROJECT_SOURCE_DIR) / "../shared/samples";
  if (std::filesystem::exists(samples)) {
    for (const auto& entry : std::filesystem::directory_iterator(samples)) {
      if (entry.path().extension() == ".ntf")
        files.emplace_back(entry.path().stem().string(), test::ReadFile(entry.path()));
    }
  }
  for (const auto& [name, bytes] : files) {
    SCOPED_TRACE(name);
    const test::TempFile original(bytes);
    const test::TempFile copy(Saved(Handle(original)));
    std::string contents = copy.Contents();
    EXPECT_EQ(test::CheckLayout(contents), "");
    EXPECT_EQ(Saved(Handle(copy)), contents);
    if (bytes.size() < 300000) {
      EXPECT_TRUE(test::Render(copy).pixels == test::Render(original).pixels);
    }
    // The only field that a copy writes in a form of its own here is COMRAT.
    std::string expected = bytes;
    const std::string rate = test::FirstCompressionRate(bytes);
    if (!rate.empty() && rate != test::FirstCompressionRate(contents)) {
      EXPECT_EQ(test::FirstCompressionRate(contents), "00.0");
      expected = test::WithCompressionRate(bytes, "00.0");
    }
    EXPECT_TRUE(contents == expected);
  }
}

TEST_F(SaveTest, FixedWritingsReplaceWhatAFileHeld) {
  NitfBuilder file;
  test::Record image = test::ImageRecord({});
  image.Set("PVTYPE", "I  ").Set("IMAG", "/2  ").Set("PJUST", "X").Set("IREP", "RGBX");
  image.Set("IREPBAND0", "??");
  test::Record graphic = test::GraphicRecord();
  graphic.Set("SFMT", "B").Set("SCOLOR", "M");
  file.Image(image, std::string(64, 'i')).Graphic(graphic, "x");
  const test::TempFile original(file.Bytes());
  image.Set("PVTYPE", "INT")
      .Set("IMAG", "0.5 ")
      .Set("PJUST", "R")
      .Set("IREP", "RGB")
      .Set("IREPBAND0", "  ");
  graphic.Set("SCOLOR", "C");
  NitfBuilder expected;
  expected.Image(image, std::string(64, 'i')).Graphic(graphic, "x");
  EXPECT_EQ(Saved(Handle(original)), expected.Bytes());
}

TEST_F(SaveTest, AMaskedVectorQuantisedImageIsRewrittenWithItsLengths) {
  // A header and one table of 16 codes, then the codes of block 0; bytes that belong to nothing follow.
  std::string vq = test::Big(4, 4) + test::Big(4, 4) + test::Big(8, 1) + test::Big(1, 2) +
                   test::Big(4, 2) + test::Big(0, 2) + test::Big(6, 4) + test::Big(14, 2);
  for (int table = 0; table < 4; ++table) {
    vq += test::Big(static_cast<uint64_t>(table), 2) + test::Big(16, 4) + test::Big(4, 2) +
          test::Big(8, 2) + test::Big(0, 4);
  }
  vq += std::string(4 * 16 * 4, 'v') + std::string(16, '\x05');
  ImageForm form;
  form.width = form.height = 16;
  form.blocksAcross = 2;
  form.compression = "M4";
  const std::string mask = test::MaskBytes({.blocks = {0, 0xFFFFFFFF}});
  NitfBuilder file;
  file.Image(form, mask + vq + "unused").Image(ImageForm{}, std::string(64, 'n')).Text("after it");
  const test::TempFile original(file.Bytes());
  const Handle handle(original);
  const test::TempFile copy(Saved(handle));
  NitfBuilder expected;
  expected.Image(form, mask + vq).Image(ImageForm{}, std::string(64, 'n')).Text("after it");
  expected.Patch("FL", test::Digits(static_cast<int64_t>(file.Bytes().size()), 12));
  EXPECT_EQ(copy.Contents(), expected.Bytes());
  EXPECT_EQ(Saved(handle), copy.Contents()) << "patched lengths do not move the source";
  EXPECT_TRUE(test::Render(copy).pixels == test::Render(original).pixels);
}

TEST_F(CompressedSaveTest, AppendedImagesAreDescribedAndCounted) {
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
  EXPECT_EQ(test::CheckLayout(file.Contents()), "");
  const auto picture = test::Render(file);
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.width, 20u);
  EXPECT_NEAR(picture.At(15, 8).red, 0xC0, 4);
  EXPECT_NEAR(picture.At(15, 8).blue, 0x40, 4);
  EXPECT_EQ(Orb_NITFGetImageHeaderCount(handle), 3u);
}

TEST_F(CompressedSaveTest, SegmentDatesAreLoweredByOnePiece) {
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
  EXPECT_EQ(dates("01010101010101"), std::pair("01010101010101"s, "01010101010101"s));
  EXPECT_EQ(dates("--------------"), std::pair("--------------"s, "--------------"s));
}

TEST_F(SaveTest, RefusedAppendsChangeNothing) {
  const Handle handle;
  const Bitmap bitmap(4, 4, 24);
  auto* record = const_cast<KernelBitmap*>(&bitmap.record);
  KernelBitmap empty = {};
  Square square;
  VectorHandle nothing{};
  RECT rectangle = {0, 0, 50, 40};
  EXPECT_EQ(Orb_NITFAppendImageSegment(nullptr, record, 182, 24, 50), -261);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, nullptr, 182, 24, 50), -2);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, &empty, 182, 24, 50), -2);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, record, 182, 16, 50), -27);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, record, 182, 24, 1), -21);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, record, 182, 24, 256), -21);
  EXPECT_EQ(Orb_NITFAppendImageSegment(handle, record, 11, 24, 255), -9);
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(nullptr, &square.handle, &rectangle), -261);
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, &square.handle, nullptr), -261);
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, nullptr, &rectangle), -814);
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, &nothing, &rectangle), -501);
  rectangle.right = 100000;
  EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, &square.handle, &rectangle), -13)
      << "six digits do not fit";
  EXPECT_EQ(Orb_NITFAppendTextSegment(nullptr, u"x"), -261);
  EXPECT_EQ(Orb_NITFAppendTextSegment(handle, u"/no/such/text"), -14);
  EXPECT_EQ(Orb_NITFAppendTextSegmentA(handle, "\xFF"), -1);
  EXPECT_EQ(Orb_NITFAppendTextSegment(handle, test::TempFile(std::string(100000, 't')).Wide()), -13);
  EXPECT_EQ(Orb_NITFGetStatus(handle), 3);
  EXPECT_EQ(handle->header.fileLength, 388u);
  EXPECT_EQ(Orb_NITFAppendTextSegment(handle, test::TempFile("a later one").Wide()), 1);
}

TEST_F(SaveTest, GraphicsAndTextsKeepTheHeaderInStep) {
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
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 2, buffer, &count), 87);
  const test::TempFile saved(Saved(handle));
  EXPECT_EQ(test::CheckLayout(saved.Contents()), "");
  if (!test::HostPaintsDrawings()) return;
  const auto picture = test::Render(saved);
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.width, 52u);
  EXPECT_EQ(picture.At(30, 15), test::Rgb{}) << "the square, drawn where the rectangle puts it";
  EXPECT_EQ(picture.At(45, 32), test::kWhite);
}

TEST_F(SaveTest, ATextFillsNoMoreThanItsLength) {
  const Handle handle;
  const test::TempFile words(std::string(100, 'w'), ".txt");
  ASSERT_EQ(Orb_NITFAppendTextSegment(handle, words.Wide()), 1);
  handle->header.texts.current[0].data = 10;  // as a caller may set it
  std::vector<char> buffer(11, 'x');
  uint32_t count = 0;
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 0, buffer.data(), &count), 1);
  EXPECT_EQ(count, 10u);
  EXPECT_EQ(buffer[10], '\0');
}

TEST_F(SaveTest, AnAppendBeforeGetAndSetStillSavesItsHeaderLength) {
  const test::TempFile file(FullFile().Bytes()), words("words", ".txt");
  const Handle handle(file);
  ASSERT_EQ(Orb_NITFAppendTextSegment(handle, words.Wide()), 1);
  NITFHeader header = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &header), 1);
  header.XHDL = 14;  // what Get leaves alone
  header.NUMDES = 2;
  EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &header), 1);
  Orb_NITFFreeNITFHeader(&header);
  EXPECT_EQ(test::CheckLayout(Saved(handle)), "");
}

TEST_F(SaveTest, DrawingsAreGivenAndReplaced) {
  Square square, other(std::string("\x00\x00\x00\x00\x00\x05\x00\x05", 8));
  VectorHandle nothing{};
  const RECT rectangle = {0, 0, 60, 60};
  const Handle made;
  ASSERT_EQ(Orb_NITFAppendGraphicSegment(made, &square.handle, &rectangle), 1);
  ASSERT_EQ(Orb_NITFAppendGraphicSegment(made, &other.handle, &rectangle), 1);
  const test::TempFile file(Saved(made));
  const Handle handle(file);
  EXPECT_EQ(Orb_NITFGetVectorHandle(nullptr, 0), nullptr);
  EXPECT_EQ(Orb_NITFGetVectorHandle(handle, 2), nullptr);
  VectorHandle* drawing = Orb_NITFGetVectorHandle(handle, 1);
  ASSERT_NE(drawing, nullptr);
  VectorPoint least, greatest;
  VectorGetExtent(drawing, &least, &greatest);
  EXPECT_EQ(greatest.x - least.x, 5) << "the second segment's drawing";
  EXPECT_EQ(Orb_NITFSetVectorHandle(nullptr, 0, &square.handle), -261);
  EXPECT_EQ(Orb_NITFSetVectorHandle(handle, 9, &square.handle), -13);
  EXPECT_EQ(Orb_NITFSetVectorHandle(handle, 0, nullptr), -814);
  EXPECT_EQ(Orb_NITFSetVectorHandle(handle, 0, &nothing), -501);
  ASSERT_EQ(Orb_NITFSetVectorHandle(handle, 0, &other.handle), 1);
  const test::TempFile saved(Saved(handle));
  const Handle reopened(saved);
  drawing = Orb_NITFGetVectorHandle(reopened, 0);
  ASSERT_NE(drawing, nullptr);
  VectorGetExtent(drawing, &least, &greatest);
  EXPECT_EQ(greatest.x - least.x, 5);
}

TEST_F(CompressedSaveTest, ADocumentHoldsNineHundredNinetyNineOfEachKind) {
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
  EXPECT_EQ(test::CheckLayout(file.Contents()), "");
  const Handle reopened(file);
  EXPECT_EQ(Orb_NITFGetImageHeaderCount(reopened), 999u);
  EXPECT_EQ(Orb_NITFGetTextHeaderCount(reopened), 999u);
  EXPECT_EQ(Orb_NITFGetGraphicHeaderCount(reopened), 999u);
  EXPECT_EQ(test::Render(file).status, 1);
}

TEST_F(SaveTest, TheSourceFileIsNotOverwritten) {
  const test::TempFile file(FullFile().Bytes());
  const Handle handle(file);
  const std::string spelling = testing::TempDir() + "./" + file.Path().substr(testing::TempDir().size());
  EXPECT_EQ(Orb_NITFSaveFile(handle, file.Wide()), -13);
  EXPECT_EQ(Orb_NITFSaveFileA(handle, spelling.c_str()), -13);
  EXPECT_EQ(file.Contents(), FullFile().Bytes());
  EXPECT_EQ(Orb_NITFSaveFile(nullptr, u"x"), -261);
  EXPECT_EQ(Orb_NITFSaveFileA(handle, "\xC3"), -1);
  EXPECT_EQ(Orb_NITFSaveFile(handle, u"/no/such/folder/file"), -5);
}

TEST_F(CompressedSaveTest, SavingAndAppendingSurviveEveryFault) {
  const test::TempFile file(FullFile().Bytes()), text("appended", ".txt");
  const auto save = [&] {
    NitfHandle handle = nullptr;
    const Bitmap bitmap(8, 8, 24);
    int32_t status = Orb_NITFCreate(&handle, file.Wide());
    if (status != 1) return status;
    status = Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&bitmap.record), 182, 24, 20);
    if (status == 1) status = Orb_NITFAppendTextSegment(handle, text.Wide());
    const test::TempFile copy;
    if (status == 1) status = Orb_NITFSaveFile(handle, copy.Wide());
    if (status == 1) {
      EXPECT_EQ(test::CheckLayout(copy.Contents()), "");
    }
    Orb_NITFDestroy(&handle);
    return status;
  };
  // The close of a file that was only read loses nothing.
  for (HostkitFault fault : {kFaultRead, kFaultWrite, kFaultClose})
    test::ForEachFault(fault, {-7, -5, 1}, save);
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

TEST_F(SaveTest, ANewDocumentIsWrittenWithItsDefaults) {
  const Handle handle;
  const std::string bytes = Saved(handle);
  ASSERT_EQ(bytes.size(), 388u);
  EXPECT_EQ(bytes.substr(0, 9), "NITF02.10");
  EXPECT_EQ(bytes.substr(15, 10), "0000000000") << "OSTAID";
  EXPECT_EQ(bytes.substr(286, 11), "00000000000") << "FSCOP, FSCPYS, ENCRYP";
  EXPECT_EQ(test::CheckLayout(bytes), "");
}

TEST_F(SaveTest, BandRecordsAreAsManyAsTheCountSays) {
  for (const int extended : {5, 12}) {
    ImageForm form;
    form.bands = extended;
    form.representation = "MULTI";
    test::Record record = test::ImageRecord(form);
    if (extended == 5) record.Set("NBANDS", 0).InsertAfter("NBANDS", "XBANDS", "00005");
    const test::TempFile file(NitfBuilder().Image(record, std::string(64 * 12, 'i')).Bytes());
    const Handle handle(file);
    EXPECT_EQ(Saved(handle), file.Contents()) << "XBANDS counts the bands";
    ASSERT_EQ(handle->images.At(0)->SetBandCount(3), Status::Success);
    EXPECT_EQ(handle->images.At(0)->BandCount(), static_cast<uint32_t>(extended)) << "the larger one";
    const std::string bytes = Saved(handle);
    const size_t place = bytes.find("NC", 404 + 300);
    EXPECT_EQ(bytes[place + 2], extended == 5 ? '5' : '0');
    EXPECT_EQ(bytes.substr(place + 3 + (extended == 5 ? 13 * 5 : 5 + 13 * 12), 2), "0B")
        << "ISYNC, IMODE";
  }
}

TEST_F(SaveTest, ExtentsBeyondFiveDigitsAreRefused) {
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
  EXPECT_EQ(append(100000, 5), -13);
  EXPECT_EQ(append(5, -100000), -13);
  EXPECT_EQ(Orb_NITFGetGraphicHeaderCount(handle), 0u);
  EXPECT_EQ(handle->header.fileLength, 388u);
  EXPECT_EQ(append(99999, 5), 1);
}

TEST_F(SaveTest, TextsCutShortGiveTheirLengthOnly) {
  NitfBuilder builder;
  builder.Text("twenty characters...");
  std::string bytes = builder.Bytes();
  bytes.resize(bytes.size() - 5);
  const test::TempFile file(bytes);
  const Handle handle(file);
  uint32_t length = 0;
  char buffer[32];
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 0, nullptr, &length), 1);
  EXPECT_EQ(length, 20u);
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 0, buffer, &length), -7);
}

}  // namespace
