// Files whose lengths were still open when they were written.
#include "core/format/streaming.h"
#include "Common/NitfFile.h"
#include "core/format/survey.h"
#include "tests/support/support.h"

namespace {

using test::Digits;
using test::NitfBuilder;

const std::string kDelimiter1 = "\x0A\x6E\x1D\x97";
const std::string kDelimiter2 = "\x0E\xCA\x14\xBF";

NitfBuilder OneImage() {
  NitfBuilder file;
  test::ImageForm form{.width = 4, .height = 4};
  file.Image(form, std::string(16, '\x40'));
  file.extensions.push_back({test::DataExtensionRecord("STREAMING_FILE_HEADER"), ""});
  return file;
}

// The true header of a file whose extension data has `size` bytes.
std::string TrueHeader(NitfBuilder file, size_t size) {
  file.extensions[0].data = std::string(size, ' ');
  const std::string bytes = file.Bytes();
  return bytes.substr(0, bytes.find("IMTest"));
}

int32_t ReadBytes(const std::string& bytes, NitfFile& document) {
  const test::TempFile file(bytes);
  return ToCaller(document.ReadDocument(file.Wide()));
}

using StreamingTest = test::ModuleTest;

TEST_F(StreamingTest, LengthsComeFromTheReplacementData) {
  NitfBuilder file = OneImage();
  const std::string header = TrueHeader(file, test::StreamingData(TrueHeader(file, 0)).size());
  std::vector<size_t> trailings = {0, 3000};
  for (size_t trailing = 60; trailing < 95; ++trailing) trailings.push_back(trailing);
  for (const size_t trailing : trailings) {  // the delimiter lies across two chunks of some
    NitfBuilder streamed = OneImage();
    streamed.extensions[0].data = test::StreamingData(header) + std::string(trailing, '.');
    streamed.Patch("FL", "999999999999").Patch("LI0", "9999999999").Patch("LISH0", "999999");
    NitfFile document;
    ASSERT_EQ(ReadBytes(streamed.Bytes(), document), 1) << trailing;
    EXPECT_EQ(document.header.images.InFile(0).data, 16u);
    EXPECT_EQ(document.header.fileLength, OneImage().Bytes().size() + test::StreamingData(header).size());
    EXPECT_EQ(document.replacement.consumed, header.size());
  }
}

TEST_F(StreamingTest, ImageSizesComeFromTheReplacementDataBehindTheHeaders) {
  NitfBuilder file = OneImage();
  const std::string image = file.images[0].subheader.Bytes();
  const size_t size = test::StreamingData(TrueHeader(file, 0) + image).size();
  const std::string replacement = TrueHeader(file, size) + image;
  file.images[0].subheader.Set("NROWS", "99999999").Set("NPPBV", "9999");
  file.extensions[0].data = test::StreamingData(replacement);
  file.Patch("FL", "999999999999");
  NitfFile document;
  ASSERT_EQ(ReadBytes(file.Bytes(), document), 1);
  EXPECT_EQ(document.images.At(0)->NROWS.value, 4u);
  EXPECT_EQ(document.images.At(0)->NPPBV.value, 4u);
  EXPECT_EQ(test::RenderBytes(file.Bytes()).status, 1);
}

TEST_F(StreamingTest, ShortReplacementDataKeepsWhatWasRead) {
  NitfBuilder file = OneImage();
  file.header.Set("OSTAID", "Before");
  const std::string front = "NITF02.1003BF01After     ";
  file.extensions[0].data = test::StreamingData(front);
  file.Patch("FL", "999999999999");
  NitfFile document;
  ASSERT_EQ(ReadBytes(file.Bytes(), document), 1);
  EXPECT_STREQ(document.header.OSTAID.text, "After     ");
  EXPECT_EQ(document.header.images.InFile(0).data, 16u);
  EXPECT_EQ(document.replacement.consumed, 0u) << "a parse that stops early moves nothing on";
}

TEST_F(StreamingTest, FaultyStreamingHeadersAreRefused) {
  const auto statusOf = [](const std::string& data) {
    NitfBuilder file = OneImage();
    file.extensions[0].data = data;
    file.Patch("FL", "999999999999");
    NitfFile document;
    const int32_t status = ReadBytes(file.Bytes(), document);
    EXPECT_STREQ(document.fault.name, "FL") << "the field that asked for the replacement data";
    return status;
  };
  EXPECT_EQ(statusOf(""), ORB_INVALID_PARAMETER);
  EXPECT_EQ(statusOf(test::StreamingData("NITF", 5)), ORB_BAD_STRUCTURE);
  std::string wrongEnd = test::StreamingData("NITF");
  wrongEnd[wrongEnd.size() - 8] ^= 1;
  EXPECT_EQ(statusOf(wrongEnd), ORB_BAD_STRUCTURE);
  EXPECT_EQ(statusOf("9999999" + kDelimiter1 + "NITF"), ORB_SHORT_READ) << "length beyond the file";
  // Replacement data that holds placeholders again is parsed once.
  NitfBuilder file = OneImage();
  file.Patch("FL", "999999999999");
  const std::string bytes = file.Bytes();
  file.extensions[0].data = test::StreamingData(bytes.substr(0, bytes.find("IMTest")));
  NitfFile document;
  EXPECT_EQ(ReadBytes(file.Bytes(), document), 1);
}

// Fields whose nines are placeholders start the search for a streaming header, others do not.
TEST_F(StreamingTest, PlaceholdersAreThoseOfCertainFields) {
  const auto statusOf = [](const std::string& name, const std::string& nines, bool subheader = false) {
    NitfBuilder file;
    file.Image(test::ImageForm{}, std::string(64, 'i')).Text("text");
    test::Record graphic = test::GraphicRecord();
    graphic.Set("SFMT", "B");
    file.Graphic(graphic, "");
    if (name[0] != 'L' || name[1] != 'T')
      file.extensions.push_back({test::DataExtensionRecord("OTHER"), "data"});
    if (subheader) {
      file.images[0].subheader.Set(name, nines);
    } else {
      file.Patch(name, nines);
    }
    NitfFile document;
    return ReadBytes(file.Bytes(), document);
  };
  for (const auto& [name, nines] :
       {std::pair("FL", "999999999999"), std::pair("LISH0", "999999"), std::pair("LI0", "9999999999"),
        std::pair("LSSH0", "9999"), std::pair("LTSH0", "9999"), std::pair("LDSH0", "9999"),
        std::pair("LD0", "999999999")}) {
    EXPECT_EQ(statusOf(name, nines), ORB_INVALID_PARAMETER) << name;
  }
  EXPECT_EQ(statusOf("LT0", "99999"), 1);
  for (const char* name : {"NROWS", "NCOLS"})
    EXPECT_EQ(statusOf(name, "99999999", true), ORB_INVALID_PARAMETER) << name;
  for (const char* name : {"NBPR", "NBPC", "NPPBH", "NPPBV"})
    EXPECT_EQ(statusOf(name, "9999", true), ORB_INVALID_PARAMETER) << name;
  EXPECT_EQ(statusOf("ABPP", "99", true), 1);
}

TEST_F(StreamingTest, ImagesConsumeTheReplacementDataOneAfterTheOther) {
  NitfBuilder file;
  test::ImageForm wide, tall;
  wide.width = 6;
  tall.height = 7;
  file.Image(wide, std::string(48, 'w')).Image(tall, std::string(56, 't'));
  file.extensions.push_back({test::DataExtensionRecord("STREAMING_FILE_HEADER"), ""});
  const std::string images = file.images[0].subheader.Bytes() + file.images[1].subheader.Bytes();
  const size_t size = test::StreamingData(TrueHeader(file, 0) + images).size();
  const std::string replacement = TrueHeader(file, size) + images;
  for (test::Segment& image : file.images)
    image.subheader.Set("NROWS", "99999999").Set("NCOLS", "99999999");
  file.extensions[0].data = test::StreamingData(replacement);
  file.Patch("FL", "999999999999");
  NitfFile document;
  ASSERT_EQ(ReadBytes(file.Bytes(), document), 1);
  EXPECT_EQ(document.images.At(0)->NCOLS.value, 6u);
  EXPECT_EQ(document.images.At(1)->NROWS.value, 7u);
  EXPECT_EQ(document.replacement.consumed, replacement.size());
}

}  // namespace
