// Documents that are changed: what a refused change leaves alone, and what a save makes of changed
// records.
#include <filesystem>

#include "Common/Exchange.h"
#include "Common/Utility.h"
#include "tests/support/metafile.h"
#include "tests/support/objects.h"

namespace {

using test::Handle;
using test::ImageForm;
using test::NitfBuilder;
using test::Saved;
using namespace std::string_literals;

using ChangeTest = test::ModuleTest;

std::string Line() { return test::Metafile(test::Element(4, 1, test::I({1, 1, 9, 9}))); }

// ---------------------------------------------------------------- appending

TEST_F(ChangeTest, AnAppendThatFLOrHLCannotTakeChangesNothing) {
  const test::TempFile words("words", ".txt");
  const test::Bitmap bitmap(4, 4, 24);
  test::Drawing drawing(Line());
  const RECT rectangle = {0, 0, 20, 20};
  const std::pair<const char*, const char*> full[] = {{"FL", "999999999990"}, {"HL", "999990"}};
  for (const auto& [field, text] : full) {
    SCOPED_TRACE(field);
    NitfBuilder builder;
    builder.Image(ImageForm{}, std::string(64, 'i')).Graphic(test::GraphicRecord(), Line()).Text("first");
    const test::TempFile file(builder.Patch("FL", field == "FL"s ? text : "000000000000").Bytes());
    const Handle handle(file);
    if (field == "HL"s) handle->header.currentHeaderLength = 999990;
    const std::string before = Saved(handle);
    const auto counts = [&] {
      const FileHeader& header = handle->header;
      return std::array{header.images.Count(),     header.graphics.Count(), header.texts.Count(),
                        handle->ImageCount(),      handle->GraphicCount(),  handle->TextCount(),
                        header.currentHeaderLength};
    };
    const auto held = counts();
    if (test::HostHasCodecs()) {
      EXPECT_EQ(Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&bitmap.record), 182, 24, 9),
                -13);
    }
    EXPECT_EQ(Orb_NITFAppendGraphicSegment(handle, &drawing.handle, &rectangle), ORB_INVALID_PARAMETER);
    EXPECT_EQ(Orb_NITFAppendTextSegment(handle, words.Wide()), ORB_INVALID_PARAMETER);
    EXPECT_EQ(counts(), held);
    EXPECT_EQ(Saved(handle), before);
  }
}

TEST_F(ChangeTest, ATextIsAppendedFromAFileOnly) {
  const Handle handle;
  EXPECT_EQ(Orb_NITFAppendTextSegment(handle, test::Widen(testing::TempDir()).c_str()),
            ORB_TEXT_NOT_OPENED);
  EXPECT_EQ(Orb_NITFGetTextHeaderCount(handle), 0u);
  NitfHandle folder = nullptr;
  EXPECT_EQ(Orb_NITFCreate(&folder, test::Widen(testing::TempDir()).c_str()), ORB_SHORT_READ);
}

TEST_F(ChangeTest, ATextIsWrittenWithoutItsTerminator) {
  const Handle handle;
  ASSERT_EQ(Orb_NITFAppendTextSegment(handle, test::TempFile("words", ".txt").Wide()), 1);
  const std::string exact = Saved(handle);
  handle->header.texts.current[0].data = 50;  // as a caller may set it
  const std::string longer = Saved(handle);
  EXPECT_EQ(longer.size(), exact.size());
  EXPECT_EQ(longer.substr(longer.size() - 5), "words");
}

TEST_F(ChangeTest, ASideThatIsAPlaceholderTextIsNotAppended) {
  if (!test::HostHasCodecs()) GTEST_SKIP() << "the host toolkit of this build has no codecs";
  for (const auto& [width, height, expected] :
       {std::array{9999, 1, -13}, {1, 9999, -13}, {9998, 1, 1}, {1, 9998, 1}}) {
    const Handle handle;
    const test::Bitmap bitmap(static_cast<uint32_t>(width), static_cast<uint32_t>(height), 8);
    EXPECT_EQ(Orb_NITFAppendImageSegment(handle, const_cast<KernelBitmap*>(&bitmap.record), 182, 8, 200),
              expected)
        << width << 'x' << height;
    if (expected == 1) {
      EXPECT_EQ(test::RenderBytes(Saved(handle)).status, 1);
    }
  }
}

// ---------------------------------------------------------------- positions of copied data

