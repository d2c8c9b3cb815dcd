// Document API: handles, status and header exchange.
#include <cstring>
#include <filesystem>

#include "Common/Exchange.h"
#include "Common/NitfFile.h"
#include "tests/support/support.h"

namespace {

using test::ImageForm;
using test::NitfBuilder;

class ApiTest : public test::ModuleTest {
 protected:
  void TearDown() override {
    if (handle_ != nullptr) Orb_NITFDestroy(&handle_);
    ModuleTest::TearDown();
  }
  NitfHandle Open(const std::string& bytes) {
    file_.emplace(bytes);
    if (handle_ != nullptr) Orb_NITFDestroy(&handle_);
    EXPECT_EQ(Orb_NITFCreate(&handle_, file_->Wide()), 1);
    return handle_;
  }
  NitfHandle OpenEmpty() {
    EXPECT_EQ(Orb_NITFCreate(&handle_, nullptr), 1);
    return handle_;
  }
  NitfHandle handle_ = nullptr;
  std::optional<test::TempFile> file_;
};

TEST_F(ApiTest, HandlesLiveFromCreateToDestroy) {
  NitfHandle handle = reinterpret_cast<NitfHandle>(1);
  EXPECT_EQ(Orb_NITFCreate(nullptr, nullptr), ORB_OUT_OF_MEMORY);
  EXPECT_EQ(Orb_NITFCreate(&handle, u"/no/such/file"), ORB_FILE_NOT_FOUND);
  EXPECT_EQ(handle, nullptr);
  const test::TempFile notNitf("something else entirely");
  EXPECT_EQ(Orb_NITFCreateA(&handle, notNitf.Path().c_str()), ORB_BAD_STRUCTURE);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(Orb_NITFCreateA(&handle, nullptr), ORB_OUT_OF_MEMORY);
  EXPECT_EQ(Orb_NITFCreateA(&handle, "no/such/\xC3"), ORB_FILE_NOT_FOUND);
  EXPECT_EQ(Orb_NITFCreate(&handle, nullptr), 1);
  EXPECT_EQ(Orb_NITFGetStatus(handle), 3);
  EXPECT_EQ(Orb_NITFGetImageHeaderCount(handle), 0u);
  EXPECT_EQ(Orb_NITFDestroy(&handle), 1);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(Orb_NITFDestroy(&handle), ORB_NULL_HANDLE);
  EXPECT_EQ(Orb_NITFDestroy(nullptr), ORB_NULL_HANDLE);
  EXPECT_EQ(Orb_NITFGetStatus(nullptr), ORB_NULL_HANDLE);
  EXPECT_EQ(Orb_NITFGetTextHeaderCount(nullptr), 0u);
  const NitfHandle full = Open(test::FullFile().Bytes());
  EXPECT_EQ(Orb_NITFGetStatus(full), 2);
  EXPECT_EQ(Orb_NITFGetGraphicHeaderCount(full), 1u);
  NitfBuilder extensionsOnly;
  extensionsOnly.extensions.push_back({test::DataExtensionRecord("TRE_OVERFLOW"), ""});
  EXPECT_EQ(Orb_NITFGetStatus(Open(extensionsOnly.Bytes())), 3);
}

TEST_F(ApiTest, NullArgumentsHaveTheirStatuses) {
  const NitfHandle handle = Open(test::FullFile().Bytes());
  NITFHeader file = {};
  ImageHeader image = {};
  GraphicHeader graphic = {};
  TextHeader text = {};
  EXPECT_EQ(Orb_NITFGetNITFHeader(nullptr, &file), 0);
  EXPECT_EQ(Orb_NITFSetNITFHeader(nullptr, &file), 0);
  EXPECT_EQ(Orb_NITFGetNITFHeader(handle, nullptr), ORB_NO_SUCH_RECORD);
  EXPECT_EQ(Orb_NITFSetNITFHeader(handle, nullptr), ORB_NO_SUCH_RECORD);
  EXPECT_EQ(Orb_NITFGetImageHeader(nullptr, 0, &image), 0);
  EXPECT_EQ(Orb_NITFGetImageHeader(handle, 0, nullptr), ORB_INVALID_PARAMETER);
  EXPECT_EQ(Orb_NITFSetImageHeader(handle, 0, nullptr), ORB_NO_SUCH_RECORD);
  EXPECT_EQ(Orb_NITFGetImageHeader(handle, 2, &image), ORB_NO_SUCH_RECORD);
  EXPECT_EQ(Orb_NITFSetImageHeader(handle, 2, &image), ORB_NO_SUCH_RECORD);
  EXPECT_EQ(Orb_NITFGetGraphicHeader(nullptr, 0, &graphic), 0);
  EXPECT_EQ(Orb_NITFGetGraphicHeader(handle, 0, nullptr), ORB_NO_SUCH_RECORD);
  EXPECT_EQ(Orb_NITFSetGraphicHeader(handle, 7, &graphic), ORB_NO_SUCH_RECORD);
  EXPECT_EQ(Orb_NITFGetTextHeader(handle, 0, nullptr), ORB_NO_SUCH_RECORD);
  EXPECT_EQ(Orb_NITFSetTextHeader(nullptr, 0, &text), 0);
  EXPECT_EQ(Orb_NITFSetImageHeader(handle, 0, &image), ORB_INVALID_PARAMETER)
      << "null strings are refused";
  EXPECT_EQ(Orb_NITFFreeImageHeader(&image), 1);
  EXPECT_EQ(Orb_NITFFreeTextHeader(nullptr), ORB_NO_SUCH_RECORD);
}

TEST_F(ApiTest, RecordsHoldWhatTheFileSays) {
  const NitfHandle handle = Open(test::FullFile().Bytes());
  ImageHeader image = {};
  ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
  EXPECT_STREQ(image.IID1, "Test image");
  EXPECT_EQ(std::string(image.IDATIM, 14), "20261124120000");
  EXPECT_EQ(+image.ILOCrow, 123);
  EXPECT_EQ(+image.ILOCcolumn, -456);
  ASSERT_EQ(+image.NICOM, 2u);
  EXPECT_EQ(std::string(image.ICOM[1]), std::string(80, 'b'));
  EXPECT_STREQ(image.UDID, "TAGTWO00001x");
  EXPECT_EQ(std::string(reinterpret_cast<char*>(image.IXSHD), 11), "TAGONE00000");
  EXPECT_EQ(Orb_NITFFreeImageHeader(&image), 1);
  EXPECT_TRUE(image.ICOM == nullptr);
  EXPECT_EQ(Orb_NITFFreeImageHeader(&image), 1) << "a second time frees nothing";
  GraphicHeader graphic = {};
  ASSERT_EQ(Orb_NITFGetGraphicHeader(handle, 0, &graphic), 1);
  EXPECT_EQ(+graphic.SLOCrow, -123);
  EXPECT_EQ(+graphic.SBND1column, 2);
  EXPECT_EQ(Orb_NITFFreeGraphicHeader(&graphic), 1);
  NITFHeader file = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &file), 1);
  EXPECT_EQ(+file.NUMI, 2u);
  EXPECT_EQ(file.LI[0], 64);
  EXPECT_EQ(file.LT[0], 9);
  EXPECT_FLOAT_EQ(+file.FVER, 2.1F);
  EXPECT_EQ(Orb_NITFFreeNITFHeader(&file), 1);
}

