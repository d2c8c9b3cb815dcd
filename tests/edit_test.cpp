// Files changed by splicing: what was asked for changes, and no other byte.
#include <fcntl.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

#include "core/edit/fields.h"
#include "core/edit/mend.h"
#include "core/edit/prove.h"
#include "core/edit/record_edits.h"
#include "core/edit/segments.h"
#include "tests/support/metafile.h"
#include "tests/support/objects.h"
#include "tests/support/sound.h"
#include "tests/support/support.h"

namespace {

using core::Draft;
using core::PartKind;
using test::ImageForm;
using test::NitfBuilder;
using namespace std::string_literals;

using Change = std::function<void(Draft&)>;

// A file after a change; its bytes were proven. An empty text for one that was refused.
std::string Edit(const std::string& bytes, const Change& change,
                 std::vector<std::string>* errors = nullptr) {
  const test::TempFile source(bytes), out("");
  const core::Survey survey(source.Path());
  Draft draft(survey);
  change(draft);
  const core::Descriptor descriptor(open(out.Path().c_str(), O_WRONLY));
  const core::Proof proof =
      core::WriteProven(draft, descriptor.Get(), out.Path(), core::RecordDefinitions());
  EXPECT_EQ(proof.fault, "");
  if (errors != nullptr) *errors = proof.errors;
  return out.Contents();
}

std::string Refusal(const std::string& bytes, const Change& change) {
  try {
    (void)Edit(bytes, change);
  } catch (const core::EditError& error) {
    return error.what();
  }
  return "";
}

Change Setting(PartKind kind, size_t index, const std::string& field, const std::string& value,
               bool force = false) {
  return [=](Draft& draft) { core::SetField(*draft.Find(kind, index), {field, value, force}); };
}

std::string Field(const std::string& bytes, PartKind kind, uint32_t index, const std::string& name) {
  const core::Survey survey{std::string_view(bytes)};
  const core::SurveyedPart* part = survey.Find(kind, index);
  return part != nullptr ? std::string(part->Text(name)) : "no part";
}

uint64_t OffsetOf(const std::string& bytes, PartKind kind, uint32_t index, const std::string& name) {
  const core::Survey survey{std::string_view(bytes)};
  return survey.Find(kind, index)->Find(name)->offset;
}

TEST(EditTest, AFieldChangesItsOwnBytesAlone) {
  const std::string bytes = test::FullFile().Bytes();
  struct Row {
    PartKind kind;
    const char *field, *value, *stored;
  };
  for (const Row& row :
       {Row{PartKind::File, "FTITLE", "Caf\xC3\xA9", "Caf\xE9"},
        Row{PartKind::File, "FBKGC", "#0A0B0C", "\x0A\x0B\x0C"},
        Row{PartKind::Image, "ILOC", "-5,12", "-000500012"}, Row{PartKind::Image, "IDLVL", "7", "007"},
        Row{PartKind::Graphic, "SNAME", "name", "name"}, Row{PartKind::Text, "TXTITL", "t", "t"},
        Row{PartKind::DataExtension, "DESVER", "2", "02"}}) {
    std::string wanted = bytes;
    const size_t width = Field(bytes, row.kind, 0, row.field).size();
    std::string stored = row.stored;
    stored.resize(width, ' ');
    wanted.replace(OffsetOf(bytes, row.kind, 0, row.field), width, stored);
    EXPECT_EQ(Edit(bytes, Setting(row.kind, 0, row.field, row.value)), wanted) << row.field;
  }
}

TEST(EditTest, WhatDoesNotFitIsRefusedByName) {
  const std::string bytes = test::FullFile().Bytes();
  const auto why = [&](PartKind kind, const char* field, const char* value) {
    return Refusal(bytes, Setting(kind, 0, field, value));
  };
  EXPECT_NE(
      why(PartKind::File, "OSTAID", "Caf\xC3\xA9").find("(U+00E9) cannot stand in it: it takes ASCII"),
      std::string::npos);
  EXPECT_NE(why(PartKind::File, "FTITLE", "\xE2\x82\xAC").find("(U+20AC)"), std::string::npos);
  EXPECT_NE(why(PartKind::File, "OSTAID", "eleven chars"), "");
  EXPECT_NE(why(PartKind::Image, "IDLVL", "1000"), "");
  EXPECT_NE(why(PartKind::Image, "ILOC", "100000,0"), "");
  EXPECT_NE(why(PartKind::Image, "NROWS", "3").find("pixels"), std::string::npos);
  for (const char* field : {"FL", "HL", "NUMI", "LISH1", "LI1", "UDHDL", "XHDLOFL", "FVER"})
    EXPECT_NE(why(PartKind::File, field, "1").find("follows from"), std::string::npos) << field;
  EXPECT_NE(why(PartKind::File, "FSCLAS", "X"), "");
  EXPECT_NE(Edit(bytes, Setting(PartKind::File, 0, "FSCLAS", "X", true)), "");
}

TEST(EditTest, WhatBreaksARuleIsToldWithItsName) {
  std::vector<std::string> errors;
  const std::string bytes = test::SoundFile().Bytes();
  (void)Edit(bytes, Setting(PartKind::Image, 0, "ISCLAS", "S"), &errors);
  ASSERT_FALSE(errors.empty());
  EXPECT_NE(errors[0].find("security.order: image 0"), std::string::npos);
  (void)Edit(
      bytes,
      [](Draft& draft) {
        core::SetEverywhere(draft, {"CLAS", "S"});
      },
      &errors);
  EXPECT_TRUE(errors.empty());
  std::string broken = bytes;
  broken.replace(OffsetOf(bytes, PartKind::File, 0, "CLEVEL"), 2, "04");
  (void)Edit(broken, Setting(PartKind::File, 0, "FTITLE", "x"), &errors);
  EXPECT_TRUE(errors.empty()) << "an error that was there is none of the change";
}

TEST(EditTest, CornersAndCommentsMoveWhatFollows) {
  const std::string bytes = test::SoundFile().Bytes();
  const std::string corners = "000000N0000000E000000N0000010E000010S0000010E000010S0000000E";
  const Change add = [&](Draft& draft) {
    core::SetField(*draft.Find(PartKind::Image, 0), {"ICORDS", "G"});
    core::SetField(*draft.Find(PartKind::Image, 0), {"IGEOLO", corners});
    core::SetField(*draft.Find(PartKind::Image, 0), {"ICOM1", "first"});
    core::SetField(*draft.Find(PartKind::Image, 0), {"ICOM2", "second"});
  };
  const Change back = [](Draft& draft) {
    core::SetField(*draft.Find(PartKind::Image, 0), {"NICOM", "0"});
    core::SetField(*draft.Find(PartKind::Image, 0), {"ICORDS", ""});
  };
  const std::string changed = Edit(bytes, add);
  EXPECT_EQ(changed.size(), bytes.size() + 60 + 160);
  EXPECT_EQ(Field(changed, PartKind::Image, 0, "IGEOLO"), corners);
  EXPECT_EQ(Field(changed, PartKind::Image, 0, "ICOM2").substr(0, 7), "second ");
  EXPECT_EQ(Field(changed, PartKind::File, 0, "FL"),
            test::Digits(static_cast<int64_t>(changed.size()), 12));
  EXPECT_EQ(Edit(changed, back), bytes);
}

TEST(EditTest, RecordsComeAndGo) {
  const std::string bytes = test::SoundFile().Bytes();
  for (const auto& [kind, area] :
       {std::pair{PartKind::File, "XHD"}, std::pair{PartKind::Image, "IXSHD"},
        std::pair{PartKind::Graphic, "SXSHD"}, std::pair{PartKind::Text, "TXSHD"}}) {
    const core::RecordName name = {kind, 0, "MADEUP", 1};
    const std::string with = Edit(bytes, [&](Draft& draft) { core::PutRecord(draft, name, "abc"); });
    EXPECT_EQ(Field(with, kind, 0, area), "MADEUP00003abc");
    EXPECT_EQ(test::Unsound(with), "");
    const std::string other = Edit(with, [&](Draft& draft) { core::PutRecord(draft, name, "longer"); });
    EXPECT_EQ(Field(other, kind, 0, area), "MADEUP00006longer");
    EXPECT_EQ(Edit(other, [&](Draft& draft) { core::RemoveRecord(draft, name); }), bytes);
  }
  EXPECT_NE(Refusal(bytes,
                    [](Draft& draft) {
                      core::RemoveRecord(draft, {PartKind::Image, 0, "NONE", 1});
                    }),
            "");
  EXPECT_NE(Refusal(bytes,
                    [](Draft& draft) {
                      core::PutRecord(draft, {PartKind::Image, 0, "TOOLONGTAG", 1}, "x");
                    }),
            "");
}

TEST(EditTest, AFullAreaOverflows) {
  const std::string bytes = test::SoundFile().Bytes();
  const auto put = [](const std::string& tag, size_t size) {
    return [=](Draft& draft) {
      core::PutRecord(draft, {PartKind::Image, 0, tag, 1}, std::string(size, 'x'));
    };
  };
  const std::string one = Edit(bytes, put("FIRST", 60000));
  std::vector<std::string> errors;
  const std::string two = Edit(one, put("SECOND", 50000), &errors);
  EXPECT_TRUE(errors.empty()) << errors[0];
  EXPECT_EQ(Field(two, PartKind::Image, 0, "IXSOFL"), "001");
  EXPECT_EQ(Field(two, PartKind::DataExtension, 0, "DESID").substr(0, 12), "TRE_OVERFLOW");
  EXPECT_EQ(Field(two, PartKind::DataExtension, 0, "DESITEM"), "001");
  const std::string three = Edit(two, put("THIRD", 10), &errors);
  EXPECT_TRUE(errors.empty());
  const auto drop = [](const std::string& tag) {
    return [=](Draft& draft) { core::RemoveRecord(draft, {PartKind::Image, 0, tag, 1}); };
  };
  EXPECT_EQ(Edit(Edit(three, drop("THIRD")), drop("SECOND")), one)
      << "the extension goes with its last record";
  EXPECT_EQ(Edit(one, drop("FIRST")), bytes);
  const std::string none = Edit(
      three, [](Draft& draft) { core::RemoveSegment(draft, PartKind::Image, 0); }, &errors);
  EXPECT_EQ(Field(none, PartKind::File, 0, "NUMDES"), "000") << "and with its segment";
}

TEST(EditTest, AFieldOfARecordIsSetByItsDefinition) {
  const std::string bytes = test::SoundFile().Bytes();
  const core::RecordDefinitions definitions;
  const core::RecordName name = {PartKind::Image, 0, "J2KLRA", 1};
  const std::string record = "00500001002000" + "01.000000"s + "001" + "02.000000";
  const std::string with = Edit(bytes, [&](Draft& draft) { core::PutRecord(draft, name, record); });
  const auto set = [&](const std::string& field, const std::string& value) {
    return
        [=, &definitions](Draft& draft) { core::SetRecordField(draft, name, definitions, field, value); };
  };
  const std::string changed = Edit(with, set("BITRATE:2", "03.500000"));
  EXPECT_EQ(Field(changed, PartKind::Image, 0, "IXSHD").substr(11),
            "00500001002000" + "01.000000"s + "001" + "03.500000");
  EXPECT_EQ(Edit(changed, set("BITRATE:2", "02.000000")), with);
  EXPECT_EQ(Field(Edit(with, set("NLEVELS_O", "4")), PartKind::Image, 0, "IXSHD").substr(12, 2), "04");
  EXPECT_NE(Refusal(with, set("NLAYERS_O", "3")).find("would not fit"), std::string::npos);
  EXPECT_NE(Refusal(with, set("NOFIELD", "3")), "");
}

ImageForm Leveled(int level, int attachment, const char* place) {
  ImageForm form;
  form.level = level;
  form.attachment = attachment;
  form.location = place;
  return form;
}

TEST(EditTest, WhatHangsOnARemovedSegmentStaysAtItsPlace) {
  NitfBuilder builder = test::SoundFile();
  builder.images.clear();
  builder.Image(Leveled(1, 0, "0000000000"), std::string(64, 'a'));
  builder.Image(Leveled(4, 1, "0001000020"), std::string(64, 'b'));
  builder.Image(Leveled(5, 4, "0000300004"), std::string(64, 'c'));
  builder.graphics[0].subheader.Set("SDLVL", 6).Set("SALVL", 4);
  const std::string bytes = builder.Bytes();
  const core::Survey before{std::string_view(bytes)};
  const std::string after =
      Edit(bytes, [](Draft& draft) { core::RemoveSegment(draft, PartKind::Image, 1); });
  const core::Survey survey{std::string_view(after)};
  const core::Places was(before), is(survey);
  EXPECT_EQ(Field(after, PartKind::Image, 1, "IALVL"), "001");
  EXPECT_EQ(Field(after, PartKind::Graphic, 0, "SALVL"), "001");
  const auto same = [&](PartKind kind, uint32_t old, uint32_t now) {
    const core::PlacedSegment &a = *was.Of(*before.Find(kind, old)), &b = *is.Of(*survey.Find(kind, now));
    return a.top == b.top && a.left == b.left && a.bottom == b.bottom && a.right == b.right;
  };
  EXPECT_TRUE(same(PartKind::Image, 2, 1));
  EXPECT_TRUE(same(PartKind::Graphic, 0, 0));
}

TEST(EditTest, NumbersOfExtensionsFollow) {
  NitfBuilder builder = test::SoundFile();
  builder.extensions.push_back({test::DataExtensionRecord("XML_DATA_CONTENT"), "data"});
  const std::string bytes = builder.Bytes();
  const auto put = [](const std::string& tag) {
    return [=](Draft& draft) {
      core::PutRecord(draft, {PartKind::Text, 0, tag, 1}, std::string(60000, 'x'));
    };
  };
  const std::string full = Edit(Edit(bytes, put("ONE")), put("TWO"));
  EXPECT_EQ(Field(full, PartKind::Text, 0, "TXSOFL"), "002");
  const std::string less =
      Edit(full, [](Draft& draft) { core::RemoveSegment(draft, PartKind::DataExtension, 0); });
  EXPECT_EQ(Field(less, PartKind::Text, 0, "TXSOFL"), "001");
  const test::TempFile other(full);
  const core::Survey added(other.Path());
  std::vector<std::string> errors;
  const std::string both = Edit(
      less, [&](Draft& draft) { EXPECT_TRUE(core::Merge(draft, added).empty()); }, &errors);
  EXPECT_TRUE(errors.empty()) << errors[0];
  EXPECT_EQ(Field(both, PartKind::Text, 1, "TXSOFL"), "003");
  EXPECT_EQ(Field(both, PartKind::DataExtension, 2, "DESITEM"), "002");
  EXPECT_EQ(Field(both, PartKind::Image, 1, "IDLVL"),
            test::Digits(core::DigitsOf(Field(less, PartKind::Graphic, 0, "SDLVL")) +
                             core::DigitsOf(Field(full, PartKind::Image, 0, "IDLVL")),
                         3));
}

TEST(EditTest, WhatIsOddStaysAsItIs) {
  NitfBuilder odd = test::FullFile();
  odd.Patch("FL", "000000000017");
  const std::string gaps = odd.Bytes() + "bytes behind the last segment";
  const std::string titled = Edit(gaps, Setting(PartKind::File, 0, "FTITLE", "x"));
  EXPECT_EQ(titled.size(), gaps.size());
  EXPECT_EQ(Field(titled, PartKind::File, 0, "FL"), "000000000017");
  const auto add = [](Draft& draft) { core::PutRecord(draft, {PartKind::File, 0, "MADEUP", 1}, "abc"); };
  const auto drop = [](Draft& draft) { core::RemoveRecord(draft, {PartKind::File, 0, "MADEUP", 1}); };
  EXPECT_EQ(Edit(Edit(gaps, add), drop), gaps);
  // A file that is cut off in its header, in a subheader, in data.
  const std::string whole = test::SoundFile().Bytes();
  for (const size_t length : {size_t{300}, size_t{600}, whole.size() - 5}) {
    const std::string cut = whole.substr(0, length);
    std::string wanted = cut;
    wanted.replace(OffsetOf(whole, PartKind::File, 0, "FTITLE"), 80, std::string(80, ' '))
        .replace(OffsetOf(whole, PartKind::File, 0, "FTITLE"), 1, "x");
    EXPECT_EQ(Edit(cut, Setting(PartKind::File, 0, "FTITLE", "x")), wanted) << length;
  }
  EXPECT_NE(Refusal(whole.substr(0, 300), add), "");
}

TEST(EditTest, AStreamedFileChangesInBothHeaders) {
  NitfBuilder builder = test::SoundFile();
  const std::string header = builder.Bytes();
  const uint64_t length = static_cast<uint64_t>(core::DigitsOf(Field(header, PartKind::File, 0, "HL")));
  builder.extensions.push_back(
      {test::DataExtensionRecord("STREAMING_FILE_HEADER"), std::string(22 + length + 12, 'x')});
  const std::string whole = builder.Bytes();
  const uint64_t own = static_cast<uint64_t>(core::DigitsOf(Field(whole, PartKind::File, 0, "HL")));
  builder.extensions[0].data = test::StreamingData(whole.substr(0, own));
  const std::string sized = builder.Bytes();
  builder.extensions[0].data = test::StreamingData(sized.substr(0, own));
  std::string streamed = builder.Bytes();
  streamed.replace(OffsetOf(streamed, PartKind::File, 0, "FL"), 12, std::string(12, '9'));
  ASSERT_TRUE(core::Survey{std::string_view(streamed)}.streamed);
  const std::string titled = Edit(streamed, Setting(PartKind::File, 0, "FTITLE", "Streamed"));
  EXPECT_EQ(titled.substr(39, 8), "Streamed");
  EXPECT_EQ(Field(titled, PartKind::File, 0, "FTITLE").substr(0, 8), "Streamed");
  EXPECT_EQ(titled.substr(OffsetOf(titled, PartKind::File, 0, "FL"), 12), std::string(12, '9'));
  EXPECT_NE(Refusal(streamed,
                    [](Draft& draft) {
                      core::PutRecord(draft, {PartKind::File, 0, "MADEUP", 1}, "abc");
                    })
                .find("--mend"),
            std::string::npos);
}

TEST(EditTest, LengthsAreMendedWhereTheyCanBeKnown) {
  const auto mended = [](const std::string& bytes, std::string& names) {
    const test::TempFile file(bytes);
    const core::Survey survey(file.Path());
    std::vector<core::MendedLength> lengths;
    std::string whole = bytes;
    const std::string front = core::MendedFront(survey, lengths);
    whole.replace(0, front.size(), front);
    for (const core::MendedLength& length : lengths) names += length.field + " ";
    return whole;
  };
  NitfBuilder builder = test::SoundFile();
  builder.Image(Leveled(9, 0, "0000000000"), std::string(64, 'z'));
  const std::string sound = builder.Bytes();
  for (const auto& [field, text] :
       {std::pair{"FL", "000000000001"}, std::pair{"HL", "000009"}, std::pair{"LI1", "0000000000"},
        std::pair{"LI2", "0000000000"}, std::pair{"LISH1", "000001"}, std::pair{"LISH2", "000500"},
        std::pair{"LT001", "00000"}}) {
    std::string name = field;
    if (name == "LT001") name = "LT1";
    std::string broken = sound, names;
    broken.replace(OffsetOf(sound, PartKind::File, 0, name), std::string(text).size(), text);
    EXPECT_EQ(mended(broken, names), sound) << name;
    EXPECT_EQ(names, name + " ");
  }
  std::string names;
  EXPECT_EQ(mended(sound, names) + names, sound);
}

// Every file that any test makes, and samples: each kind of change makes what it says, and its opposite
// gives the file back.
TEST(EditTest, EveryFileComesBack) {
  std::vector<std::filesystem::path> paths = test::SamplePaths();
  if (const char* folder = std::getenv("ORBNTF_KEPT_FILES"))
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
      if (std::hash<std::string>()(entry.path().filename()) % 12 == 0) paths.push_back(entry.path());
    }
  if (paths.empty()) GTEST_SKIP() << "no files are kept";
  int changed = 0, added = 0;
  for (const std::filesystem::path& path : paths) {
    SCOPED_TRACE(path);
    const std::string bytes = test::ReadFile(path);
    if (bytes.substr(0, 9) != "NITF02.10" && bytes.substr(0, 9) != "NSIF01.00") continue;
    const core::Survey survey(path);
    if (survey.Header().Text("FTITLE").size() != 80 || survey.streamed) continue;
    const std::string title(survey.Header().Text("FTITLE"));
    std::string wanted = bytes;
    wanted.replace(39, 80, "Another title" + std::string(67, ' '));
    ASSERT_EQ(Edit(bytes, Setting(PartKind::File, 0, "FTITLE", "Another title")), wanted);
    ++changed;
    for (const PartKind kind : {PartKind::File, PartKind::Image, PartKind::Text}) {
      const core::RecordName name = {kind, 0, "MADEUP", 1};
      std::string with;
      try {
        with = Edit(bytes, [&](Draft& draft) { core::PutRecord(draft, name, "abc"); });
      } catch (const core::EditError&) {
        continue;
      }
      const core::Survey now{std::string_view(with)};
      const core::SurveyedPart* part = now.Find(kind, 0);
      if (part == nullptr || part->areas.empty()) continue;
      const std::string back = Edit(with, [&](Draft& draft) { core::RemoveRecord(draft, name); });
      // An area of three bytes, without a record, becomes one of none.
      if (back.size() != bytes.size()) continue;
      ASSERT_EQ(back, bytes);
      ++added;
    }
  }
  std::printf("%d titles, %d records\n", changed, added);
  EXPECT_GT(added, 10);
}

}  // namespace