TEST_F(ChangeTest, RawDataIsWrittenWhereTheHeaderSaysThatItIs) {
  // Subheaders that are longer than their fields, of images with a mask and without.
  ImageForm masked{.compression = "NM"};
  const std::string mask = test::MaskBytes({.blocks = {0}});
  for (const char* padding : {"", "padding"}) {
    NitfBuilder builder;
    const auto padded = [&](const ImageForm& form) {
      test::Record record = test::ImageRecord(form);
      record.InsertAfter("IXSHDL", "PAD", padding);
      return record;
    };
    builder.Image(padded({}), std::string(64, 'i'))
        .Image(masked, mask + std::string(64, 'm'))
        .Image(padded({}), std::string(64, 'k'))
        .Text("behind");
    const test::TempFile file(builder.Bytes());
    const test::TempFile copy(Saved(Handle(file)));
    EXPECT_EQ(test::Unsound(copy.Contents()), "") << padding;
    EXPECT_EQ(copy.Contents().size(), file.Contents().size());
    EXPECT_TRUE(test::Render(copy).pixels == test::Render(file).pixels);
    EXPECT_EQ(test::Render(copy).status, 1);
  }
}

TEST_F(ChangeTest, BehindAPatchedImageRawDataFollowsItsSubheader) {
  std::string vq = test::Big(4, 4) + test::Big(4, 4) + test::Big(8, 1) + test::Big(1, 2) +
                   test::Big(1, 2) + test::Big(0, 2) + test::Big(6, 4) + test::Big(14, 2) +
                   test::Big(0, 2) + test::Big(2, 4) + test::Big(4, 2) + test::Big(8, 2) +
                   test::Big(0, 4) + std::string(2 * 4, 'v') + std::string(16, '\x01');
  ImageForm form{.width = 16, .height = 16, .compression = "M4"};
  ImageForm masked{.compression = "NM"};
  const std::string mask = test::MaskBytes({.blocks = {0}});
  NitfBuilder builder, expected;
  for (NitfBuilder* file : {&builder, &expected}) {
    const bool source = file == &builder;
    file->Image(form, mask + vq + (source ? "dropped" : ""))
        .Image(masked, mask + std::string(64, 'm'))
        .Image(ImageForm{}, std::string(64, 'n'));
  }
  expected.Patch("FL", test::Digits(static_cast<int64_t>(builder.Bytes().size()), 12));
  const test::TempFile file(builder.Bytes());
  EXPECT_EQ(Saved(Handle(file)), expected.Bytes());
}

TEST_F(ChangeTest, VectorQuantisedDataIsNotCopiedFromBehindItsSegment) {
  ImageForm form{.width = 16, .height = 16, .compression = "C4"};
  const std::string vq = test::Big(4, 4) + test::Big(4, 4) + test::Big(8, 1) + test::Big(1, 2) +
                         test::Big(1, 2) + test::Big(0, 2) + test::Big(6, 4) + test::Big(14, 2) +
                         test::Big(0, 2) + test::Big(2, 4) + test::Big(4, 2) + test::Big(8, 2) +
                         test::Big(0, 4) + std::string(2 * 4, 'v') + std::string(16, '\x01');
  const test::TempFile whole(NitfBuilder().Image(form, vq).Bytes());
  EXPECT_EQ(Saved(Handle(whole)), whole.Contents());
  const test::TempFile cut(
      NitfBuilder().Image(form, vq.substr(0, vq.size() - 1)).Text("more than one byte").Bytes());
  (void)Saved(Handle(cut), ORB_SHORT_READ);
}

