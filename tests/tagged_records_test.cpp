// Tagged records: definitions, what they decode, and what they leave as it is.
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <nlohmann/json.hpp>

#include "core/format/records.h"
#include "core/format/words.h"
#include "core/place/footprint.h"
#include "tests/support/support.h"
#include "tools/orbntf/inspect/show_records.h"

namespace {

using core::DecodedField;
using core::RecordField;
using core::TaggedRecord;
using namespace std::string_literals;

class TaggedRecordsTest : public test::ModuleTest {
 protected:
  const core::RecordDefinitions definitions{};

  // The records of an area of these bytes.
  std::vector<TaggedRecord> Records(const std::string& bytes, uint64_t offset = 0) const {
    return core::RecordsOf({"UDHD", offset, bytes, bytes.size(), 0}, definitions);
  }
};

std::string Tagged(const std::string& tag, const std::string& data) {
  return tag + std::string(6 - tag.size(), ' ') + test::Digits(static_cast<int64_t>(data.size()), 5) +
         data;
}

std::filesystem::path ExamplePath(const std::string& tag, const char* ending) {
  return std::filesystem::path(PROJECT_SOURCE_DIR) / "tests/records" / (tag + ending);
}

// Bytes of fields by the text of their definition, with `counts` for those that tell how often others
// come.
class Example {
 public:
  explicit Example(int64_t count) : count_(count) {}

  std::string Of(const std::vector<RecordField>& fields) {
    std::string bytes;
    for (const RecordField& field : fields) {
      for (const core::RecordCount& count : field.counts) counted_.insert(count.field);
    }
    for (const RecordField& field : fields) {
      if (!field.when.empty() && texts_[field.when[0].field] != field.when[0].in.at(0)) continue;
      const int64_t turns = field.counts.empty() ? field.count : count_;
      for (int64_t i = 0; i < turns; ++i) bytes += field.fields.empty() ? One(field) : Of(field.fields);
    }
    return bytes;
  }

 private:
  std::string One(const RecordField& field) {
    std::string text = field.kind == core::ValueKind::Text ? std::string(field.width, 'A')
                                                           : test::Digits(1, field.width);
    if (field.kind == core::ValueKind::Date) text = "20261125120000"s.substr(0, field.width);
    if (counted_.count(field.name) != 0) text = test::Digits(count_, field.width);
    return texts_[field.name] = text;
  }

  int64_t count_;
  std::set<std::string> counted_;
  std::map<std::string, std::string> texts_;
};

// The lengths that registers give, of records with no, one or several turns of their loops.
TEST_F(TaggedRecordsTest, DefinitionsTakeTheRegisteredLengths) {
  struct Length {
    const char* tag;
    int64_t turns;
    size_t bytes;
  };
  const Length lengths[] = {
      {"RPC00B", 0, 1041}, {"BLOCKA", 0, 123}, {"USE00A", 0, 107}, {"STDIDC", 0, 89},  {"ICHIPB", 0, 224},
      {"CSEXRA", 0, 132},  {"CSCRNA", 0, 109}, {"CSDIDA", 0, 70},  {"CSPROA", 0, 120}, {"STREOB", 0, 94},
      {"AIMIDB", 0, 89},   {"ACFTB", 0, 207},  {"MENSRB", 0, 205}, {"PATCHB", 0, 121}, {"EXPLTB", 0, 101},
      {"PIAIMC", 0, 362},  {"PIATGB", 0, 117}, {"GEOPSB", 0, 443}, {"GEOLOB", 0, 48},  {"MAPLOB", 0, 43},
      {"PIAPRD", 0, 201},  {"PIAPRD", 1, 843}, {"MTIRPB", 1, 119}, {"MTIRPB", 3, 203}, {"PRJPSB", 0, 113},
      {"PRJPSB", 9, 248},  {"REGPTB", 1, 81},  {"REGPTB", 9, 697}, {"J2KLRA", 6, 93},  {"HISTOA", 0, 41}};
  std::set<std::string> told;
  for (const Length& length : lengths) {
    const core::RecordDefinition* definition = definitions.Find(length.tag);
    ASSERT_NE(definition, nullptr) << length.tag;
    const std::string data = Example(length.turns).Of(definition->fields);
    EXPECT_EQ(data.size(), length.bytes) << length.tag;
    EXPECT_FALSE(definition->document.empty());
    const std::vector<TaggedRecord> records = Records(Tagged(length.tag, data));
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].problem, "") << length.tag;
    EXPECT_FALSE(records[0].fields.empty());
    // One byte more or less, and the fields do not fit.
    EXPECT_NE(Records(Tagged(length.tag, data + "0"))[0].problem, "") << length.tag;
    EXPECT_NE(Records(Tagged(length.tag, data.substr(1)))[0].problem, "") << length.tag;
    told.insert(length.tag);
  }
  for (const auto& [tag, definition] : definitions.All())
    EXPECT_TRUE(told.count(tag) != 0 || std::filesystem::exists(ExamplePath(tag, ".bin")))
        << tag << " has an example";
}

