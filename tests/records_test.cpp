// Records and documents in their less usual states.
#include "Common/Exchange.h"
#include "Common/HandlGfx.h"
#include "Common/Utility.h"
#include "tests/support/metafile.h"
#include "tests/support/objects.h"

namespace {

using test::Handle;
using test::ImageForm;
using test::NitfBuilder;
using test::Saved;
using namespace std::string_literals;

using RecordsTest = test::ModuleTest;

// ---------------------------------------------------------------- documents

#if !defined(_WIN32)
std::string debugTexts;

TEST_F(RecordsTest, FreeingADocumentEmptiesItAndSaysSo) {
  HostkitSetDebugHandler([](const char* text) { debugTexts += text; });
  debugTexts.clear();
  NitfBuilder builder;
  builder.Image(ImageForm{}, std::string(64, 'i'))
      .Graphic(test::GraphicRecord(), test::Metafile(""))
      .Text("t");
  builder.extensions.push_back({test::DataExtensionRecord("OTHER"), "x"});
  builder.header.Set("XHDL", 14).InsertAfter("XHDL", "XH", "000TAGONE00000");
  const test::TempFile file(builder.Bytes());
  NitfFile document;
  ASSERT_EQ(document.ReadDocument(file.Wide()), Status::Success);
  EXPECT_EQ(debugTexts, "\nAllocateObjects\n");
  EXPECT_NE(document.FileHandle(), kNoFile);
  for (int i = 0; i < 2; ++i) {
    document.FreeObjects();
    EXPECT_EQ(document.FileHandle(), kNoFile);
    EXPECT_EQ(document.ImageCount() + document.GraphicCount() + document.TextCount(), 0u);
    EXPECT_EQ(document.dataExtensions.Count(), 0u);
    EXPECT_EQ(document.images.At(0), nullptr);
    EXPECT_EQ(document.header.images.Count(), 0u);
    EXPECT_EQ(document.header.extended.bytes.size(), 0u);
    EXPECT_EQ(document.DataLength(SegmentKind::Image, 0), 0u);
  }
  EXPECT_EQ(debugTexts, "\nAllocateObjects\n\nFreeObjects\n\nFreeObjects\n");
  HostkitSetDebugHandler(nullptr);
}
#endif

TEST_F(RecordsTest, WhatIsNotThereIsRefusedAndLeavesWhatThereIs) {
  uint32_t width = 7, height = 7;
  Handle handle;
  EXPECT_EQ(GetActual_Width_Height(nullptr, &width, &height), ORB_NULL_HANDLE);
  EXPECT_EQ(GetActual_Width_Height(handle, nullptr, &height), ORB_INVALID_PARAMETER);
  EXPECT_EQ(GetActual_Width_Height(handle, &width, nullptr), ORB_INVALID_PARAMETER);
  EXPECT_EQ(std::pair(width, height), std::pair(7u, 7u));
  NitfFile document;
  EXPECT_EQ(document.ReadDocument(nullptr), Status::ShortRead);
  EXPECT_EQ(LoadGraphicDrawing(document, 0), Status::InvalidParameter);
  VectorHandle drawing{};
  EXPECT_EQ(LoadSegmentDrawing(document, 0, drawing), Status::InvalidParameter);
}

TEST_F(RecordsTest, TheNextLevelIsOneAboveTheHighestOfEitherKind) {
  const auto next = [](std::vector<int> images, std::vector<int> graphics) {
    NitfBuilder builder;
    for (const int level : images) builder.Image(ImageForm{.level = level}, std::string(64, 'i'));
    for (const int level : graphics) {
      test::Record record = test::GraphicRecord();
      record.Set("SFMT", "B").Set("SDLVL", level);
      builder.Graphic(record, "");
    }
    builder.Text("t");
    const test::TempFile file(builder.Bytes());
    return NextDisplayLevel(*Handle(file).operator->());
  };
  EXPECT_EQ(next({1, 5, 3}, {}), 6u);
  EXPECT_EQ(next({}, {2, 7}), 8u);
  EXPECT_EQ(next({9}, {4}), 10u);
  EXPECT_EQ(next({}, {}), 1u);
}

TEST_F(RecordsTest, AFixedCanvasReadsNoGraphicAndAFailureFillsNoRecord) {
  test::Record broken = test::GraphicRecord();
  broken.Set("SBND2", "0001000010");
  const test::TempFile file(NitfBuilder().Graphic(broken, "no metafile").Bytes());
  HostFileInfo info;
  const auto ask = [&](uint32_t flags) {
    std::memset(&info, 0x5A, sizeof info);
    HostLoadOptions options = {};
    options.flags = flags;
    HostInformationRecord record = test::InformationRecord(file.Wide(), info, options);
    return fltInfo(&record);
  };
  HostFileInfo untouched;
  std::memset(&untouched, 0x5A, sizeof untouched);
  EXPECT_EQ(ask(0), kHostBadData);
  EXPECT_EQ(std::memcmp(&info, &untouched, sizeof info), 0);
  EXPECT_EQ(ask(kLoadFixedCanvas), 1);
  EXPECT_EQ(info.width, 2048u);
  EXPECT_EQ(info.height, 2048u);
}

TEST_F(RecordsTest, OtherGraphicsReachTheirSecondBoundFromTheirAttachment) {
  // Not from their own place, and with the bound's halves as row and column.
  test::Record symbol = test::GraphicRecord();
  symbol.Set("SFMT", "B")
      .Set("SDLVL", 2)
      .Set("SALVL", 1)
      .Set("SLOC", "0900009000")
      .Set("SBND2", "0004000050");
  NitfBuilder builder;
  builder.Image(ImageForm{.width = 4, .height = 4, .location = "0000300007"}, std::string(16, 'i'));
  builder.Graphic(symbol, "data");
  const auto size = [](const NitfBuilder& file) {
    const test::TempFile onDisk(file.Bytes());
    uint32_t width = 0, height = 0;
    const int32_t status = GetActual_Width_Height(Handle(onDisk), &width, &height);
    return std::array{status, static_cast<int32_t>(width), static_cast<int32_t>(height)};
  };
  EXPECT_EQ(size(builder), (std::array{1, 57, 43}));
  // Their data is read all the same.
  NitfBuilder cut;
  cut.Graphic(symbol, "x").Patch("LS0", "000009");
  EXPECT_EQ(size(cut)[0], ORB_SHORT_READ);
  const test::TempFile file(cut.Bytes());
  EXPECT_EQ(LoadGraphicDrawing(*Handle(file).operator->(), 0), Status::ShortRead);
}

// ---------------------------------------------------------------- headers

TEST_F(RecordsTest, ReservedExtensionsAreCountedAndPassed) {
  NitfBuilder builder;
  builder.header.Set("NUMRES", 2)
      .InsertAfter("NUMRES", "LRES",
                   "0123"
                   "0004567"
                   "0200"
                   "0000089")
      .Set("UDHDL", 14)
      .InsertAfter("UDHDL", "UDH", "000TAGONE00000");
  builder.Text("text");
  const test::TempFile file(builder.Bytes());
  const Handle handle(file);
  const LengthTable& reserved = handle->header.reservedExtensions;
  ASSERT_EQ(reserved.Count(), 2u);
  EXPECT_EQ(reserved.InFile(0).subheader, 123u);
  EXPECT_EQ(reserved.InFile(1).data, 89u);
  EXPECT_EQ(handle->header.userDefined.recordCount, 1u) << "the fields behind are found";
  EXPECT_EQ(Saved(handle), file.Contents());
}

TEST_F(RecordsTest, PlaceholderLengthsOfTheFileHeaderAskForReplacementData) {
  EXPECT_EQ(test::RenderBytes(NitfBuilder().Text("t").Patch("HL", "999999").Bytes()).status,
            ORB_INVALID_PARAMETER);
  // One digit less is a length like any other, here one that leads nowhere.
  EXPECT_EQ(test::RenderBytes(NitfBuilder().Text("t").Patch("HL", "099999").Bytes()).status,
            ORB_SHORT_READ);
}

TEST_F(RecordsTest, AFailingReplacementParseIsTheReadsResult) {
  NitfBuilder file;
  file.Text("text");
  const std::string header = file.Bytes().substr(0, 342);
  const auto status = [&](size_t at, const std::string& text) {
    std::string changed = header;
    changed.replace(at, text.size(), text);
    return test::RenderBytes(test::Streamed(file, changed).Bytes()).status;
  };
  EXPECT_EQ(status(0, "NITF"), 1);
  EXPECT_EQ(status(0, "XITF"), ORB_BAD_STRUCTURE);
  EXPECT_EQ(status(4, "02.00"), ORB_BAD_VERSION);
  EXPECT_EQ(status(9, "05"), ORB_BAD_COMPLEXITY);
  EXPECT_EQ(status(119, "X"), ORB_BAD_STRUCTURE) << "FSCLAS";
}

TEST_F(RecordsTest, AnUnknownCompressionInReplacementDataIsUnknown) {
  NitfBuilder builder;
  builder.Image(ImageForm{}, std::string(64, 'i'));
  // The header's true bytes, then the image's with another IC.
  NitfBuilder measured;
  measured.Image(ImageForm{.compression = "ZZ"}, "");
  const size_t headerLength =
      builder.Bytes().size() - 64 - builder.images[0].subheader.Bytes().size() + 13;
  builder.images[0].subheader.Set("NPPBV", "9999");
  std::string probe = test::Streamed(builder, std::string(headerLength, ' ')).Bytes();
  std::string trueHeader = probe.substr(0, headerLength);
  const std::string image = measured.images[0].subheader.Bytes();
  const size_t size = test::Streamed(builder, trueHeader + image).Bytes().size();
  trueHeader.replace(342, 12, test::Digits(static_cast<int64_t>(size), 12));
  const test::TempFile file(test::Streamed(builder, trueHeader + image).Bytes());
  NitfFile document;
  ASSERT_EQ(document.ReadDocument(file.Wide()), Status::Success);
  EXPECT_STREQ(document.images.At(0)->IC.text, "ZZ");
  EXPECT_EQ(document.images.At(0)->CompressionCode(), Compression::Unknown);
}

TEST_F(RecordsTest, AStreamedFileIsCopiedWithItsTrueLengths) {
  NitfBuilder builder;
  builder.Image(ImageForm{}, std::string(64, 'i')).Text("text");
  NitfBuilder streamed = builder;
  const size_t headerLength = builder.Bytes().size() - 64 - builder.images[0].subheader.Bytes().size() -
                              builder.texts[0].subheader.Bytes().size() - 4 + 13;
  std::string trueHeader =
      test::Streamed(builder, std::string(headerLength, ' ')).Bytes().substr(0, headerLength);
  const size_t size = test::Streamed(builder, trueHeader).Bytes().size();
  trueHeader.replace(342, 12, test::Digits(static_cast<int64_t>(size), 12));
  streamed.Patch("LI0", "9999999999").Patch("LTSH0", "9999");
  const test::TempFile file(test::Streamed(streamed, trueHeader).Bytes());
  ASSERT_EQ(test::Render(file).status, 1);
  const test::TempFile copy(Saved(Handle(file)));
  EXPECT_EQ(test::Unsound(copy.Contents()), "");
  EXPECT_TRUE(test::Render(copy).pixels == test::Render(file).pixels);
  char text[8];
  EXPECT_EQ(Orb_NITFGetTextSegment(Handle(copy), 0, text, nullptr), 1);
  EXPECT_STREQ(text, "text");
}

// ---------------------------------------------------------------- image subheaders

TEST_F(RecordsTest, MaskTablesAreReadForSomeCompressionsOnly) {
  const std::string mask = test::MaskBytes({.blocks = {0}});
  for (const auto& [code, reads] : std::initializer_list<std::pair<const char*, bool>>{{"NM", true},
                                                                                       {"M0", true},
                                                                                       {"M1", true},
                                                                                       {"M2", false},
                                                                                       {"M3", true},
                                                                                       {"M4", true},
                                                                                       {"M5", true},
                                                                                       {"M6", false},
                                                                                       {"M8", false},
                                                                                       {"C3", false}}) {
    ImageForm form{.compression = code};
    const test::TempFile file(NitfBuilder().Image(form, mask + "data").Bytes());
    const Handle handle(file);
    EXPECT_EQ(handle->images.At(0)->mask.HasBlockRecords(), reads) << code;
    EXPECT_EQ(handle->images.At(0)->mask.IMDATOFF, reads ? mask.size() : 0) << code;
    if (code != "M4"s) {
      EXPECT_EQ(Saved(handle), file.Contents()) << code;
    }
  }
}

TEST_F(RecordsTest, PadPixelCodesTakeWholeBytes) {
  for (const auto& [bits, bytes] : {std::pair{1, 1}, {8, 1}, {9, 2}, {12, 2}, {16, 2}, {17, 3}}) {
    ImageForm form{.compression = "NM"};
    const std::string code = std::string("\xAB\xC0\x01").substr(0, static_cast<size_t>(bytes));
    const std::string table = test::Big(14 + code.size(), 4) + test::Big(4, 2) + test::Big(0, 2) +
                              test::Big(static_cast<uint64_t>(bits), 2) + code + test::Big(0, 4);
    const test::TempFile file(NitfBuilder().Image(form, table + std::string(64, 'i')).Bytes());
    const Handle handle(file);
    const MaskTable& mask = handle->images.At(0)->mask;
    ASSERT_EQ(mask.TPXCD.size(), code.size()) << bits;
    EXPECT_EQ(mask.BlockRecord(0), 0u) << bits;
    ImageHeader image = {};
    ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(image.TPXCD), code.size()), code);
    image.TPXCD[0] = 0x11;
    EXPECT_EQ(Orb_NITFSetImageHeader(handle, 0, &image), 1);
    EXPECT_EQ(mask.TPXCD[0], 0x11);
    EXPECT_EQ(mask.TPXCD[code.size() - 1], bytes == 1 ? 0x11 : static_cast<uint8_t>(code.back()));
    Orb_NITFFreeImageHeader(&image);
    EXPECT_EQ(handle->images.At(0)->SetPadCode(nullptr), Status::NoData);
  }
}

