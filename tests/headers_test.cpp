// Parsing of the file header and every subheader: one fault each.
#include <cstring>

#include "Common/NitfFile.h"
#include "tests/support/support.h"

namespace {

using test::ImageForm;
using test::NitfBuilder;

int32_t ReadBytes(const std::string& bytes, NitfFile& document) {
  const test::TempFile file(bytes);
  return ToCaller(document.ReadDocument(file.Wide()));
}
int32_t ReadBytes(const std::string& bytes) {
  NitfFile document;
  return ReadBytes(bytes, document);
}

// A file with one segment of each kind.
struct Fault {
  const char* segment;  // "header", "image", "graphic", "text", "extension"
  const char* field;
  const char* text;
  int32_t status;
  const char* message = "";
  const char* noticedAt = nullptr;  // null for the field itself
};
std::ostream& operator<<(std::ostream& out, const Fault& fault) {
  return out << fault.segment << ' ' << fault.field << '=' << fault.text;
}

class HeaderFaults : public test::ModuleTest, public testing::WithParamInterface<Fault> {};

NitfBuilder OneOfEach() {
  NitfBuilder file;
  file.Image(ImageForm{}, std::string(64, 'i')).Graphic(test::GraphicRecord(), "").Text("Some text");
  file.extensions.push_back({test::DataExtensionRecord("TRE_OVERFLOW"), "data"});
  return file;
}

TEST_P(HeaderFaults, GiveTheirStatus) {
  NitfBuilder file = OneOfEach();
  const Fault& fault = GetParam();
  const std::string segment = fault.segment;
  test::Record& record = segment == "header"    ? file.header
                         : segment == "image"   ? file.images[0].subheader
                         : segment == "graphic" ? file.graphics[0].subheader
                         : segment == "text"    ? file.texts[0].subheader
                                                : file.extensions[0].subheader;
  record.Set(fault.field, fault.text);
  const test::TempFile onDisk(file.Bytes());
  NitfFile document;
  EXPECT_EQ(ToCaller(document.ReadDocument(onDisk.Wide())), fault.status);
  const char* field = fault.noticedAt != nullptr ? fault.noticedAt : fault.field;
  const ParseFault& place = document.fault;
  EXPECT_EQ(std::string(place.prefix) + place.name, fault.status == ORB_SUCCESS ? "" : field);
  if (fault.status != ORB_SUCCESS && fault.noticedAt == nullptr) {
    EXPECT_EQ(file.Bytes().substr(static_cast<size_t>(place.offset), std::strlen(fault.text)),
              fault.text);
  }
  const std::vector<std::string> expected =
      *fault.message != 0 ? std::vector<std::string>{std::string("Error: ") + fault.message}
                          : std::vector<std::string>{};
  EXPECT_EQ(Messages(), expected);
}

INSTANTIATE_TEST_SUITE_P(
    FileHeader, HeaderFaults,
    testing::Values(Fault{"header", "FHDR", "NSIF", ORB_SUCCESS},
                    Fault{"header", "FHDR", "nitf", ORB_BAD_STRUCTURE},
                    Fault{"header", "FVER", "02.00", ORB_BAD_VERSION},
                    Fault{"header", "CLEVEL", "05", ORB_BAD_COMPLEXITY, "Unsupported CLEVEL"},
                    Fault{"header", "FSCLAS", "X", ORB_BAD_STRUCTURE},
                    Fault{"header", "FSCLAS", "T", ORB_SUCCESS},
                    Fault{"header", "NUMX", "001", ORB_BAD_STRUCTURE},
                    Fault{"header", "UDHDL", "00002", ORB_BAD_STRUCTURE},
                    Fault{"header", "XHDL", "00001", ORB_BAD_STRUCTURE},
                    Fault{"header", "XHDL", "99999", ORB_SHORT_READ, "", "XHDLOFL"}));
INSTANTIATE_TEST_SUITE_P(
    ImageSubheader, HeaderFaults,
    testing::Values(Fault{"image", "IM", "IN", ORB_BAD_STRUCTURE},
                    Fault{"image", "ISCLAS", "A", ORB_BAD_STRUCTURE},
                    Fault{"image", "PVTYPE", "R", ORB_BAD_PIXEL_TYPE, "Unsupported PVTYPE"},
                    Fault{"image", "PVTYPE", "SI", ORB_BAD_PIXEL_TYPE, "Unsupported PVTYPE"},
                    Fault{"image", "IMODE", "X", ORB_BAD_STRUCTURE},
                    Fault{"image", "UDIDL", "00001", ORB_BAD_STRUCTURE},
                    Fault{"image", "NICOM", "9", ORB_BAD_STRUCTURE, "", "IMODE"},
                    Fault{"image", "NBANDS", "9", ORB_BAD_STRUCTURE, "", "IMODE"}));
INSTANTIATE_TEST_SUITE_P(GraphicSubheader, HeaderFaults,
                         testing::Values(Fault{"graphic", "SY", "sy", ORB_BAD_STRUCTURE},
                                         Fault{"graphic", "SSCLAS", "X", ORB_BAD_STRUCTURE},
                                         Fault{"graphic", "SFMT", "D", ORB_BAD_STRUCTURE},
                                         Fault{"graphic", "SFMT", "B", ORB_SUCCESS},
                                         Fault{"graphic", "SFMT", "O", ORB_SUCCESS},
                                         Fault{"graphic", "SXSHDL", "00002", ORB_BAD_STRUCTURE}));
INSTANTIATE_TEST_SUITE_P(TextSubheader, HeaderFaults,
                         testing::Values(Fault{"text", "TE", "TX", ORB_BAD_STRUCTURE},
                                         Fault{"text", "TSCLAS", "X", ORB_SUCCESS},
                                         Fault{"text", "TXSHDL", "00002", ORB_SUCCESS}));
INSTANTIATE_TEST_SUITE_P(DataExtensionSubheader, HeaderFaults,
                         testing::Values(Fault{"extension", "DE", "DX", ORB_BAD_STRUCTURE},
                                         Fault{"extension", "DESVER", "-1", ORB_BAD_STRUCTURE},
                                         Fault{"extension", "DECLAS", "Z", ORB_BAD_STRUCTURE},
                                         Fault{"extension", "DESSHL", "0050", ORB_SHORT_READ}));

using HeadersTest = test::ModuleTest;

TEST_F(HeadersTest, EveryTruncationOfAFileIsRefused) {
  const std::string whole = OneOfEach().Bytes();
  // The last bytes are segment data, which the parse does not read.
  const size_t parsed = whole.size() - 4;
  for (size_t length = 0; length < parsed; length += length < 420 ? 1 : 7) {
    EXPECT_EQ(ReadBytes(whole.substr(0, length)), ORB_SHORT_READ) << length;
  }
  EXPECT_EQ(ReadBytes(whole.substr(0, parsed)), 1);
  NitfFile document;
  EXPECT_EQ(document.ReadDocument(u"/no/such/file"), Status::ShortRead);
}

TEST_F(HeadersTest, FileHeaderIsDecoded) {
  NitfBuilder file = OneOfEach();
  file.header.SetRaw("FBKGC", "\x10\x20\x30")
      .Set("UDHDL", 25)
      .InsertAfter("UDHDL", "UDH", "000TAGONE00011eleven byte");
  NitfFile document;
  ASSERT_EQ(ReadBytes(file.Bytes(), document), 1);
  const FileHeader& header = document.header;
  EXPECT_EQ(document.background, 0x302010u);
  EXPECT_EQ(header.userDefined.Data(), "TAGONE00011eleven byte");
  EXPECT_EQ(header.userDefined.recordCount, 1u);
  EXPECT_EQ(header.images.InFile(0).data, 64u);
  EXPECT_EQ(header.images.InFile(1).data, 0u);
  EXPECT_EQ(header.headerLength, header.currentHeaderLength);
  EXPECT_EQ(document.DataLength(SegmentKind::Text, 0), 9u);
  EXPECT_EQ(document.DataLength(SegmentKind::Text, 1), 0u);
  EXPECT_EQ(document.texts.At(1), nullptr);
  EXPECT_STREQ(document.dataExtensions.At(0)->DESOFLW.text, "UDHD  ");
}

TEST_F(HeadersTest, SegmentsAreFoundByTheLengthTables) {
  NitfBuilder file;
  file.Image(ImageForm{}, std::string(1000, 'a')).Image(ImageForm{}, std::string(2000, 'b'));
  file.Graphic(test::GraphicRecord(), "").Text("0123456789");
  NitfFile document;
  const test::TempFile onDisk(file.Bytes());
  ASSERT_EQ(document.ReadDocument(onDisk.Wide()), Status::Success);
  const int64_t header = document.header.headerLength;
  const auto image = static_cast<int64_t>(test::ImageRecord({}).Bytes().size());
  EXPECT_EQ(document.SeekToSubheader(SegmentKind::Image, 1), header + image + 1000);
  EXPECT_EQ(document.SeekToData(SegmentKind::Image, 1), header + 2 * image + 1000);
  EXPECT_EQ(document.SeekToSubheader(SegmentKind::Graphic, 0), header + 2 * image + 3000);
  EXPECT_EQ(document.SeekToData(SegmentKind::Text, 0), header + 2 * image + 3000 + 258 + 282);
}

TEST_F(HeadersTest, ImageSubheaderIsDecoded) {
  ImageForm form{.bands = 10,
                 .compression = "C1",
                 .bandCodes = {"LU", "R", "G", "B", "M", "Y", "Cb", "Cr", "??"},
                 .rate = "2DS",
                 .lookup = std::string("\x01\x02\x03\x04", 4) + std::string("\x11\x12\x13\x14", 4) +
                           std::string("\x21\x22\x23\x24", 4),
                 .lookupTables = 3};
  test::Record record = test::ImageRecord(form);
  record.Set("ICORDS", "G").InsertAfter("ICORDS", "IGEOLO", std::string(60, 'g'));
  record.Set("NICOM", "2").InsertAfter("NICOM", "ICOM", std::string(80, 'c') + std::string(80, 'd'));
  record.Set("ILOC", "-001000020").Set("IMAG", "/2  ").Set("IREP", "RGB/LUT").Set("PJUST", "L");
  record.Set("UDIDL", 14).InsertAfter("UDIDL", "UDID", "000TAGONE00000");
  record.Set("IXSHDL", 3).InsertAfter("IXSHDL", "IXSOFL", "001");
  NitfBuilder file;
  file.Image(record, "");
  NitfFile document;
  ASSERT_EQ(ReadBytes(file.Bytes(), document), 1);
  const ImageSubheader& image = *document.images.At(0);
  EXPECT_EQ(image.BandCount(), 10u);
  EXPECT_EQ(image.RepresentationCode(), Representation::RgbLut);
  EXPECT_EQ(image.FacsimileOption(), BiLevelOption::TwoDS);
  EXPECT_EQ(image.BandCode(7), BandRepresentation::BANDREPRESENTATION_Cr);
  EXPECT_EQ(image.BandCode(8), BandRepresentation::BANDREPRESENTATION_NON);
  EXPECT_EQ(image.BandCode(10), BandRepresentation::BANDREPRESENTATION_NON);
  ASSERT_EQ(image.palette.size(), 4u);
  EXPECT_EQ(image.palette[1].red, 0x02);
  EXPECT_EQ(image.palette[1].green, 0x12);
  EXPECT_EQ(image.palette[1].blue, 0x22);
  EXPECT_EQ(std::string(image.IGEOLO.text), std::string(60, 'g'));
  ASSERT_EQ(image.comments.size(), 2u);
  EXPECT_EQ(std::string(image.comments[1].text), std::string(80, 'd'));
  EXPECT_EQ(image.ILOC.Row(), -10);
  EXPECT_EQ(image.ILOC.Column(), 20);
  EXPECT_DOUBLE_EQ(image.magnification, 0.5);
  EXPECT_EQ(image.PJUST.code, 0u);
  EXPECT_EQ(image.userDefined.recordCount, 1u);
  EXPECT_EQ(image.extended.Data(), "");
}

TEST_F(HeadersTest, DeepSamplesAreAcceptedInOneBandOnly) {
  ImageForm form{.bits = 16};
  EXPECT_EQ(ReadBytes(NitfBuilder().Image(form, "").Bytes()), 1);
  form.bands = 3;
  EXPECT_EQ(ReadBytes(NitfBuilder().Image(form, "").Bytes()), ORB_BAD_SAMPLE_DEPTH);
  EXPECT_EQ(Messages(), std::vector<std::string>{"Error: Unsupported BPP"});
}

TEST_F(HeadersTest, LookupTablesOfAnyCountAreConsumed) {
  for (int tables : {1, 2, 4}) {
    ImageForm form{.lookupTables = tables};
    for (int i = 0; i < 3 * tables; ++i) form.lookup += static_cast<char>(i);
    NitfFile document;
    ASSERT_EQ(ReadBytes(NitfBuilder().Image(form, "").Bytes(), document), 1) << tables;
    const ImageSubheader& image = *document.images.At(0);
    EXPECT_EQ(image.palette[2].red, 2);
    EXPECT_EQ(image.palette[2].green, tables < 3 ? 2 : 5);
    EXPECT_STREQ(image.IMODE.text, "B") << "fields behind the tables keep their places";
  }
}

TEST_F(HeadersTest, NinesOfACommentAreNoLength) {
  test::Record image = test::ImageRecord(ImageForm{});
  image.Set("NICOM", 1).InsertAfter("NICOM", "ICOM", std::string(80, '9'));
  NitfFile document;
  ASSERT_EQ(ReadBytes(NitfBuilder().Image(image, std::string(64, 'i')).Bytes(), document), 1);
  EXPECT_EQ(std::string(document.images.At(0)->comments[0].text), std::string(80, '9'));
}

TEST_F(HeadersTest, ATableOfOneEntryColoursTheImage) {
  ImageForm form{.lookup = "\x50", .lookupTables = 1};
  const auto picture = test::RenderImage(form, std::string(64, '\0'));
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.At(3, 3), test::Grey(0x50));
}