TEST_F(ApiTest, AnEmptyDocumentHasItsDefaults) {
  NITFHeader file = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(OpenEmpty(), &file), 1);
  EXPECT_EQ(+file.FL, 388);
  EXPECT_EQ(+file.HL, 0);
  EXPECT_EQ(+file.NUMT, 0u);
  EXPECT_EQ(+file.CLEVEL, 3);
  EXPECT_STREQ(file.FHDR, "NITF");
  for (const int32_t* lengths : {+file.LISH, +file.LI, +file.LSSH, +file.LS, +file.LTSH, +file.LT})
    EXPECT_TRUE(lengths == nullptr) << "no segments, no lengths";
  Orb_NITFFreeNITFHeader(&file);
}

TEST_F(ApiTest, AFileLengthIsStoredAsTextAndValueUnlessItIsNegative) {
  const NitfHandle handle = OpenEmpty();
  const FileHeader& header = handle->header;
  NITFHeader file = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &file), 1);
  file.FL = 5000;
  EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &file), 1);
  EXPECT_STREQ(header.FL.text, "000000005000");
  EXPECT_EQ(header.fileLength, 5000u);
  file.FL = -5;
  EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &file), 1);
  EXPECT_STREQ(header.FL.text, "000000005000");
  EXPECT_EQ(header.fileLength, 5000u);
  file.FL = 0;
  EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &file), 1);
  EXPECT_EQ(header.fileLength, 0u);
  Orb_NITFFreeNITFHeader(&file);
}