TEST_F(RecordsTest, RatesAndMagnificationsAreTakenFromTheirTexts) {
  ImageSubheader image;
  const std::pair<const char*, BiLevelOption> rates[] = {{"2DS", BiLevelOption::TwoDS},
                                                         {"00.0", BiLevelOption::None},
                                                         {"1D", BiLevelOption::OneD},
                                                         {"2DHx", BiLevelOption::TwoDH},
                                                         {"", BiLevelOption::None}};
  for (const auto& [text, option] : rates) {
    EXPECT_EQ(image.SetCompressionRate(text), Status::Success);
    EXPECT_EQ(image.FacsimileOption(), option) << text;
  }
  EXPECT_EQ(image.SetCompressionRate("2DS"), Status::Success);
  EXPECT_EQ(image.SetCompressionRate("12345"), Status::InvalidParameter);
  EXPECT_EQ(image.FacsimileOption(), BiLevelOption::TwoDS) << "a refused text changes nothing";
  const std::pair<const char*, double> sizes[] = {{"/2", 0.5},  {"/4", 0.25},   {"1.0", 1.0},
                                                  {"2.5", 2.5}, {"/0", 1.0},    {".5", 0.5},
                                                  {"10", 10.0}, {"/16", 0.0625}};
  for (const auto& [text, factor] : sizes) {
    EXPECT_EQ(image.SetMagnification(text), Status::Success);
    EXPECT_DOUBLE_EQ(image.magnification, factor) << text;
  }
  EXPECT_EQ(image.SetMagnification("12345"), Status::InvalidParameter);
  EXPECT_STREQ(image.IMAG.text, "/16 ");
}

TEST_F(RecordsTest, WrittenRatesAndMagnificationsHaveTheirForms) {
  for (const auto& [imag, written] :
       std::initializer_list<std::pair<const char*, const char*>>{{"1.0 ", "1.0 "},
                                                                  {"/2  ", "0.5 "},
                                                                  {"12.5", "12. "},
                                                                  {"/8  ", "0.1 "},
                                                                  {"0004", "4.0 "},
                                                                  {"/3  ", "0.3 "}}) {
    ImageForm form{.compression = "C1", .rate = "2DH"};
    test::Record record = test::ImageRecord(form);
    record.Set("IMAG", imag);
    const test::TempFile file(NitfBuilder().Image(record, "fax").Bytes());
    const std::string saved = Saved(Handle(file));
    const size_t imagAt = file.Contents().find("0000000000"s + imag + "00000" + "00000fax") + 10;
    ASSERT_LT(imagAt, saved.size());
    EXPECT_EQ(saved.substr(imagAt, 4), written);
    EXPECT_NE(saved.find("C12DH "), std::string::npos);
  }
}

}  // namespace
