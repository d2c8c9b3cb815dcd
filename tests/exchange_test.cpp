// Exchange of records where lengths, bytes and pointers meet.
#include <array>
#include <cmath>
#include <cstring>

#include "tests/support/objects.h"

namespace {

using test::ImageForm;
using test::NitfBuilder;

using ExchangeTest = test::ModuleTest;

// Bytes in kernel memory, as a record that is filled holds them.
uint8_t* Held(const char* text) {
  const size_t size = std::strlen(text) + 1;
  auto* bytes = static_cast<uint8_t*>(KernelAllocate(size, 1, __LINE__, u"test"));
  std::memcpy(bytes, text, size);
  return bytes;
}

TEST_F(ExchangeTest, BytesBehindARefusedLengthAreRefused) {
  NitfBuilder both = test::FullFile();
  both.header.Set("UDHDL", 14).InsertAfter("UDHDL", "UDH", "000TAGUSE00000");
  const test::TempFile file(both.Bytes());
  for (const int32_t refused : {1, 2, -5, 100000, INT32_MIN}) {
    const test::Handle handle(file);
    FileHeader& header = handle->header;
    const std::string user(header.userDefined.Data()), extended(header.extended.Data());
    ASSERT_FALSE(user.empty());
    ASSERT_FALSE(extended.empty());
    NITFHeader record = {};
    ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &record), 1);
    // Fewer bytes than the lengths that the document has.
    record.UDHDL = record.XHDL = refused;
    record.UDHD = Held("x");
    record.XHD = Held("y");
    EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
    EXPECT_EQ(std::string(header.userDefined.Data()), user) << refused;
    EXPECT_EQ(std::string(header.extended.Data()), extended) << refused;
    EXPECT_EQ(header.userDefined.length.value, user.size() + 3) << refused;
    // A length that is taken takes its bytes.
    record.UDHDL = 4;
    EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
    EXPECT_EQ(std::string(header.userDefined.Data()), "x");
    EXPECT_EQ(std::string(header.extended.Data()), extended);
    Orb_NITFFreeNITFHeader(&record);
  }
}

TEST_F(ExchangeTest, ExtendedDataThatARecordHoldsIsFreedFirst) {
  test::NitfBuilder bare = test::FullFile();
  const test::TempFile full(bare.Bytes());
  NitfBuilder plain;
  plain.Image(ImageForm{}, std::string(64, 'x')).Graphic(test::GraphicRecord(), "").Text("words");
  const test::TempFile without(plain.Bytes());
  // Always of a text; of an image and a graphic where there is something to put there.
  const test::Handle empty(without);
  TextHeader text = {};
  text.TXSHD = Held("old");
  ASSERT_EQ(Orb_NITFGetTextHeader(empty, 0, &text), 1);
  EXPECT_TRUE(text.TXSHD == nullptr) << "the leak tracker tells whether it was freed";
  Orb_NITFFreeTextHeader(&text);
  ImageHeader image = {};
  uint8_t* old = image.IXSHD = Held("old");
  ASSERT_EQ(Orb_NITFGetImageHeader(empty, 0, &image), 1);
  EXPECT_TRUE(image.IXSHD == old);
  Orb_NITFFreeImageHeader(&image);
  const test::Handle handle(full);
  image.IXSHD = Held("old");
  ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
  EXPECT_EQ(std::memcmp(image.IXSHD, "TAGONE", 6), 0);
  Orb_NITFFreeImageHeader(&image);
  text.TXSHD = Held("old");
  ASSERT_EQ(Orb_NITFGetTextHeader(handle, 0, &text), 1);
  Orb_NITFFreeTextHeader(&text);
}

TEST_F(ExchangeTest, ExtendedDataTakesItsLengthAndATerminator) {
  const test::TempFile file(test::FullFile().Bytes());
  const test::Handle handle(file);
  ImageHeader image = {};
  ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
  const uint64_t held = HostkitBytesHeld();
  KernelFree(image.IXSHD, __LINE__, u"test");
  image.IXSHD = nullptr;
  EXPECT_EQ(held - HostkitBytesHeld(), static_cast<uint64_t>(image.IXSHDL) - 3 + 1);
  Orb_NITFFreeImageHeader(&image);
}

class AppendExchangeTest : public test::CodecTest {};

TEST_F(AppendExchangeTest, AFreshImageGivenBackIsSavedTheSame) {
  const test::Handle handle;
  test::Bitmap bitmap(9, 7, 24);
  ASSERT_EQ(Orb_NITFAppendImageSegment(handle, &bitmap.record, kFormatJpegRgb, 24, 30), 1);
  const std::string before = test::Saved(handle);
  ImageHeader image = {};
  ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
  ASSERT_EQ(Orb_NITFSetImageHeader(handle, 0, &image), 1);
  Orb_NITFFreeImageHeader(&image);
  EXPECT_EQ(test::Saved(handle), before);
  EXPECT_EQ(handle->images.At(0)->magnification, 1.0);
}