TEST_F(HeadersTest, NinesAreEntriesOfALookupTable) {
  ImageForm form{.lookupTables = 1};
  form.lookup = std::string(99999, 'g');
  NitfFile document;
  ASSERT_EQ(ReadBytes(NitfBuilder().Image(form, std::string(64, 'i')).Bytes(), document), 1);
  const ImageSubheader& image = *document.images.At(0);
  ASSERT_EQ(image.palette.size(), 99999u);
  EXPECT_EQ(image.palette[99998].blue, 'g');
  EXPECT_EQ(image.palette[99998].reserved, 0);
}

TEST_F(HeadersTest, MaskTableFollowsTheSubheader) {
  ImageForm form{.blocksAcross = 2, .blocksDown = 2, .compression = "NM"};
  const test::MaskForm mask{{0, 0xFFFFFFFF, 64, 128}, {0, 0xFFFFFFFF, 64, 0xFFFFFFFF}, 7};
  NitfFile document;
  ASSERT_EQ(ReadBytes(NitfBuilder().Image(form, test::MaskBytes(mask)).Bytes(), document), 1);
  const MaskTable& table = document.images.At(0)->mask;
  EXPECT_EQ(table.IMDATOFF, 43u);
  EXPECT_EQ(table.BlockRecord(3), 128u);
  EXPECT_EQ(table.BlockRecord(1), MaskTable::kNoBlock);
  EXPECT_EQ(table.BlockRecord(4), MaskTable::kNoBlock) << "beyond the table";
  EXPECT_EQ(table.PadRecord(2), 64u);
  ASSERT_EQ(table.TPXCD.size(), 1u);
  EXPECT_EQ(table.TPXCD[0], 7);
  const std::string cut = NitfBuilder().Image(form, test::MaskBytes(mask).substr(0, 30)).Bytes();
  EXPECT_EQ(ReadBytes(cut), ORB_SHORT_READ);
}

