// What the tool writes: a file that opens with everything in it, or none.
#include <cstdlib>
#include <filesystem>

#include "Common/NitfFile.h"
#include "tests/support/metafile.h"
#include "tests/support/objects.h"
#include "tests/support/support.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/output/saving.h"
#include "tools/orbntf/output/verify.h"
#include "tools/orbntf/tool.h"

namespace {

// Gives a record the fields that Get leaves alone, so that Set keeps them. The extended data itself is
// kept by null pointers.
void FillSetOnlyFields(const FileHeader& header, NITFHeader& record) {
  record.NUMX = DecimalOf(header.NUMX.text);
  record.NUMDES = header.dataExtensions.Count();
  record.NUMRES = header.reservedExtensions.Count();
  record.UDHDL = header.userDefined.length.Signed();
  record.UDHOFL = DecimalOf(header.userDefined.overflow.text);
  record.XHDL = header.extended.length.Signed();
  record.XHDLOFL = DecimalOf(header.extended.overflow.text);
  record.FBKGC = header.background;
}

using test::ImageForm;
using test::NitfBuilder;
using namespace std::string_literals;

class ToolSavingTest : public test::ModuleTest {
 protected:
  // Copies a file as the tool does; an empty text when it writes none.
  static std::string Copy(const std::string& bytes) {
    const test::TempFile source(bytes), out;
    std::filesystem::remove(out.Path());
    tool::Document document;
    EXPECT_EQ(document.Open(source.Path()), 1);
    testing::internal::CaptureStderr();
    const int code = tool::SaveAs("copy", document, source.Path(), out.Path());
    const std::string words = testing::internal::GetCapturedStderr();
    EXPECT_EQ(code == 0, std::filesystem::exists(out.Path()));
    EXPECT_EQ(code == 0, words.empty()) << words;
    return code == 0 ? out.Contents() : "";
  }
};

std::string Vq(int codeRows, const std::string& codes) {
  return test::Big(static_cast<uint64_t>(codeRows), 4) + test::Big(4, 4) + test::Big(8, 1) +
         test::Big(1, 2) + test::Big(1, 2) + test::Big(0, 2) + test::Big(6, 4) + test::Big(14, 2) +
         test::Big(0, 2) + test::Big(2, 4) + test::Big(4, 2) + test::Big(8, 2) + test::Big(0, 4) +
         "aaaabbbb" + codes;
}

TEST_F(ToolSavingTest, StaleLengthsAreMadeTrue) {
  const auto padded = [](test::Record record, const char* last) {
    record.InsertAfter(last, "PAD", "pad");
    return record;
  };
  NitfBuilder header, segments, vectors, masked, length;
  header.header.InsertAfter("XHDL", "PAD", "some padding");
  header.Image(ImageForm{}, std::string(64, 'i')).Text("text");
  segments.Image(padded(test::ImageRecord({}), "IXSHDL"), std::string(64, 'i'))
      .Image(ImageForm{}, std::string(64, 'j'))
      .Graphic(padded(test::GraphicRecord(), "SXSHDL"), test::Metafile(""))
      .Text("text");
  segments.texts[0].subheader.InsertAfter("TXSHDL", "PAD", "pad");
  segments.extensions.push_back({padded(test::DataExtensionRecord("OTHER"), "DESSHL"), "data"});
  ImageForm form{.width = 16, .height = 16, .compression = "C4"};
  vectors.Image(form, Vq(4, std::string(16, '\1')) + "dropped").Image(ImageForm{}, std::string(64, 'i'));
  form.compression = "M4";
  masked.Image(form, test::MaskBytes({.blocks = {0}}) + Vq(4, std::string(16, '\1')) + "dropped")
      .Text("t");
  length.Text("text").Patch("FL", "000000000001");
  int n = 0;
  for (const NitfBuilder* file : {&header, &segments, &vectors, &masked, &length}) {
    SCOPED_TRACE(n++);
    const std::string written = Copy(file->Bytes());
    EXPECT_EQ(test::Unsound(written), "");
    EXPECT_TRUE(test::RenderBytes(written).pixels == test::RenderBytes(file->Bytes()).pixels);
    EXPECT_EQ(Copy(written), written);
  }
}

TEST_F(ToolSavingTest, WhatWouldBeLostIsNotWritten) {
  const auto withTables = [](int tables) {
    ImageForm form{.representation = "RGB/LUT"};
    form.lookupTables = tables;
    for (int table = 0; table < tables; ++table) form.lookup += static_cast<char>('a' + table);
    return NitfBuilder().Image(form, std::string(64, '\0')).Text("text").Bytes();
  };
  EXPECT_NE(Copy(withTables(1)), "");
  EXPECT_EQ(Copy(withTables(2)), "") << "written as three";
  EXPECT_NE(Copy(withTables(3)), "");
  EXPECT_EQ(Copy(withTables(4)), "");
  const auto withBands = [](const char* second) {
    ImageForm form{.bands = 2};
    form.lookupTables = 1;
    form.lookup = "xy";
    test::Record record = test::ImageRecord(form);
    record.Set("NLUTS1", 1)
        .InsertAfter("NLUTS1", "NELUT1", "00002")
        .InsertAfter("NELUT1", "LUTD1", second);
    return NitfBuilder().Image(record, std::string(192, '\0')).Bytes();
  };
  EXPECT_NE(Copy(withBands("xy")), "");
  EXPECT_EQ(Copy(withBands("zw")), "") << "every band gets the last one's tables";
  NitfBuilder reserved;
  reserved.Text("text")
      .header.Set("NUMRES", 1)
      .InsertAfter("NUMRES", "LRE",
                   "0004"
                   "0000003");
  EXPECT_EQ(Copy(reserved.Bytes() + "RE00res"), "");
  ImageForm odd{.width = 16, .height = 16, .compression = "C4"};
  std::string codes = Vq(4, std::string(10, '\0'));
  codes[8] = 5;  // code rows of 20 bits are copied as two bytes
  EXPECT_EQ(Copy(NitfBuilder().Image(odd, codes).Bytes()), "");
}

TEST_F(ToolSavingTest, LengthsFollowAReplacedDrawing) {
  NitfBuilder builder;
  builder.Graphic(test::GraphicRecord(), test::Metafile(test::Element(4, 1, test::I({1, 1, 9, 9}))))
      .Text("text");
  const test::TempFile source(builder.Bytes()), out, words("appended", ".txt");
  tool::Document document;
  ASSERT_EQ(document.Open(source.Path()), 1);
  VectorHandle* drawing = Orb_NITFGetVectorHandle(document.get(), 0);
  ASSERT_EQ(Orb_NITFSetVectorHandle(document.get(), 0, drawing), 1);
  ASSERT_EQ(Orb_NITFAppendTextSegment(document.get(), words.Wide()), 1);
  EXPECT_EQ(tool::SaveAs("append", document, source.Path(), out.Path()), 0);
  EXPECT_EQ(test::Unsound(out.Contents()), "");
}

// Every file that any test makes, as far as it opens: copied, changed and extended. The files are those
// that the tests keep in the folder that the environment names.
TEST_F(ToolSavingTest, NoFileOfTheTestsIsWrittenUnsoundly) {
  const char* folder = std::getenv("ORBNTF_KEPT_FILES");
  if (folder == nullptr) GTEST_SKIP() << "no files are kept";
  test::CatchMessages(nullptr);
  const test::TempFile words("appended", ".txt"), out;
  int opened = 0, written = 0;
  // Every second one; all of them with ORBNTF_MANY.
  const size_t step = std::getenv("ORBNTF_MANY") != nullptr ? 1 : 2;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (std::hash<std::string>()(entry.path().filename()) % step != 0) continue;
    for (const int change : {0, 1, 2}) {
      tool::Document document;
      if (document.Open(entry.path()) != 1) break;
      ++opened;
      NITFHeader header = {};
      if (change == 1) {
        Orb_NITFGetNITFHeader(document.get(), &header);
        NITFHeader given = header;
        static char title[] = "A title";
        given.FTITLE = title;
        FillSetOnlyFields(document.get()->header, given);
        Orb_NITFSetNITFHeader(document.get(), &given);
        Orb_NITFFreeNITFHeader(&header);
      }
      if (change == 2) (void)Orb_NITFAppendTextSegment(document.get(), words.Wide());
      if (tool::SaveAs("copy", document, entry.path(), out.Path()) != 0) continue;
      ++written;
      const std::string bytes = out.Contents();
      tool::Document again;
      EXPECT_EQ(again.Open(out.Path()), 1) << entry.path() << change;
      EXPECT_EQ(again.get()->header.fileLength, bytes.size()) << entry.path() << change;
      const std::string fault = test::Unsound(bytes);
      // Count texts that are no numbers stay as they stood; the marks of NSIF files are their own.
      EXPECT_TRUE(fault.empty() || fault.substr(0, 9) == "no number" || bytes.substr(0, 4) == "NSIF")
          << entry.path() << change << ": " << fault;
    }
  }
  std::printf("%d documents opened, %d written\n", opened, written);
  EXPECT_GT(written, 100);
}

}  // namespace
