// The rules: every one is broken by a file that breaks no other.
#include <cstdlib>

#include "core/check/check_file.h"
#include "core/check/examples.h"
#include "tests/support/metafile.h"
#include "tests/support/sound.h"
#include "tests/support/support.h"

namespace {

using test::Broken;
using test::Change;
using test::ChangeImage;
using test::Digits;
using test::ImageForm;
using test::NitfBuilder;
using namespace std::string_literals;

class CheckTest : public test::ModuleTest {};

// Behind all tests of one process: rules without a file that breaks them and no other one.
class EveryRule : public testing::Environment {
  void TearDown() override {
    if (std::getenv("ORBNTF_EVERY_RULE") == nullptr) return;
    for (const core::Rule* rule : core::AllRules())
      EXPECT_EQ(test::RulesBrokenAlone().count(rule->id), 1u)
          << "no file breaks " << rule->id << " alone";
  }
};
[[maybe_unused]] testing::Environment* const everyRule = testing::AddGlobalTestEnvironment(new EveryRule);

Broken Header(const std::string& rule, const std::string& field, const std::string& text) {
  return Change(rule, [=](NitfBuilder& file) { file.header.Set(field, text); });
}

// Fields of classification, beside a system that they belong to.
Broken Security(const std::string& rule, const std::vector<std::pair<std::string, std::string>>& fields) {
  return Change(rule, [=](NitfBuilder& file) {
    file.header.Set("FSCLSY", "US");
    for (const auto& [name, text] : fields) file.header.Set(name, text);
  });
}

// Records in an area of the image.
void PutRecords(NitfBuilder& file, const std::string& records, const std::string& overflow = "000") {
  file.images[0]
      .subheader.Set("IXSHDL", static_cast<int64_t>(3 + records.size()))
      .InsertAfter("IXSHDL", "IXS", overflow + records);
}

std::string Reserved() {
  NitfBuilder file = test::SoundFile();
  std::string subheader = test::DataExtensionRecord("XML_DATA_CONTENT").Bytes();
  subheader[0] = 'R';
  file.header.Set("NUMRES", 1)
      .InsertAfter("NUMRES", "LRE", Digits(static_cast<int64_t>(subheader.size()), 4) + "0000000");
  const std::string bytes = file.Bytes() + subheader;
  return file.Patch("FL", Digits(static_cast<int64_t>(bytes.size()), 12)).Bytes() + subheader;
}

// A header that waits for its length, which the replacement data at the end has.
std::string Streamed() {
  constexpr size_t kFront = 360;
  NitfBuilder file = test::SoundFile(), known = file;
  known.extensions.push_back({test::DataExtensionRecord("STREAMING_FILE_HEADER"), ""});
  known.extensions[0].data = test::StreamingData(std::string(kFront, ' '));
  return test::Streamed(file, known.Bytes().substr(0, kFront)).Bytes();
}

// The same where the replacement data is that of another extension; that it was streamed is told as well.
std::string StreamedElsewhere() {
  std::string bytes = Streamed();
  return bytes.replace(bytes.rfind("STREAMING_FILE_HEADER"), 21, "CSSHPA DES           ");
}

TEST_F(CheckTest, ASoundFileBreaksNoRule) {
  EXPECT_EQ(test::RulesBroken(test::SoundFile().Bytes()), std::set<std::string>());
  NitfBuilder linked = test::SoundFile();
  PutRecords(linked, "", "001");
  linked.extensions.push_back({test::DataExtensionRecord("TRE_OVERFLOW"), "TAGONE00003abc"});
  linked.extensions[0].subheader.Set("DESOFLW", "IXSHD").Set("DESITEM", 1);
  EXPECT_EQ(test::RulesBroken(linked.Bytes()), std::set<std::string>());
}

// What lies just inside a limit.
TEST_F(CheckTest, LimitsAreIncluded) {
  const std::vector<std::function<void(NitfBuilder&)>> changes = {
      [](NitfBuilder& file) { file.images[0].subheader.Set("ILOC", "0204002040"); },
      [](NitfBuilder& file) { file.texts[0].data = std::string(99999, 'a'); },
      [](NitfBuilder& file) { file.images[0].subheader.Set("IDLVL", 999); },
      [](NitfBuilder& file) { file.header.Set("FSCOP", "00002").Set("FSCPYS", "00002"); },
      [](NitfBuilder& file) { file.images[0].subheader.Set("IDATIM", "202611--------"); },
  };
  for (size_t i = 0; i < changes.size(); ++i)
    EXPECT_EQ(test::RulesBroken(Change("", changes[i]).file()), std::set<std::string>()) << i;
}

TEST_F(CheckTest, TheFileHeader) {
  test::ExpectBroken({
      Header("file.mark", "FVER", "02.20"),
      Header("file.type", "STYPE", "BF02"),
      Header("file.station", "OSTAID", ""),
      Header("date.form", "FDT", "20260231120000"),
      ChangeImage("date.form", "IDATIM", "20261324120000"),
      Header("file.date", "FDT", "19700101000000"),
      Header("file.date", "FDT", "29990101000000"),
      Header("file.copies", "FSCOP", "00002"),
      ChangeImage("header.encryption", "ENCRYP", "1"),
      Header("file.numx", "NUMX", "001"),
      {"file.reserved", Reserved},
      Header("header.characters", "FTITLE", "a\x01z"),
      Header("header.characters", "OSTAID", "Caf\xE9"),
      ChangeImage("segment.mark", "IM", "XX"),
  });
}

TEST_F(CheckTest, Lengths) {
  const std::string sound = test::SoundFile().Bytes();
  const auto withLength = [sound](int64_t change) {
    return Digits(static_cast<int64_t>(sound.size()) + change, 12);
  };
  test::ExpectBroken({
      Change("file.length", [=](NitfBuilder& file) { file.Patch("FL", withLength(1)); }),
      Change("file.header", [](NitfBuilder& file) { file.header.InsertAfter("XHDL", "PAD", "    "); }),
      {"file.sum", [=] { return test::SoundFile().Patch("FL", withLength(1)).Bytes() + "x"; }},
      Change("file.placeholder", [](NitfBuilder& file) { file.Patch("FL", "999999999999"); }),
      {"file.streamed", Streamed},
      {"file.streamed.extension", StreamedElsewhere},
      Change("segment.subheader",
             [](NitfBuilder& file) { file.images[0].subheader.InsertAfter("IXSHDL", "PAD", "  "); }),
      {"segment.data",
       [=] {
         NitfBuilder file = test::SoundFile().Patch("FL", withLength(-3));
         file.texts[0].data = "A line";
         const std::string bytes = file.Bytes();
         return bytes.substr(0, bytes.size() - 1);
       }},
  });
}

TEST_F(CheckTest, ComplexityLevels) {
  const auto images = [](NitfBuilder& file) {
    for (int i = 0; i < 20; ++i) file.Image(ImageForm{.level = 10 + i}, std::string(64, 'i'));
  };
  const auto extensions = [](NitfBuilder& file) {
    for (int i = 0; i < 11; ++i)
      file.extensions.push_back({test::DataExtensionRecord("XML_DATA_CONTENT"), "<x/>"});
  };
  const auto graphics = [](NitfBuilder& file) {
    std::string body;
    for (int i = 0; i < 22; ++i) body += test::Element(4, 1, std::string(28000, '\0'));
    file.graphics[0].data = test::Metafile(body);
    file.Graphic(file.graphics[0].subheader, file.graphics[0].data).graphics[1].subheader.Set("SDLVL", 3);
  };
  test::ExpectBroken({
      Header("level.number", "CLEVEL", "04"),
      ChangeImage("level.canvas", "ILOC", "0204100000"),
      Change("level.size",
             [](NitfBuilder& file) {
               file.extensions.push_back(
                   {test::DataExtensionRecord("CSSHPA DES"), std::string(50 << 20, 'x')});
             }),
      test::Other("level.bands", {.bands = 10, .representation = "MULTI"},
                  [] { return std::string(640, 'b'); }),
      Change("level.images", images),
      Change("level.extensions", extensions),
      Change("level.graphics", graphics),
      Header("level.lowest", "CLEVEL", "05"),
  });
}

TEST_F(CheckTest, CountsOfComplexityLevels) {
  const auto manyGraphics = [](NitfBuilder& file) {
    for (int i = 0; i < 100; ++i) {
      file.Graphic(file.graphics[0].subheader, file.graphics[0].data);
      file.graphics.back().subheader.Set("SDLVL", 3 + i);
    }
  };
  const auto texts = [](NitfBuilder& file) {
    for (int i = 0; i < 32; ++i) file.Text("A line\r\n");
  };
  test::ExpectBroken({Change("level.graphics.count", manyGraphics), Change("level.texts", texts)});
}

TEST_F(CheckTest, Classification) {
  test::ExpectBroken({
      Header("security.class", "FSCLAS", "X"),
      ChangeImage("security.order", "ISCLAS", "R"),
      Header("security.system", "FSCODE", "AB"),
      Security("security.country", {{"FSCLSY", "QX"}}),
      Security("security.exemption.code", {{"FSDCTP", "X"}, {"FSDCXM", "ZZ"}}),
      Security("security.type", {{"FSDCTP", "ZZ"}}),
      Security("security.declassification", {{"FSDCTP", "DD"}}),
      Security("security.declassification", {{"FSDCTP", "X"}, {"FSDCXM", "X1"}, {"FSDCDT", "20270101"}}),
      Security("security.exemption", {{"FSDCXM", "X1"}}),
      Security("security.downgrade", {{"FSDG", "S"}}),
      Security("security.downgrade", {{"FSDG", "U"}, {"FSDCTP", "GE"}}),
      Security("security.downgrade.date", {{"FSDCTP", "GE"}, {"FSDG", "S"}, {"FSDGDT", "20270101"}}),
      Security("security.dates", {{"FSSRDT", "20261301"}}),
      Security("security.authority", {{"FSCATP", "Z"}}),
      Security("security.reason", {{"FSCRSN", "Z"}}),
  });
}

TEST_F(CheckTest, RecordsAndExtensions) {
  const auto extension = [](const std::string& id) {
    return [id](NitfBuilder& file) { file.extensions.push_back({test::DataExtensionRecord(id), "x"}); };
  };
  test::ExpectBroken({
      ChangeImage("records.length", "IXSHDL", "00002"),
      Change("records.end", [](NitfBuilder& file) { PutRecords(file, "TAGONE00000TAG"); }),
      Change("records.end", [](NitfBuilder& file) { PutRecords(file, "TAGONE00009abc"); }),
      Change("records.fit", [](NitfBuilder& file) { PutRecords(file, "BLOCKA00003abc"); }),
      Change(
          "records.values",
          [](NitfBuilder& file) { PutRecords(file, "J2KLRA0002300500001001" + "000"s + "08.00000x"); }),
      Change("extension.name", extension("UNKNOWN")),
      Change("extension.xml", extension("XML_DATA_CONTENT")),
      Change("extension.overflow", [](NitfBuilder& file) { PutRecords(file, "", "001"); }),
      Change("extension.back",
             [](NitfBuilder& file) {
               file.extensions.push_back({test::DataExtensionRecord("TRE_OVERFLOW"), ""});
             }),
  });
}

TEST_F(CheckTest, GraphicsAndTexts) {
  const auto graphic = [](const std::string& rule, const std::string& field, const std::string& text) {
    return Change(rule, [=](NitfBuilder& file) { file.graphics[0].subheader.Set(field, text); });
  };
  const auto drawing = [](const std::string& rule, const std::string& data) {
    return Change(rule, [=](NitfBuilder& file) { file.graphics[0].data = data; });
  };
  const auto text = [](const std::string& rule, const std::string& data, const char* form = "STA") {
    return Change(rule, [=](NitfBuilder& file) {
      file.texts[0].data = data;
      file.texts[0].subheader.Set("TXTFMT", form);
    });
  };
  const std::string line = test::Element(4, 1, test::I({1, 1, 9, 9})), sound = test::Metafile(line);
  test::ExpectBroken({
      graphic("graphic.form", "SFMT", "B"),
      graphic("graphic.colour", "SCOLOR", "X"),
      graphic("graphic.reserved", "SSTRUCT", "0000000000001"),
      graphic("graphic.bounds", "SBND1", "0001100000"),
      drawing("cgm.begin", sound.substr(8)),
      drawing("cgm.begin", ""),
      drawing("cgm.end", sound.substr(0, sound.size() - 2)),
      drawing("cgm.end", sound.substr(0, sound.size() - 6)),
      drawing("cgm.picture", test::Metafile("", line)),
      drawing("cgm.version", test::Metafile(line, test::Element(1, 1, test::I({3})))),
      drawing("cgm.profile", test::Metafile(test::Element(6, 1, test::I({1, 2})))),
      text("text.format", "A", "XXX"),
      text("text.length", ""),
      text("text.characters", "A\x80"),
      text("text.characters", "A\xC3", "U8S"),
      text("text.lines", "A\nB\r\n"),
  });
  EXPECT_EQ(test::RulesBroken(text("", "\xC3\xA4\r\n", "U8S").file()), std::set<std::string>());
}

TEST_F(CheckTest, LevelsAndPlaces) {
  test::ExpectBroken({
      ChangeImage("place.level", "IDLVL", "000"),
      ChangeImage("place.unique", "IDLVL", "002"),
      ChangeImage("place.attachment", "IALVL", "007"),
      ChangeImage("place.lower", "IALVL", "002"),
      ChangeImage("place.form", "ILOC", "ABCDE00000"),
      ChangeImage("place.origin", "ILOC", "-000100000"),
      Change("place.chain",
             [](NitfBuilder& file) {
               file.Image(ImageForm{.level = 3, .attachment = 1, .location = "0000800000"},
                          std::string(64, 'c'));
             }),
  });
}

TEST_F(CheckTest, LevelsThatAreWanted) {
  EXPECT_EQ(test::RulesBroken(test::SoundFile().Bytes(), "level:03"), std::set<std::string>());
  const std::string wide = Change("", [](NitfBuilder& file) {
                             file.images[0].subheader.Set("ILOC", "0204100000");
                             file.header.Set("CLEVEL", "05");
                           }).file();
  EXPECT_EQ(test::RulesBroken(wide, "level:05"), std::set<std::string>());
  EXPECT_EQ(test::RulesBroken(wide, "level:03"), std::set<std::string>{"profile.level"});
}

TEST_F(CheckTest, FindingsNameWhatIsAtFault) {
  const auto first = [](const std::string& bytes) {
    const core::Survey survey{std::string_view(bytes)};
    const auto findings = core::FindFaults(survey, core::RecordDefinitions());
    const core::Finding& found = findings.at(0);
    return found.field + " at " + std::to_string(found.offset) + ": " + found.words;
  };
  NitfBuilder padded = test::SoundFile();
  padded.images[0].subheader.InsertAfter("IXSHDL", "PAD", " ");
  EXPECT_EQ(first(padded.Bytes()), "LISH1 at 363: 1 byte of the subheader is no field");
  NitfBuilder records = test::SoundFile();
  PutRecords(records, "TAGONE00009abc");
  EXPECT_EQ(first(records.Bytes()).substr(0, 8), "IXSHD at");
  NitfBuilder significant = test::SoundFile();
  significant.images[0].subheader.Set("ABPP", "7 ");
  EXPECT_NE(first(significant.Bytes()).find("ABPP is \"7 \", it wants two digits"), std::string::npos);
  NitfBuilder old = test::SoundFile();
  old.header.Set("FVER", "02.00");
  const std::string bytes = old.Bytes();
  EXPECT_EQ(first(bytes), "FHDR at 0: this is NITF 02.00");
  EXPECT_EQ(test::RulesBroken(bytes).size(), 1u) << "nothing else is read by tables of another version";
}

TEST_F(CheckTest, RulesAreToldApart) {
  std::set<std::string> ids;
  for (const core::Rule* rule : core::AllRules()) {
    EXPECT_TRUE(ids.insert(rule->id).second) << rule->id << " stands for two rules";
    EXPECT_EQ(std::string(rule->sentence).back(), '.') << rule->id;
    EXPECT_NE(core::ExampleOf(rule->id), nullptr) << rule->id;
  }
}

}  // namespace