TEST_F(HeadersTest, MagnificationsOfThreeDigitsCount) {
  for (const auto& [text, value] : {std::pair{"/100", 0.01},
                                    {"/2  ", 0.5},
                                    {"100 ", 100.0},
                                    {".125", 0.125},
                                    {"/0  ", 1.0},
                                    {"    ", 1.0},
                                    {"12.5", 12.5},
                                    {"2e1 ", 20.0},
                                    {"1e-1", 0.1}}) {
    test::Record image = test::ImageRecord({});
    image.Set("IMAG", text);
    NitfFile document;
    const test::TempFile file(NitfBuilder().Image(image, std::string(64, 'i')).Bytes());
    ASSERT_EQ(document.ReadDocument(file.Wide()), Status::Success);
    EXPECT_DOUBLE_EQ(document.images.At(0)->magnification, value) << text;
  }
}

TEST_F(HeadersTest, DataThatBeginsAtItsEndIsEmpty) {
  if (!test::HostHasCodecs()) GTEST_SKIP() << "no codecs";
  ImageForm form{.bits = 1, .compression = "M1"};
  form.pixelType = "B";
  std::string table = test::MaskBytes({.blocks = {0}});
  const std::string data(64, 'd');
  for (const auto& [begin, status] : {std::pair{table.size() + data.size(), ORB_BAD_STRUCTURE},
                                      {table.size() + data.size() + 1, ORB_SHORT_READ}}) {
    table.replace(0, 4, test::Big(begin, 4));
    EXPECT_EQ(test::RenderImage(form, table + data).status, status) << begin;
  }
}