// The values of all fields in their order, those that repeat one after the other.
void Flatten(const std::vector<DecodedField>& fields,
             std::vector<std::pair<std::string, std::string>>& values) {
  for (const DecodedField& field : fields) {
    for (const auto& turn : field.turns) Flatten(turn, values);
    if (field.field->fields.empty() && !(field.field->repeats && field.text.empty()))
      values.emplace_back(field.field->name, core::ShownText(field));
  }
}

// Records with counts and flags set, beside the values that their fields have.
TEST_F(TaggedRecordsTest, DefinitionsDecodeTheirExamples) {
  int decoded = 0;
  for (const auto& [tag, definition] : definitions.All()) {
    SCOPED_TRACE(tag);
    if (!std::filesystem::exists(ExamplePath(tag, ".bin"))) continue;
    const auto records = Records(Tagged(tag, test::ReadFile(ExamplePath(tag, ".bin"))));
    ASSERT_EQ(records.size(), 1u);
    ASSERT_EQ(records[0].problem, "");
    std::vector<std::pair<std::string, std::string>> values;
    Flatten(records[0].fields, values);
    const auto wanted = nlohmann::json::parse(test::ReadFile(ExamplePath(tag, ".json")));
    ASSERT_EQ(values.size(), wanted.size());
    for (size_t i = 0; i < values.size(); ++i) {
      EXPECT_EQ(values[i].first, wanted[i][0].get<std::string>()) << i;
      const auto& value = wanted[i][1];
      const bool isSame = value.is_string() ? values[i].second == core::Shown(value.get<std::string>())
                                            : std::stod(values[i].second) == value.get<double>();
      EXPECT_TRUE(isSame) << values[i].first << " is " << values[i].second;
    }
    ++decoded;
  }
  EXPECT_EQ(decoded, 47);
}

TEST_F(TaggedRecordsTest, ConditionsAndRepeatsFollowTheFieldsInFront) {
  // Layers as a real file has them, of an original and of a parsed stream.
  const std::string original =
      "00500001002"
      "00000.576172"
      "00100.988281";
  const auto plain = Records(Tagged("J2KLRA", original)),
             parsed = Records(Tagged("J2KLRA", "1" + original.substr(1) + "0300001001"));
  ASSERT_EQ(plain[0].problem + parsed[0].problem, "");
  EXPECT_EQ(core::FindField(plain[0].fields, "NLEVELS_I"), nullptr);
  EXPECT_EQ(core::FindField(parsed[0].fields, "NLEVELS_I")->text, "03");
  const DecodedField& layers = *core::FindField(plain[0].fields, "LAYERS");
  ASSERT_EQ(layers.turns.size(), 2u);
  EXPECT_EQ(core::ValueOf(layers.turns[1][1]), 0.988281);
}

// Events with and without what their flags ask for.
TEST_F(TaggedRecordsTest, FlagsAskForFields) {
  const auto event = [](const std::string& flags) {
    return "20261125120000" + std::string(20, 'S') + "1" + std::string(80, 'c') + "08INT" +
           std::string(10, 'b') + "1" + flags + "08INT" + std::string(10, 'o');
  };
  const std::string bare = event("00000000");
  const std::string full = event("10012.50010001.000002.0001010210002.001001.000-0005103040");
  const auto history = Records(Tagged("HISTOA", std::string(37, 'h') +
                                                    "01"
                                                    "02" +
                                                    bare + full));
  ASSERT_EQ(history[0].problem, "");
  const auto& events = core::FindField(history[0].fields, "EVENTS")->turns;
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(core::FindField(events[0], "DRA_SUB"), nullptr);
  EXPECT_EQ(core::ValueOf(*core::FindField(events[1], "DRA_SUB")), -5);
  EXPECT_EQ(core::FindField(events[1], "OUTBWC")->text, std::string(10, 'o'));
}