TEST_F(ExchangeTest, ABlankMagnificationIsOne) {
  test::Record record = test::ImageRecord(ImageForm{});
  record.Set("IMAG", "    ");
  const test::TempFile file(NitfBuilder().Image(record, std::string(64, 'x')).Bytes());
  const test::Handle handle(file);
  EXPECT_EQ(handle->images.At(0)->magnification, 1.0);
  EXPECT_EQ(handle->images.At(0)->SetMagnification("0.5"), Status::Success);
  EXPECT_EQ(handle->images.At(0)->magnification, 0.5);
}

TEST_F(ExchangeTest, LengthsOfMaskRecordsAreGiven) {
  const std::pair<test::MaskForm, std::array<uint32_t, 3>> forms[] = {
      {{.blocks = {0}}, {4, 0, 0}}, {{.pads = {0}}, {0, 4, 0}}, {{.padCode = 7}, {0, 0, 8}}};
  for (const auto& [mask, lengths] : forms) {
    const ImageForm form{.compression = "NM"};
    const test::TempFile file(
        NitfBuilder().Image(form, test::MaskBytes(mask) + std::string(64, 'x')).Bytes());
    const test::Handle handle(file);
    ImageHeader image = {};
    ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
    EXPECT_EQ((std::array<uint32_t, 3>{image.BMRLNTH, image.TMRLNTH, image.TPXCDLNTH}), lengths);
    Orb_NITFFreeImageHeader(&image);
  }
}

TEST_F(ExchangeTest, VersionsLevelsAndLengthsAreSetWithinTheirBounds) {
  NitfBuilder builder = test::FullFile();
  const test::TempFile file(builder.Bytes());
  const test::Handle handle(file);
  NITFHeader record = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &record), 1);
  for (const auto& [given, text] : {std::pair{1.0F, "01.00"},
                                    {99.99F, "99.99"},
                                    {0.0F, "00.00"},
                                    {2.1F, "02.10"},
                                    {-0.01F, "02.10"},
                                    {100.0F, "02.10"},
                                    {std::nanf(""), "02.10"}}) {
    record.FVER = given;
    ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
    EXPECT_STREQ(handle->header.FVER.text, text) << given;
  }
  for (const auto& [given, text] :
       {std::pair{1, "01"}, {7, "07"}, {99, "99"}, {0, "99"}, {8, "99"}, {98, "99"}, {100, "99"}}) {
    record.CLEVEL = given;
    ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
    EXPECT_STREQ(handle->header.CLEVEL.text, text) << given;
  }
  // From the length of a header without segments on, it is what a save writes.
  for (const auto& [given, counts] : {std::pair{500, 500u}, {387, 500u}, {388, 388u}}) {
    record.HL = given;
    ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
    EXPECT_EQ(DecimalOf(handle->header.HL.text), given);
    EXPECT_EQ(handle->header.currentHeaderLength, counts) << given;
  }
  // Counts of extensions are texts of their own.
  record.NUMDES = 5;
  record.NUMRES = 6;
  ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
  EXPECT_STREQ(handle->header.NUMDES.text, "005");
  EXPECT_STREQ(handle->header.NUMRES.text, "006");
  Orb_NITFFreeNITFHeader(&record);
}

TEST_F(ExchangeTest, TablesOfLengthsAreThoseOfTheFile) {
  NitfBuilder builder;
  builder.Image(ImageForm{}, std::string(64, 'x')).Image(ImageForm{.width = 4}, std::string(32, 'y'));
  builder.Graphic(test::GraphicRecord(), "abc").Text("words").Text("more words");
  const test::TempFile file(builder.Bytes());
  const test::Handle handle(file);
  NITFHeader record = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &record), 1);
  const auto table = [](const int32_t* lengths, int32_t count) {
    return lengths == nullptr ? std::vector<int32_t>() : std::vector<int32_t>(lengths, lengths + count);
  };
  EXPECT_EQ(table(record.LISH, record.NUMI), (std::vector<int32_t>{439, 439}));
  EXPECT_EQ(table(record.LI, record.NUMI), (std::vector<int32_t>{64, 32}));
  EXPECT_EQ(table(record.LSSH, record.NUMS), (std::vector<int32_t>{258}));
  EXPECT_EQ(table(record.LS, record.NUMS), (std::vector<int32_t>{3}));
  EXPECT_EQ(table(record.LTSH, record.NUMT), (std::vector<int32_t>{282, 282}));
  EXPECT_EQ(table(record.LT, record.NUMT), (std::vector<int32_t>{5, 10}));
  Orb_NITFFreeNITFHeader(&record);
}

TEST_F(ExchangeTest, AnOverflowFieldAloneHasNoBytes) {
  test::Record subheader = test::ImageRecord(ImageForm{});
  subheader.Set("IXSHDL", 3).InsertAfter("IXSHDL", "IXSOFL", "000");
  const test::TempFile file(NitfBuilder().Image(subheader, std::string(64, 'x')).Bytes());
  const test::Handle handle(file);
  ImageHeader image = {};
  uint8_t* old = image.IXSHD = Held("old");
  ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
  EXPECT_TRUE(image.IXSHD == old) << "there is nothing to put there";
  Orb_NITFFreeImageHeader(&image);
}