TEST_F(ChangeTest, ReadingGoesByTheLengthsAsReadAndWritingByTheChangedOnes) {
  NitfBuilder builder;
  builder.Image(ImageForm{.level = 2, .location = "0000000008"}, std::string(64, '\x20'))
      .Image(ImageForm{}, std::string(64, '\x60'))
      .Text("a text");
  const test::TempFile file(builder.Bytes());
  const test::Picture picture = test::Render(file);
  const Handle handle(file);
  ImageHeader image = {};
  ASSERT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
  char coordinates[] = "G", *const before = image.ICORDS;
  image.ICORDS = coordinates;
  EXPECT_EQ(Orb_NITFSetImageHeader(handle, 0, &image), 1);
  image.ICORDS = before;
  Orb_NITFFreeImageHeader(&image);
  EXPECT_EQ(handle->header.images.Current(0).subheader, handle->header.images.InFile(0).subheader + 60);
  const test::TempFile saved(Saved(handle));
  EXPECT_EQ(saved.Contents().size(), file.Contents().size() + 60);
  EXPECT_EQ(test::Unsound(saved.Contents()), "");
  EXPECT_TRUE(test::Render(saved).pixels == picture.pixels);
  KernelBitmap canvas = {};
  EXPECT_EQ(Orb_NtfRenderBitmap(&canvas, handle), 1) << "the document still draws from its source";
  EXPECT_EQ(test::RowOf(canvas, 7)[0], 0x60);
  EXPECT_EQ(test::RowOf(canvas, 7)[3 * 8], 0x20);
  KernelFreeBitmap(&canvas);
  char text[16];
  EXPECT_EQ(Orb_NITFGetTextSegment(handle, 0, text, nullptr), 1);
  EXPECT_STREQ(text, "a text");
}

// ---------------------------------------------------------------- bands and comments

// A record of an image, changed and given back.
int32_t ChangeImage(NitfHandle handle, const std::function<void(ImageHeader&)>& change) {
  ImageHeader image = {};
  EXPECT_EQ(Orb_NITFGetImageHeader(handle, 0, &image), 1);
  ImageHeader given = image;
  change(given);
  const int32_t status = Orb_NITFSetImageHeader(handle, 0, &given);
  Orb_NITFFreeImageHeader(&image);
  return status;
}

TEST_F(ChangeTest, BandCountsSetInEitherDirectionAreWrittenWithTheirBands) {
  const struct {
    int before;
    uint32_t nbands;
    int32_t xbands;
    uint32_t after;
  } cases[] = {{3, 0, 12, 12}, {12, 3, 0, 3}, {12, 0, 3, 3}, {3, 1, 0, 1}, {3, 0, 0, 0}, {12, 2, 15, 15}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.before) + " to " + std::to_string(c.after));
    ImageForm form{.bands = c.before, .representation = "MULTI", .bandCodes = {"R", "G", "B"}};
    const test::TempFile file(NitfBuilder().Image(form, std::string(64 * 12, 'i')).Bytes());
    const Handle handle(file);
    EXPECT_EQ(ChangeImage(handle,
                          [&](ImageHeader& image) {
                            image.NBANDS = c.nbands;
                            image.XBANDS = c.xbands;
                          }),
              1);
    const ImageSubheader& image = *handle->images.At(0);
    EXPECT_EQ(image.BandCount(), c.after);
    uint32_t bytes = 0;
    ASSERT_EQ(MeasureRows<ImageSubheader>(ImageSubheader::Table(), image, bytes), Status::Success);
    const bool extended = c.after > 9 || c.nbands == 0;
    EXPECT_EQ(bytes, 430 - 4 + 13 * c.after + (extended ? 5 : 0))
        << "as many band records as are counted";
    handle->header.images.current[0].subheader = bytes;
    const std::string saved = Saved(handle);
    const size_t bands = saved.find("NC", handle->header.currentHeaderLength) + 2;
    EXPECT_EQ(saved[bands], extended ? '0' : static_cast<char>('0' + c.after));
    const size_t first = bands + (extended ? 6 : 1);
    EXPECT_EQ(saved.substr(first + 13 * c.after, 2), "0B") << "ISYNC and IMODE";
    if (c.after != 0) {
      EXPECT_EQ(saved.substr(first, 13), std::string(8, ' ') + "N   0") << "a fresh band";
    }
  }
}

TEST_F(ChangeTest, ARefusedSetLeavesWhatASaveWrites) {
  test::Record record = test::ImageRecord({});
  record.Set("UDIDL", 14).InsertAfter("UDIDL", "UDI", "000TAGTWO00000");
  const test::TempFile file(NitfBuilder().Image(record, std::string(64, 'i')).Bytes());
  const Handle handle(file);
  const std::string before = Saved(handle);
  const std::pair<const char*, std::function<void(ImageHeader&)>> refused[] = {
      {"comments that are not there", [](ImageHeader& image) { image.NICOM = 2; }},
      {"an overflow field of four digits",
       [](ImageHeader& image) {
         image.UDIDL = 30;
         image.UDOFL = 1000;
       }},
      {"a length without room for its overflow field", [](ImageHeader& image) { image.IXSHDL = 2; }},
      {"too many bands for one digit", [](ImageHeader& image) { image.NBANDS = 10; }},
      {"a band count of six digits", [](ImageHeader& image) { image.XBANDS = 100000; }}};
  for (const auto& [what, change] : refused) {
    EXPECT_EQ(ChangeImage(handle, change), ORB_INVALID_PARAMETER) << what;
    EXPECT_EQ(Saved(handle), before) << what;
  }
  EXPECT_EQ(ChangeImage(handle, [](ImageHeader&) {}), 1);
  EXPECT_EQ(Saved(handle), before);
}