TEST_F(TaggedRecordsTest, WhatDoesNotDecodeIsKeptAsItIs) {
  const std::string known = Tagged("PATCHB", std::string(121, '1'));
  const auto records =
      Records(Tagged("NOSUCH", "\x01\x02z") + Tagged("PATCHB", "short") + known + "TAGONE000", 100);
  ASSERT_EQ(records.size(), 4u);
  EXPECT_EQ(records[0].tag, "NOSUCH");
  EXPECT_EQ(records[0].offset, 100u);
  EXPECT_EQ(core::HexOf(records[0].bytes), "01027a");
  EXPECT_EQ(records[1].problem, "does not fit its definition");
  EXPECT_EQ(records[1].offset, 114u);
  EXPECT_EQ(records[2].problem, "") << "an error of one is none of the next";
  EXPECT_EQ(records[3].tag, "");
  EXPECT_EQ(records[3].bytes, "TAGONE000");
  EXPECT_EQ(Records("TAGONE00009abc")[0].problem, "longer than its area");
  EXPECT_EQ(Records("TAGONE-0009abc")[0].problem, "no tag and length");
  // Counts beyond the record.
  EXPECT_NE(Records(Tagged("REGPTB", "9999" + std::string(77, '1')))[0].problem, "");
  EXPECT_NE(Records(Tagged("REGPTB", "x001" + std::string(77, '1')))[0].problem, "");
}

// An extension of 36 MB that says it holds records.
TEST_F(TaggedRecordsTest, RecordsThatOverflowAreKeptWithinBounds) {
  std::string data;
  for (int i = 0; i < 360; ++i) data += Tagged("TAGONE", std::string(99985, 'x'));
  test::NitfBuilder file;
  file.extensions.push_back({test::DataExtensionRecord("TRE_OVERFLOW"), data});
  file.extensions.push_back({test::DataExtensionRecord("TRE_OVERFLOW"), Tagged("TAGTWO", "abc")});
  const std::string bytes = file.Bytes();
  const core::Survey survey{std::string_view(bytes)};
  const auto held = core::RecordsOf(survey.parts[1], {});
  EXPECT_EQ(held.size(), 336u);
  EXPECT_EQ(held.back().problem, "not all of it was read");
  EXPECT_EQ(bytes.substr(held[334].offset, 6), "TAGONE");
  const auto none = core::RecordsOf(survey.parts[2], {});
  ASSERT_EQ(none.size(), 1u);
  EXPECT_EQ(none[0].problem, "not all of it was read");
}

TEST_F(TaggedRecordsTest, BlanksAndDashesAreAbsent) {
  std::string data(121, '1');
  data.replace(0, 4, "----").replace(4, 1, " ").replace(5, 7, "12A4567");
  const auto records = Records(Tagged("PATCHB", data));
  tool::JsonText json(false);
  tool::WriteRecords(json, records);
  EXPECT_NE(json.Text().find(R"("PAT_NO":null,"LAST_PAT_FLAG":null,"LNSTRT":"12A4567","LNSTOP":1111111)"),
            std::string::npos)
      << json.Text();
  EXPECT_EQ(core::ValueOf(records[0].fields[0]), std::nullopt);
}