// The texts of a record's fields, one after the other.
template <class R>
std::string TextsOf(const R& record) {
  std::string texts;
  for (const auto& row : R::Table()) {
    if (!row.IsPresent(record)) continue;  // what the file lacks becomes zeros
    const FieldView field = row.view(const_cast<R&>(record));
    texts +=
        std::string(row.name) + '=' + std::string(field.text, strnlen(field.text, field.capacity)) + '\n';
  }
  return texts;
}

template <class Record, class R>
void ExpectUnchanged(NitfHandle handle, SegmentList<R> NitfFile::*list,
                     int32_t(ORB_CALL* get)(NitfHandle, uint32_t, Record*),
                     int32_t(ORB_CALL* set)(NitfHandle, uint32_t, const Record*),
                     int32_t(ORB_CALL* release)(Record*)) {
  for (uint32_t i = 0; i < (handle->*list).Count(); ++i) {
    const std::string before = TextsOf(*(handle->*list).At(i));
    Record record = {};
    ASSERT_EQ(get(handle, i, &record), 1);
    EXPECT_EQ(set(handle, i, &record), 1);
    release(&record);
    // Fields that the file holds narrower than the record come back at the record's width.
    std::string after = TextsOf(*(handle->*list).At(i));
    const auto trim = [](std::string text) {
      std::string trimmed;
      for (char c : text) {
        if (c == '\n') trimmed.erase(trimmed.find_last_not_of(' ') + 1);
        trimmed += c;
      }
      return trimmed;
    };
    EXPECT_EQ(trim(before), trim(after));
  }
}

TEST_F(ApiTest, GetThenSetChangesNothing) {
  std::vector<std::string> files = {test::FullFile().Bytes()};
  for (const auto& path : test::SamplePaths()) files.push_back(test::ReadFile(path));
  for (const std::string& bytes : files) {
    const NitfHandle handle = Open(bytes);
    ExpectUnchanged(handle, &NitfFile::images, &Orb_NITFGetImageHeader, &Orb_NITFSetImageHeader,
                    &Orb_NITFFreeImageHeader);
    ExpectUnchanged(handle, &NitfFile::graphics, &Orb_NITFGetGraphicHeader, &Orb_NITFSetGraphicHeader,
                    &Orb_NITFFreeGraphicHeader);
    ExpectUnchanged(handle, &NitfFile::texts, &Orb_NITFGetTextHeader, &Orb_NITFSetTextHeader,
                    &Orb_NITFFreeTextHeader);
    NITFHeader first = {}, second = {};
    ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &first), 1);
    ASSERT_EQ(Orb_NITFSetNITFHeader(handle, &first), 1);
    ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &second), 1);
    EXPECT_STREQ(handle->header.FVER.text, "02.10");
    EXPECT_EQ(std::string(first.FTITLE), std::string(second.FTITLE));
    EXPECT_EQ(+first.FL, +second.FL);
    EXPECT_EQ(+first.HL, +second.HL);
    // What only Set uses takes the record's zeros.
    EXPECT_STREQ(handle->header.NUMX.text, "000");
    EXPECT_STREQ(handle->header.userDefined.length.text, "00000");
    EXPECT_EQ(handle->header.background, 0u);
    Orb_NITFFreeNITFHeader(&first);
    Orb_NITFFreeNITFHeader(&second);
  }
}