TEST_F(ChangeTest, CommentsAndLookupTablesAreSaved) {
  ImageForm form{.representation = "RGB/LUT",
                 .bandCodes = {"LU"},
                 .lookup = "\x01\x02\x03\x11\x12\x13\x21\x22\x23",
                 .lookupTables = 3};
  test::Record record = test::ImageRecord(form);
  record.Set("NICOM", 2).InsertAfter("NICOM", "ICOM", std::string(80, 'a') + std::string(80, 'b'));
  const test::TempFile file(NitfBuilder().Image(record, std::string(64, '\1')).Bytes());
  const Handle handle(file);
  EXPECT_EQ(Saved(handle), file.Contents());
  EXPECT_EQ(ChangeImage(handle,
                        [](ImageHeader& image) {
                          static char first[] = "a new comment";
                          static char* comments[] = {first};
                          image.NICOM = 1;
                          image.ICOM = comments;
                        }),
            1);
  const std::string saved = Saved(handle);
  EXPECT_EQ(saved.find("a new comment" + std::string(67, ' ') + "NC"),
            file.Contents().find(std::string(80, 'a')));
  EXPECT_EQ(test::RenderBytes(saved).At(0, 0), (test::Rgb{0x02, 0x12, 0x22}))
      << "padded to its old length";
}

// ---------------------------------------------------------------- records' rules

TEST_F(ChangeTest, BandCodesAreSetByWhatTheirTextBeginsWith) {
  ImageSubheader image;
  ASSERT_EQ(image.SetBandCount(2), Status::Success);
  EXPECT_EQ(image.SetBandCode(0, "Red"), Status::Success);
  EXPECT_EQ(image.BandCode(0), BandRepresentation::BANDREPRESENTATION_R);
  EXPECT_STREQ(image.bands[0].IREPBAND.text, "R ");
  EXPECT_EQ(image.SetBandCode(1, "Cblue"), Status::Success);
  EXPECT_EQ(image.BandCode(1), BandRepresentation::BANDREPRESENTATION_Cb);
  EXPECT_EQ(image.SetBandCode(1, "x"), Status::InvalidParameter);
  EXPECT_EQ(image.SetBandCode(1, ""), Status::InvalidParameter);
  EXPECT_EQ(image.SetBandCode(1, nullptr), Status::InvalidParameter);
  EXPECT_EQ(image.SetBandCode(2, "R"), Status::InvalidParameter);
  EXPECT_EQ(image.BandCode(1), BandRepresentation::BANDREPRESENTATION_Cb);
}

TEST_F(ChangeTest, RepresentationsAreThoseOfTheBandsThatNBANDSCounts) {
  ImageSubheader image;
  ASSERT_EQ(image.SetExtendedBandCount(5), Status::Success);
  ASSERT_EQ(image.SetBandCode(4, "M"), Status::Success);
  EXPECT_EQ(image.BandCode(4), BandRepresentation::BANDREPRESENTATION_M)
      << "XBANDS counts where NBANDS is 0";
  ASSERT_EQ(image.SetBandCount(3), Status::Success);
  EXPECT_EQ(image.BandCount(), 5u);
  EXPECT_EQ(image.BandCode(4), BandRepresentation::BANDREPRESENTATION_NON);
}

TEST_F(ChangeTest, DataExtensionFieldsTakeNoMoreThanTheirWidth) {
  DataExtensionSubheader extension;
  for (const auto& [name, width] : std::initializer_list<std::pair<const char*, size_t>>{{"DESCODE", 11},
                                                                                         {"DESCTLH", 2},
                                                                                         {"DESREL", 20},
                                                                                         {"DESCTLN", 15},
                                                                                         {"DESCAUT", 40},
                                                                                         {"DESID", 25}}) {
    const auto* row = FindRow<DataExtensionSubheader>(DataExtensionSubheader::Table(), name);
    const FieldView field = row->ViewOf(extension);
    EXPECT_EQ(SetText(field, std::string(width, 'x').c_str()), Status::Success) << name;
    EXPECT_EQ(SetText(field, std::string(width + 1, 'y').c_str()), Status::InvalidParameter) << name;
    EXPECT_EQ(field.text, std::string(width, 'x')) << name;
  }
}