TEST_F(ExchangeTest, SettersRefuseWhatHasNoRoom) {
  NitfBuilder builder = test::FullFile();
  const test::TempFile file(builder.Bytes());
  const test::Handle handle(file);
  ImageSubheader& image = *handle->images.At(0);
  EXPECT_EQ(image.SetCoordinates("UU"), Status::InvalidParameter);
  EXPECT_EQ(image.SetCoordinates(nullptr), Status::InvalidParameter);
  // Lengths are those of a document's own segments.
  ImageSubheader fresh;
  EXPECT_EQ(fresh.SetCoordinates("U"), Status::Success);
  EXPECT_STREQ(fresh.ICORDS.text, "U");
  handle->header.SetBackground(0xFF030201);
  EXPECT_EQ(std::string(handle->header.FBKGC.text), "\1\2\3");
  const uint32_t comments = LengthOf(image.NICOM.text);
  ASSERT_GT(comments, 0u);
  EXPECT_EQ(image.SetComment(comments - 1, "last"), Status::Success);
  EXPECT_EQ(image.SetComment(comments, "none"), Status::InvalidParameter);
  EXPECT_EQ(image.SetCommentCount(static_cast<int32_t>(comments) - 1), Status::Success);
  EXPECT_EQ(image.SetComment(comments - 1, "none"), Status::InvalidParameter) << "the count says so";
  EXPECT_EQ(image.SetCommentCount(static_cast<int32_t>(comments) + 1), Status::InvalidParameter);
}

TEST_F(ExchangeTest, SegmentsOfAnyKindAreSegments) {
  const auto status = [](NitfBuilder& builder) {
    const test::TempFile file(builder.Bytes());
    return Orb_NITFGetStatus(test::Handle(file));
  };
  NitfBuilder none, image, graphic, text, all;
  const int32_t some = status(image.Image(ImageForm{}, std::string(64, 'x')));
  EXPECT_EQ(status(none), some + 1);
  EXPECT_EQ(status(graphic.Graphic(test::GraphicRecord(), "")), some);
  EXPECT_EQ(status(text.Text("words")), some);
  all.Image(ImageForm{}, std::string(64, 'x')).Graphic(test::GraphicRecord(), "").Text("a").Text("b");
  EXPECT_EQ(status(all), some);
  image.Text("as many");
  EXPECT_EQ(status(image), some);
}

TEST_F(ExchangeTest, CountsOfNone) {
  EXPECT_EQ(Orb_NITFGetImageHeaderCount(nullptr), 0u);
  EXPECT_EQ(Orb_NITFGetGraphicHeaderCount(nullptr), 0u);
  EXPECT_EQ(Orb_NITFGetTextHeaderCount(nullptr), 0u);
}

TEST_F(ExchangeTest, OptionsOfALoadAreBits) {
  for (const uint32_t bit : {0u, kLoadFixedCanvas, kLoadLiftDarkImages, kLoadGraphicOption}) {
    NitfFile document;
    document.TakeOptions(bit);
    EXPECT_EQ(document.fixedCanvas, bit == kLoadFixedCanvas);
    EXPECT_EQ(document.liftDarkImages, bit == kLoadLiftDarkImages);
    EXPECT_EQ(document.graphicOption, bit == kLoadGraphicOption);
  }
}

TEST_F(ExchangeTest, CountsOfNoneAreSet) {
  const test::TempFile file(NitfBuilder().Text("a text").Bytes());
  const test::Handle handle(file);
  NITFHeader record = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &record), 1);
  ASSERT_EQ(record.NUMT, 1);
  for (const int32_t count : {-1, 0}) {
    record.NUMT = count;
    ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
    NITFHeader now = {};
    ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &now), 1);
    EXPECT_EQ(now.NUMT, count == 0 ? 0 : 1);
    Orb_NITFFreeNITFHeader(&now);
  }
  record.NUMT = 1;
  Orb_NITFFreeNITFHeader(&record);
}

TEST_F(ExchangeTest, LengthsThatARecordCannotHoldStayWhenTheyAreGivenBack) {
  NitfBuilder builder;
  builder.Image(ImageForm{}, std::string(64, 'x')).Patch("LI0", "3000000000");
  const test::TempFile file(builder.Bytes());
  const test::Handle handle(file);
  NITFHeader record = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &record), 1);
  ASSERT_EQ(record.LI[0], INT32_MAX);
  ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
  EXPECT_EQ(handle->header.images.Current(0).data, 3000000000u);
  record.LI[0] = INT32_MAX - 1;
  ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
  EXPECT_EQ(handle->header.images.Current(0).data, uint32_t{INT32_MAX} - 1);
  record.LI[0] = 0;
  ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
  EXPECT_EQ(handle->header.images.Current(0).data, 0u);
  record.LI[0] = INT32_MAX - 1;
  ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
  record.LI[0] = -1;
  ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &record), 1);
  EXPECT_EQ(handle->header.images.Current(0).data, uint32_t{INT32_MAX} - 1) << "no length is negative";
  Orb_NITFFreeNITFHeader(&record);
}

}  // namespace