TEST_F(ApiTest, TheFileHeaderTakesWhatFitsAndGoesOn) {
  const NitfHandle handle = Open(test::FullFile().Bytes());
  NITFHeader file = {};
  ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &file), 1);
  std::string longTitle(81, 'x');
  char shortName[] = "Orion";
  char *oldTitle = file.FTITLE, *oldName = file.ONAME;
  file.FTITLE = longTitle.data();
  file.ONAME = shortName;
  file.CLEVEL = 8;
  file.FBKGC = 0xAA332211;
  file.FVER = 12.345F;
  file.NUMI = 5;  // more than the document has: its tables are not read past one entry
  file.LI[0] = 77;
  char bytes[] = "TAGNEW00000", few[] = "?";
  file.UDHDL = 14;
  file.XHDL = 2;
  file.UDHD = reinterpret_cast<uint8_t*>(bytes);
  file.XHD = reinterpret_cast<uint8_t*>(few);
  EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &file), 1);
  const FileHeader& header = handle->header;
  EXPECT_EQ(std::string(header.FTITLE.text), std::string(80, ' '));
  EXPECT_EQ(std::string(header.ONAME.text), "Orion" + std::string(22, ' '));
  EXPECT_STREQ(header.CLEVEL.text, "03");
  EXPECT_EQ(header.background, 0x332211u);
  EXPECT_EQ(std::string(header.FBKGC.text, 3), "\x11\x22\x33");
  EXPECT_STREQ(header.FVER.text, "12.35");
  EXPECT_EQ(header.images.Current(0).data, 77u);
  EXPECT_EQ(header.images.InFile(0).data, 64u) << "the source is still read by its own lengths";
  EXPECT_EQ(header.userDefined.Data(), "TAGNEW00000");
  EXPECT_STREQ(header.extended.length.text, "00014") << "2 has no room for the overflow field";
  EXPECT_EQ(header.extended.Data(), "TAGONE00000") << "its bytes are refused with it";
  file.FTITLE = oldTitle;
  file.ONAME = oldName;
  file.UDHD = file.XHD = nullptr;
  file.CLEVEL = 99;
  EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &file), 1);
  EXPECT_STREQ(header.CLEVEL.text, "99");
  Orb_NITFFreeNITFHeader(&file);
}

// Sets one string of a record and expects a refusal between two neighbours.
TEST_F(ApiTest, TheFirstRefusalEndsASegmentsSet) {
  const NitfHandle handle = Open(test::FullFile().Bytes());
  ImageHeader image = {};
  ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
  const auto unchanged = [](const char* text) { return const_cast<char*>(text); };  // Set only reads
  char* id = image.IID1;
  image.IID1 = unchanged("Before");
  char* representation = image.IREP;
  image.IREP = unchanged("NONSENSE");
  char* category = image.ICAT;
  image.ICAT = unchanged("AFTER");
  EXPECT_EQ(Orb_NITFSetImageHeader(handle, 0, &image), ORB_INVALID_PARAMETER);
  EXPECT_STREQ(handle->images.At(0)->IID1.text, "Before    ");
  EXPECT_STREQ(handle->images.At(0)->ICAT.text, "VIS     ");
  EXPECT_EQ(handle->images.At(0)->RepresentationCode(), Representation::Mono);
  image.IREP = representation;
  image.IXSHDL = 1;
  EXPECT_EQ(Orb_NITFSetImageHeader(handle, 0, &image), ORB_INVALID_PARAMETER)
      << "too short for its own overflow field";
  EXPECT_STREQ(handle->images.At(0)->ICAT.text, "AFTER   ");
  image.IXSHDL = 14;
  image.ILOCrow = 100000;
  EXPECT_EQ(Orb_NITFSetImageHeader(handle, 0, &image), ORB_INVALID_PARAMETER);
  image.ILOCrow = 1;
  image.NROWS = 123456789;
  EXPECT_EQ(Orb_NITFSetImageHeader(handle, 0, &image), ORB_INVALID_PARAMETER)
      << "more digits than the field has";
  image.IID1 = id;
  image.ICAT = category;
  Orb_NITFFreeImageHeader(&image);
}

TEST_F(ApiTest, ARefusedTextFieldIsTheLastOneStored) {
  const NitfHandle handle = Open(test::FullFile().Bytes());
  const auto unchanged = [](const char* text) { return const_cast<char*>(text); };  // Set only reads
  TextHeader text = {};
  ASSERT_EQ(Orb_NITFGetTextHeader(handle, 0, &text), 1);
  const std::string tooLong(81, 't');
  char* title = text.TXTITL;
  text.TXTITL = unchanged(tooLong.c_str());
  char* oldId = text.TEXTID;
  text.TEXTID = unchanged("New id");
  std::memcpy(text.TXTDT, "19991231235959", 14);
  text.TXTALVL = 7;
  EXPECT_EQ(Orb_NITFSetTextHeader(handle, 0, &text), ORB_INVALID_PARAMETER);
  EXPECT_STREQ(handle->texts.At(0)->TEXTID.text, "New id    ");
  EXPECT_STREQ(handle->texts.At(0)->TXTDT.text, "19991231235959");
  EXPECT_EQ(handle->texts.At(0)->TXTALVL.value, 7u);
  EXPECT_STREQ(handle->texts.At(0)->security.CLAS.text, "U");
  text.TXTITL = title;
  text.TEXTID = oldId;
  Orb_NITFFreeTextHeader(&text);
}