TEST_F(TaggedRecordsTest, AFoldersDefinitionsJoinTheKnownOnes) {
  const std::filesystem::path folder =
      std::filesystem::path(testing::TempDir()) / ("definitions-" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  const auto put = [&](const std::string& text) { std::ofstream(folder / "one.json") << text; };
  core::RecordDefinitions own;
  put(R"({"tag": "TAGONE", "fields": [{"name": "A", "width": 2, "kind": "number", "repeat": 2}]})");
  EXPECT_EQ(own.AddFolder(folder.string()), "");
  const auto records = core::RecordsOf({"XHD", 0, "TAGONE000040102", 15, 0}, own);
  EXPECT_EQ(tool::DescribeRecord(records[0], ""),
            "TAGONE in XHD, 4 bytes at 0: \n  A[1]: 01\n  A[2]: 02\n");
  for (
      const char* bad :
      {"", "[]", "{}", R"({"tag": "TOOLONGTAG", "fields": [{"name": "A", "width": 1, "kind": "text"}]})",
       R"({"tag": "A", "fields": []})",
       R"({"tag": "A", "fields": [{"name": "A", "width": 0, "kind": "text"}]})",
       R"({"tag": "A", "fields": [{"name": "A", "width": 1, "kind": "words"}]})",
       R"({"tag": "A", "fields": [{"name": "A", "width": -1, "kind": "text"}]})",
       R"({"tag": "A", "fields": [{"name": "A", "width": 1, "kind": "text", "when": {"field": "B"}}]})"}) {
    put(bad);
    EXPECT_NE(own.AddFolder(folder.string()), "") << bad;
  }
  EXPECT_NE(own.AddFolder("no such folder"), "");
  std::filesystem::remove_all(folder);
}

// A definition whose turns take nothing goes on for no longer than one that does.
TEST_F(TaggedRecordsTest, EmptyTurnsEnd) {
  std::string problem;
  const auto definition = core::ParseDefinition(
      R"({"tag": "A", "fields": [{"name": "N", "width": 9, "kind": "number"},
          {"name": "G", "repeat": "N", "fields": [{"name": "B", "width": 1, "kind": "text", "when": {"field": "N", "in": []}}]}]})",
      problem);
  ASSERT_TRUE(definition) << problem;
  std::vector<DecodedField> fields;
  EXPECT_FALSE(core::Decode(*definition, "999999999", fields));
}

TEST_F(TaggedRecordsTest, FootprintsComeFromCornersAndModels) {
  const auto block = [this](const std::string& corners) {
    return core::FootprintsOf(Records(Tagged("BLOCKA", std::string(34, '0') + corners + "010.0")));
  };
  const std::string decimal =
      "+52.000000+011.000000"
      "+51.000000+011.000000"
      "+51.000000+010.000000"
      "+52.000000+010.000000";
  const auto found = block(decimal);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].corners[0].longitude, 10) << "the last one is the upper left corner";
  EXPECT_EQ(found[0].corners[1].longitude, 11);
  EXPECT_EQ(found[0].corners[2].latitude, 51);
  const auto letters = block(
      "520000.00N0110000.00E"
      "N510000.00E0110000.00" +
      decimal.substr(42));
  ASSERT_EQ(letters.size(), 1u);
  EXPECT_EQ(letters[0].corners[1].longitude, 11);
  EXPECT_EQ(letters[0].corners[2].latitude, 51);
  EXPECT_TRUE(block(std::string(84, ' ')).empty());
  EXPECT_TRUE(block("+95" + decimal.substr(3)).empty());
  std::string model(1041, '0');
  model.replace(26, 8, "+40.0000")
      .replace(34, 9, "-179.5000")
      .replace(59, 8, "+01.0000")
      .replace(67, 9, "+001.0000");
  const auto box = core::FootprintsOf(Records(Tagged("RPC00B", model)));
  ASSERT_EQ(box.size(), 1u);
  EXPECT_EQ(box[0].corners[0].latitude, 41);
  EXPECT_EQ(box[0].corners[0].longitude, -180.5);
  const core::GeographicCorners across = {{{41, 179.5}, {41, -178.5}, {39, -178.5}, {39, 179.5}}};
  EXPECT_FALSE(core::AreCrossed(across));
}

TEST_F(TaggedRecordsTest, RealsAreWrittenByTheShortestTextThatReadsBack) {
  const auto text = [](double value) {
    tool::JsonText json(false);
    json.Real(value);
    return json.Text();
  };
  EXPECT_EQ(text(0.1), "0.1");
  EXPECT_EQ(text(51), "51.0");
  EXPECT_EQ(text(-12.3456789012345), "-12.3456789012345");
  for (const double value : {1.0 / 3, 123456789.12345678, 4.9e-324, 1.7976931348623157e308, 2.5e15})
    EXPECT_EQ(std::strtod(text(value).c_str(), nullptr), value);
}

}  // namespace
