// Pages about files: what they hold, and that texts of files do nothing in them.
#include "core/report/report.h"

#include "core/report/html.h"
#include "core/report/labels.h"
#include "tests/support/metafile.h"
#include "tests/support/sound.h"
#include "tests/support/support.h"
#include "tools/orbntf/inspect/draw_small.h"
#include "tools/orbntf/tool.h"

namespace {

using test::NitfBuilder;
using namespace std::string_literals;

class ReportTest : public test::ModuleTest {
 protected:
  static std::string Page(const std::string& bytes) {
    const test::TempFile file(bytes);
    const core::RecordDefinitions definitions;
    core::ReportedFile reported(file.Path(), "f1", definitions);
    const tool::WorkAccount account(file.Path());
    tool::LookAtFile(reported, true);
    const std::string report = core::ReportOf(reported);
    return core::PageOf("1.2.3", "A title", {report}, {"a name"});
  }
  static bool Holds(const std::string& page, const std::string& text) {
    return page.find(text) != std::string::npos;
  }
};

TEST_F(ReportTest, APageHoldsEverySection) {
  NitfBuilder file = test::SoundFile();
  file.images[0]
      .subheader.Set("ICORDS", "D")
      .InsertAfter("ICORDS", "IGEOLO", "+51.000+010.000+51.000+011.000+50.000+011.000+50.000+010.000")
      .Set("IXSHDL", 17)
      .InsertAfter("IXSHDL", "IXS", "000TAGONE00003abc");
  file.header.Set("FTITLE", "The title").Set("CLEVEL", "05");
  const std::string page = Page(file.Bytes());
  for (const char* section :
       {"summary", "check", "picture", "segments", "location", "texts", "records", "fields", "layout"})
    EXPECT_TRUE(Holds(page, "<section id=\"f1-"s + section + "\"")) << section;
  EXPECT_LT(page.find("id=\"f1-check\""), page.find("id=\"f1-picture\"")) << "findings come first";
  EXPECT_TRUE(Holds(page, "level.lowest"));
  EXPECT_TRUE(Holds(page, "refused, status -700001"));
  EXPECT_TRUE(Holds(page, "As the standard has it, "));
  EXPECT_TRUE(Holds(page, "51.000000, 11.000000"));
  EXPECT_TRUE(Holds(page, "&quot;FeatureCollection&quot;"));
  EXPECT_TRUE(Holds(page, "A line\n"));
  EXPECT_TRUE(Holds(page, "Histogram of band 1: values 112 to 112"));
  EXPECT_TRUE(Holds(page, "616263")) << "bytes of a record without a definition";
  EXPECT_TRUE(Holds(page, "Complexity level that a reader needs"));
  EXPECT_FALSE(Holds(page, "{{")) << "marks of the template";
  EXPECT_FALSE(Holds(page, "http://") || Holds(page, "https://")) << "no network";
}

// Markup in every text field of every header, in the text, a record and the marks of the template.
TEST_F(ReportTest, TextsOfFilesDoNothing) {
  const std::string markup = "<img src=x onerror=alert(1)>'\"&{{BODY}}</script><script>alert(2)</script>";
  NitfBuilder file = test::SoundFile();
  for (const char* field :
       {"OSTAID", "FTITLE", "FSCODE", "FSREL", "FSCLTX", "FSCAUT", "FSCTLN", "ONAME", "OPHONE", "FDT"})
    file.header.SetRaw(field, (markup + markup).substr(0, file.header.Get(field).size()));
  test::Record& image = file.images[0].subheader;
  for (const char* field : {"IID1", "TGTID", "IID2", "ISCLTX", "ISORCE", "ICAT", "ISUBCAT0", "IDATIM"})
    image.SetRaw(field, (markup + markup).substr(0, image.Get(field).size()));
  image.Set("NICOM", 1)
      .InsertAfter("NICOM", "ICOM",
                   markup.substr(0, 80) + std::string(80 - markup.substr(0, 80).size(), ' '));
  image.Set("IXSHDL", 28).InsertAfter("IXSHDL", "IXS", "000<b>\"'&00014<b>evil</b>&'\"");
  test::Record& graphic = file.graphics[0].subheader;
  for (const char* field : {"SID", "SNAME", "SSCLTX"})
    graphic.SetRaw(field, markup.substr(0, graphic.Get(field).size()));
  test::Record& text = file.texts[0].subheader;
  for (const char* field : {"TEXTID", "TXTITL", "TSCLTX"})
    text.SetRaw(field, (markup + markup).substr(0, text.Get(field).size()));
  file.texts[0].data = markup + "\r\n<b>bold</b>\x01\x1B[31m";
  file.extensions.push_back({test::DataExtensionRecord(markup.substr(0, 25)), markup});
  const std::string page = Page(file.Bytes());
  for (const char* raw : {"<img src=x", "<script>alert", "<b>", "onerror=alert(1)>'\"", "\x1B", "\x01"})
    EXPECT_FALSE(Holds(page, raw)) << raw;
  EXPECT_TRUE(Holds(page, "&lt;img src=x onerror=alert(1)&gt;&#39;&quot;&amp;{{BODY}}&lt;/script&gt;"))
      << "shown as it is";
  EXPECT_TRUE(Holds(page, "&lt;b&gt;bold&lt;/b&gt;\\x01\\x1B[31m"));
  const auto count = [&](const std::string& word) {
    size_t found = 0;
    for (size_t at = page.find(word); at != std::string::npos; at = page.find(word, at + 1)) ++found;
    return found;
  };
  EXPECT_EQ(count("<script"), 1u) << "the template's own";
  EXPECT_EQ(count("<html"), 1u);
}

TEST_F(ReportTest, FilesThatAreCutOrEmptyHavePages) {
  const std::string sound = test::SoundFile().Bytes();
  for (const size_t length :
       {size_t{0}, size_t{3}, size_t{100}, size_t{388}, size_t{500}, size_t{900}, sound.size() - 1}) {
    const std::string page = Page(sound.substr(0, length));
    EXPECT_TRUE(Holds(page, "refused, status ") || length == sound.size() - 1) << length;
    EXPECT_TRUE(Holds(page, "</html>"));
  }
}

TEST_F(ReportTest, APageOfVeryMuchIsShortened) {
  NitfBuilder file = test::SoundFile();
  test::ImageForm form{.width = 1, .height = 1};
  form.bands = 70000;
  form.representation = "MULTI";
  file.Image(form, std::string(70000, 'x'));
  file.texts[0].data = std::string(90000, '<');
  const test::TempFile onDisk(file.Bytes());
  const core::RecordDefinitions definitions;
  size_t before = SIZE_MAX;
  for (const size_t most :
       {core::kMostPageBytes, size_t{300000}, size_t{60000}, size_t{12000}, size_t{6000}}) {
    core::ReportedFile reported(onDisk.Path(), "f1", definitions);
    tool::LookAtFile(reported, true);
    const std::string report = core::ReportOf(reported, most);
    EXPECT_LE(report.size(), std::max(most, size_t{11000})) << "the least there is";
    EXPECT_LE(report.size(), before);
    EXPECT_EQ(Holds(report, "Less of this file is shown"), most != core::kMostPageBytes) << most;
    before = report.size();
  }
}

TEST_F(ReportTest, LabelsNeitherCollideNorRunOff) {
  core::Composite composite;
  composite.width = 400;
  composite.height = 300;
  for (int i = 0; i < 12; ++i) {
    const double shift = i < 6 ? 0 : 395;
    composite.outlines.push_back({"", "image " + std::to_string(i) + " a name of some length", shift,
                                  shift, 50, 50, std::nullopt});
  }
  composite.outlines.push_back({"", std::string(300, 'w'), 0, 0, 400, 300, std::nullopt});
  const std::vector<core::PlacedLabel> labels = core::PlaceLabels(composite, 10);
  EXPECT_EQ(labels.size(), 13u) << "there is room for all";
  for (const core::PlacedLabel& label : labels) {
    EXPECT_GE(label.left, 0);
    EXPECT_GE(label.top, 0);
    EXPECT_LE(label.left + label.width, 400);
    EXPECT_LE(label.top + label.height, 300);
    for (const core::PlacedLabel& other : labels) {
      const bool apart = label.left >= other.left + other.width ||
                         other.left >= label.left + label.width ||
                         label.top >= other.top + other.height || other.top >= label.top + label.height;
      EXPECT_TRUE(&label == &other || apart) << label.words << " on " << other.words;
    }
  }
  EXPECT_EQ(labels.back().words.substr(labels.back().words.size() - 3), "…");
}

TEST_F(ReportTest, FindingsLeadToTheirRowsAndUnknownRecordsStandTogether) {
  NitfBuilder file = test::SoundFile();
  const std::string quiet = Page(file.Bytes());
  EXPECT_TRUE(Holds(quiet, "It breaks no rule."));
  EXPECT_FALSE(Holds(quiet, "id=\"f1-image-0-ISYNC\""));
  file.images[0]
      .subheader.Set("ISYNC", "1")
      .Set("IXSHDL", 3 + 28)
      .InsertAfter("IXSHDL", "IXS", "000TAGONE00003abcTAGONE00003def");
  const std::string page = Page(file.Bytes());
  EXPECT_TRUE(Holds(page, "href=\"#f1-image-0-ISYNC\""));
  EXPECT_TRUE(Holds(page, "<tr id=\"f1-image-0-ISYNC\""));
  EXPECT_TRUE(Holds(page, "TAGONE: no definition, 2 records"));
}

TEST_F(ReportTest, DarkPicturesAreStretchedAndXmlIsIndented) {
  std::string samples(64, '\x05');
  EXPECT_FALSE(Holds(Page(test::SoundFile().Bytes()), "stretched to be seen"));
  samples[3] = '\x14';
  NitfBuilder file = test::SoundFile();
  file.images[0].data = samples;
  file.extensions.push_back({test::DataExtensionRecord("XML_DATA_CONTENT"), "<a><b>text</b></a>"});
  file.graphics.clear();
  const std::string page = Page(file.Bytes());
  EXPECT_TRUE(Holds(page, "stretched to be seen"));
  EXPECT_TRUE(Holds(page, "&lt;a&gt;\n  &lt;b&gt;")) << page.substr(page.find("XML</summary>"), 200);
}

TEST_F(ReportTest, BytesAreShownAsText) {
  EXPECT_EQ(core::Base64("a") + core::Base64("ab") + core::Base64("abc"), "YQ==YWI=YWJj");
}

}  // namespace