TEST_F(ApiTest, CoordinatesAndCompressionKeepTheLengthsInStep) {
  const NitfHandle handle = Open(test::FullFile().Bytes());
  ImageSubheader& image = *handle->images.At(0);
  const FileHeader& header = handle->header;
  const uint32_t subheader = header.images.Current(0).subheader, file = header.fileLength;
  EXPECT_EQ(image.SetCoordinates("G"), Status::Success);
  EXPECT_EQ(header.images.Current(0).subheader, subheader + 60);
  EXPECT_EQ(image.SetCoordinates("D"), Status::Success);
  EXPECT_EQ(image.SetCompression("C3"), Status::Success);
  EXPECT_EQ(image.SetCompression("C8"), Status::Success);
  EXPECT_EQ(header.images.Current(0).subheader, subheader + 64);
  EXPECT_EQ(header.fileLength, file + 64);
  EXPECT_EQ(image.SetCompression("ZZ"), Status::InvalidParameter);
  EXPECT_EQ(image.SetCompression("NM"), Status::Success);
  EXPECT_EQ(image.SetCoordinates(" "), Status::Success);
  EXPECT_EQ(header.images.Current(0).subheader, subheader);
  EXPECT_EQ(header.fileLength, file);
  EXPECT_STREQ(header.FL.text, test::Digits(file, 12).c_str());
  EXPECT_EQ(image.SetCompressionRate("12345"), Status::InvalidParameter);
  EXPECT_EQ(image.SetComment(2, "x"), Status::InvalidParameter);
  EXPECT_EQ(image.SetPadCode(nullptr), Status::NoData);
}

TEST_F(ApiTest, AnIndexWithoutASegmentIsToldForEachKind) {
  const NitfHandle handle = Open(test::FullFile().Bytes());
  ImageHeader image = {};
  GraphicHeader graphic = {};
  TextHeader text = {};
  for (const uint32_t index : {Orb_NITFGetGraphicHeaderCount(handle), 999u}) {
    EXPECT_EQ(Orb_NITFGetGraphicHeader(handle, index, &graphic), ORB_NO_SUCH_RECORD);
    EXPECT_EQ(Orb_NITFSetGraphicHeader(handle, index, &graphic), ORB_NO_SUCH_RECORD);
    EXPECT_EQ(Orb_NITFGetVectorHandle(handle, index), nullptr);
  }
  EXPECT_EQ(Orb_NITFGetImageHeader(handle, Orb_NITFGetImageHeaderCount(handle), &image),
            ORB_NO_SUCH_RECORD);
  EXPECT_EQ(Orb_NITFGetTextHeader(handle, Orb_NITFGetTextHeaderCount(handle), &text), ORB_NO_SUCH_RECORD);
}

TEST_F(ApiTest, NegativeBoundsAndPlacesAreStoredInTheirForms) {
  const NitfHandle handle = Open(test::FullFile().Bytes());
  GraphicHeader graphic = {};
  ASSERT_EQ(Orb_NITFGetGraphicHeader(handle, 0, &graphic), 1);
  graphic.SBND1row = -12;
  graphic.SBND2column = 7;
  graphic.SLOCrow = -12;
  graphic.SLOCcolumn = 345;
  EXPECT_EQ(Orb_NITFSetGraphicHeader(handle, 0, &graphic), 1);
  EXPECT_EQ(std::string(handle->graphics.At(0)->SBND1.text, 5), "00-12");
  EXPECT_EQ(std::string(handle->graphics.At(0)->SLOC.text), "-001200345");
  EXPECT_EQ(std::string(handle->graphics.At(0)->SBND2.text + 5, 5), "00007");
  Orb_NITFFreeGraphicHeader(&graphic);
}

TEST_F(ApiTest, NullPointersLeaveExtendedDataAlone) {
  const NitfHandle handle = Open(test::FullFile().Bytes());
  ImageHeader image = {};
  ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
  uint8_t* extended = image.IXSHD;
  const std::string before(handle->images.At(0)->extended.Data());
  image.IXSHD = nullptr;
  EXPECT_EQ(Orb_NITFSetImageHeader(handle, 0, &image), 1);
  EXPECT_EQ(std::string(handle->images.At(0)->extended.Data()), before);
  EXPECT_FALSE(before.empty());
  image.IXSHD = extended;
  Orb_NITFFreeImageHeader(&image);
}

}  // namespace