TEST_F(ChangeTest, ARefusedHeaderSetsNeitherLevelNorPresence) {
  const auto read = [](const char* field, const char* text, NitfFile& document) {
    NitfBuilder builder;
    builder.header.Set(field, text);
    const test::TempFile file(builder.Bytes());
    return ToCaller(document.ReadDocument(file.Wide()));
  };
  NitfFile level, version, good;
  EXPECT_EQ(read("CLEVEL", "05", level), ORB_BAD_COMPLEXITY);
  EXPECT_EQ(level.header.CLEVEL.value, 3u);
  EXPECT_STREQ(level.header.CLEVEL.text, "05");
  EXPECT_EQ(level.Header(), nullptr);
  EXPECT_EQ(read("FVER", "02.00", version), ORB_BAD_VERSION);
  EXPECT_EQ(version.Header(), nullptr);
  EXPECT_EQ(read("FVER", "02.10", good), 1);
  EXPECT_EQ(good.Header(), &good.header);
}

TEST_F(ChangeTest, AnUnknownCompressionIsKeptAsItIs) {
  ImageForm form{.compression = "C7"};
  const test::TempFile file(NitfBuilder().Image(form, "some data").Bytes());
  EXPECT_EQ(test::Render(file).status, ORB_UNSUPPORTED);
  EXPECT_EQ(Saved(Handle(file)), file.Contents());
}

TEST_F(ChangeTest, DisplayListsAreBuiltInLevelOrder) {
  NitfBuilder builder;
  for (const int level : {2, 2, 1}) builder.Image(ImageForm{.level = level}, std::string(64, 'i'));
  const test::TempFile file(builder.Bytes());
  const Handle handle(file);
  DisplayList list;
  ASSERT_EQ(BuildDisplayList(*handle, list), Status::Success);
  std::string order;
  for (const DisplayItem& item : list.Items()) order += std::to_string(item.index);
  EXPECT_EQ(order, "210") << "an exchange sort turns equal levels round";
}

// ---------------------------------------------------------------- lengths of the file header

TEST_F(ChangeTest, HeaderAndFileLengthAreWrittenAsTheyWereSet) {
  const test::TempFile file(NitfBuilder().Text("a text").Bytes());
  for (const auto& [hl, fl] : {std::pair{500, 1234}, {387, 1}, {999999, 5}}) {
    const Handle handle(file);
    NITFHeader header = {};
    ASSERT_EQ(Orb_NITFGetNITFHeader(handle, &header), 1);
    const int32_t own = header.HL;
    header.HL = hl;
    header.FL = fl;
    EXPECT_EQ(Orb_NITFSetNITFHeader(handle, &header), 1);
    Orb_NITFFreeNITFHeader(&header);
    const std::string saved = Saved(handle);
    EXPECT_EQ(saved.substr(342, 18), test::Digits(fl, 12) + test::Digits(hl < 388 ? own : hl, 6));
  }
}

TEST_F(ChangeTest, AReplacedDrawingHasItsOwnLengthOnly) {
  NitfBuilder builder;
  builder.Graphic(test::GraphicRecord(), Line()).Text("behind it");
  const test::TempFile file(builder.Bytes());
  const Handle handle(file);
  const test::Drawing other(test::Metafile(test::Element(4, 1, test::I({1, 1, 9, 9, 1, 9, 5, 5}))));
  const uint64_t length = handle->header.fileLength;
  const uint32_t read = handle->DataLength(SegmentKind::Graphic, 0);
  ASSERT_EQ(Orb_NITFSetVectorHandle(handle, 0, &other.handle), 1);
  EXPECT_EQ(handle->DataLength(SegmentKind::Graphic, 0), read)
      << "the source's is read by its own length";
  EXPECT_NE(handle->header.graphics.Current(0).data, read);
  EXPECT_EQ(handle->header.fileLength, length);
  const std::string saved = Saved(handle);
  EXPECT_EQ(saved.substr(saved.size() - 9), "behind it");
  EXPECT_EQ(saved.substr(342, 12), test::Digits(static_cast<int64_t>(length), 12));
}

}  // namespace