TEST_F(HeadersTest, AFreshImageIsJustifiedRight) {
  ImageSubheader fresh;
  EXPECT_EQ(fresh.PJUST.code, 1u);
  test::Record image = test::ImageRecord({});
  for (const auto& [text, code] : {std::pair{"R", 1u}, {"L", 0u}}) {
    NitfFile document;
    ASSERT_EQ(
        ReadBytes(NitfBuilder().Image(image.Set("PJUST", text), std::string(64, 'i')).Bytes(), document),
        1);
    EXPECT_EQ(document.images.At(0)->PJUST.code, code);
  }
}

TEST_F(HeadersTest, DataThatBeginsBehindItsEndIsShort) {
  const std::vector<std::pair<const char*, int>> forms = {{"NM", 8}, {"NM", 1}, {"M1", 1}, {"M3", 8}};
  for (const auto& [compression, bits] : forms) {
    if (compression[1] != 'M' && !test::HostHasCodecs()) continue;
    ImageForm form{.bits = bits, .compression = compression};
    if (bits == 1) form.pixelType = "B";
    std::string table = test::MaskBytes({.blocks = {0}});
    table.replace(0, 4, test::Big(5000, 4));
    EXPECT_EQ(test::RenderImage(form, table + std::string(64, 'd')).status, ORB_SHORT_READ)
        << compression << ' ' << bits;
  }
}

}  // namespace
