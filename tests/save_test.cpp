// Saving, replacing and reading content.
#include <filesystem>

#include "tests/support/objects.h"
#include "tests/support/vq.h"

namespace {

using test::Handle;
using test::ImageForm;
using test::NitfBuilder;
using test::Saved;
using test::Square;

using SaveTest = test::ModuleTest;
using CompressedSaveTest = test::CodecTest;

TEST_F(SaveTest, CopiesAreTheSameBytes) {
  std::vector<std::pair<std::string, std::string>> files = {{"full", test::FullFile().Bytes()},
                                                            {"empty", NitfBuilder().Bytes()}};
  for (const auto& path : test::SamplePaths())
    files.emplace_back(path.stem().string(), test::ReadFile(path));
  for (const auto& [name, bytes] : files) {
    SCOPED_TRACE(name);
    const test::TempFile original(bytes);
    const test::TempFile copy(Saved(Handle(original)));
    std::string contents = copy.Contents();
    EXPECT_EQ(test::Unsound(contents), "");
    EXPECT_EQ(Saved(Handle(copy)), contents);
    if (bytes.size() < 300000) {
      EXPECT_TRUE(test::Render(copy).pixels == test::Render(original).pixels);
    }
    // The only field that a copy writes in a form of its own here is COMRAT.
    std::string expected = bytes;
    NitfFile document;
    ASSERT_EQ(document.ReadDocument(original.Wide()), Status::Success);
    if (document.ImageCount() != 0) {
      const ImageSubheader& image = *document.images.At(0);
      const std::string code = image.IC.text, rate = image.COMRAT.text;
      const size_t at = expected.find(code + rate);
      if (code[0] != 'N' && contents.compare(at, 6, code + rate) != 0)
        expected.replace(at + 2, 4, "00.0");
    }
    EXPECT_TRUE(contents == expected);
  }
}

// What a copy writes anew, from what it read: mask tables, codebooks and the counts of bands.
TEST_F(SaveTest, TablesAndCountsAreWrittenAsTheyWereRead) {
  std::vector<NitfBuilder> files(6);
  const ImageForm masked{.blocksAcross = 2, .blocksDown = 2, .compression = "NM"};
  const uint32_t none = 0xFFFFFFFF;
  files[0].Image(
      masked, test::MaskBytes({.blocks = {0, none, 64, 128}, .pads = {none, 0, 64, none}, .padCode = 7}) +
                  std::string(192, 'm'));
  files[1].Image(masked,
                 test::MaskBytes({.pads = {0, none, 64, 128}, .padCode = 7}) + std::string(256, 'm'));
  const test::VqForm vectors;
  files[2].Image(test::VqImage(vectors, "C4", 1, 1), test::VqData(vectors));
  files[3].Image(test::VqImage(vectors, "M4", 1, 1),
                 test::MaskBytes({.blocks = {0}}) + test::VqData(vectors));
  for (const size_t bands : {9, 10}) {
    const ImageForm many{.bands = static_cast<int>(bands), .representation = "MULTI"};
    files[bands - 5].Image(many, std::string(64 * bands, 'b'));
  }
  for (size_t i = 0; i < files.size(); ++i) {
    const std::string bytes = files[i].Bytes();
    EXPECT_TRUE(Saved(Handle(test::TempFile(bytes))) == bytes) << i;
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

TEST_F(SaveTest, AMaskTableIsWrittenAsItWasRead) {
  const ImageForm form{.compression = "NM"};
  std::string table = test::MaskBytes({.blocks = {0x01020304}, .pads = {0x05060708}, .padCode = 9});
  table.replace(0, 4, test::Big(0x0A0B0C0D, 4));
  const std::string bytes = NitfBuilder().Image(form, table + std::string(64, 'm')).Bytes();
  EXPECT_TRUE(Saved(Handle(test::TempFile(bytes))) == bytes);
}

TEST_F(SaveTest, AClassificationThatIsEmptyIsPadded) {
  const test::TempFile file(NitfBuilder().Graphic(test::GraphicRecord(), "x").Bytes());
  const Handle handle(file);
  handle->graphics.At(0)->security.CLAS.text[0] = 0;
  const std::string saved = Saved(handle);
  const size_t begin = saved.rfind("SY");
  ASSERT_NE(begin, std::string::npos);
  EXPECT_EQ(saved.substr(begin + 32, 1), "0") << "behind SY, SID and SNAME";
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
  ImageForm form{.width = 16, .height = 16, .blocksAcross = 2, .compression = "M4"};
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

TEST_F(SaveTest, LengthsAreKeptWhereAMaskNamesNoData) {
  const test::VqForm vq;
  const ImageForm form = test::VqImage(vq, "M4", 1, 1);
  std::string mask = test::MaskBytes({.blocks = {0}});
  const auto length = [&](uint32_t offset) {
    mask.replace(0, 4, test::Big(offset, 4));
    const test::TempFile file(NitfBuilder().Image(form, mask + test::VqData(vq) + "unused").Bytes());
    const Handle handle(file);
    const std::string saved = Saved(handle);
    return handle->header.images.Current(0).data;
  };
  const auto all = static_cast<uint32_t>(mask.size() + test::VqData(vq).size());
  EXPECT_EQ(length(1), all) << "what is written";
  EXPECT_EQ(length(0), all + 6) << "as it stood";
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

TEST_F(SaveTest, TheSourceFileIsNotOverwritten) {
  const test::TempFile file(test::FullFile().Bytes());
  const Handle handle(file);
  const std::string spelling = testing::TempDir() + "./" + file.Path().substr(testing::TempDir().size());
  EXPECT_EQ(Orb_NITFSaveFile(handle, file.Wide()), ORB_INVALID_PARAMETER);
  EXPECT_EQ(Orb_NITFSaveFileA(handle, spelling.c_str()), ORB_INVALID_PARAMETER);
  EXPECT_EQ(file.Contents(), test::FullFile().Bytes());
  EXPECT_EQ(Orb_NITFSaveFile(nullptr, u"x"), ORB_NULL_HANDLE);
  EXPECT_EQ(Orb_NITFSaveFileA(handle, nullptr), ORB_OUT_OF_MEMORY);
  EXPECT_EQ(Orb_NITFSaveFile(handle, u"/no/such/folder/file"), ORB_SHORT_WRITE);
}

TEST_F(SaveTest, ANewDocumentIsWrittenWithItsDefaults) {
  const Handle handle;
  const std::string bytes = Saved(handle);
  ASSERT_EQ(bytes.size(), 388u);
  EXPECT_EQ(bytes.substr(0, 9), "NITF02.10");
  EXPECT_EQ(bytes.substr(15, 10), "0000000000") << "OSTAID";
  EXPECT_EQ(bytes.substr(286, 11), "00000000000") << "FSCOP, FSCPYS, ENCRYP";
  EXPECT_EQ(test::Unsound(bytes), "");
}

TEST_F(SaveTest, BandRecordsAreAsManyAsTheCountSays) {
  for (const int extended : {5, 12}) {
    ImageForm form{.bands = extended, .representation = "MULTI"};
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
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 0, buffer, &length), ORB_SHORT_READ);
}

}  // namespace
