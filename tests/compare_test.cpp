// What differs between two files.
#include "core/compare/compare.h"

#include <cmath>
#include <cstring>

#include "core/compare/compare_pixels.h"
#include "tests/support/metafile.h"
#include "tests/support/sound.h"
#include "tests/support/support.h"

namespace test {
namespace {

using core::Comparison;
using core::Survey;

// Differences as lines: "part, name field: a | b".
std::vector<std::string> Lines(const Comparison& comparison) {
  std::vector<std::string> lines;
  const auto text = [](const auto& of) { return of ? *of : "-"; };
  const auto number = [](const auto& of) { return of ? std::to_string(*of) : "-"; };
  for (const auto* list : {&comparison.fields, &comparison.records}) {
    for (const auto& difference : *list)
      lines.push_back(difference.part + ", " + difference.name +
                      (difference.field.empty() ? "" : " " + difference.field) + ": " +
                      text(difference.a) + " | " + text(difference.b));
  }
  for (const auto& difference : comparison.segments)
    lines.push_back(difference.part + ": " + number(difference.a) + " | " + number(difference.b) +
                    " from " + number(difference.firstOffset));
  return lines;
}

Comparison Compared(const std::string& a, const std::string& b) {
  const core::RecordDefinitions definitions;
  return Compare(Survey(std::string_view(a)), Survey(std::string_view(b)), definitions);
}
using Differences = std::vector<std::string>;

NitfBuilder WithGraphics(const std::vector<std::string>& titles) {
  NitfBuilder builder = SoundWith({}, std::string(64, 'i'));
  builder.graphics.clear();
  for (const std::string& title : titles) {
    Record record = GraphicRecord();
    record.Set("SNAME", title).Set("SDLVL", static_cast<int64_t>(10 + builder.graphics.size()));
    builder.Graphic(record, Metafile("") + std::string(2 * (title.size() % 2), '\0'));
  }
  return builder;
}

TEST(Compare, SameFilesHaveNoDifference) {
  const std::string bytes = FullFile().Bytes();
  EXPECT_EQ(Lines(Compared(bytes, bytes)), Differences());
}

TEST(Compare, ASegmentThatWasTakenOutIsOneDifference) {
  const std::string all = WithGraphics({"one", "three", "seven"}).Bytes();
  NitfBuilder fewer = WithGraphics({"one", "three", "seven"});
  fewer.graphics.erase(fewer.graphics.begin());
  const auto withoutLengths = [](const Comparison& comparison) {
    Differences lines;
    for (const std::string& line : Lines(comparison)) {
      if (line.rfind("file header, FL:", 0) != 0 && line.rfind("file header, HL:", 0) != 0)
        lines.push_back(line);
    }
    return lines;
  };
  const std::string length = std::to_string(fewer.graphics[0].data.size());
  EXPECT_EQ(withoutLengths(Compared(all, fewer.Bytes())),
            (Differences{"file header, NUMS: 003 | 002", "graphic 0: " + length + " | - from -"}));
  EXPECT_EQ(withoutLengths(Compared(fewer.Bytes(), all)),
            (Differences{"file header, NUMS: 002 | 003", "graphic 0: - | " + length + " from -"}));
  // One that has another number and another place besides.
  fewer.graphics[1].subheader.Set("SLOC", "0000100002");
  EXPECT_EQ(withoutLengths(Compared(all, fewer.Bytes()))[1],
            "graphic 2 | graphic 1, SLOC: 0000000000 | 0000100002");
}

TEST(Compare, RecordsByFieldAndOthersAsBytes) {
  const auto with = [](const std::string& angle, const std::string& other) {
    NitfBuilder builder = SoundFile();
    const std::string records = "OWNTAG00003" + other + "SECTGA00028" + std::string(12, 'a') + angle;
    builder.images[0]
        .subheader.Set("IXSHDL", static_cast<int64_t>(3 + records.size()))
        .InsertAfter("IXSHDL", "IXS", "000" + records);
    return builder.Bytes();
  };
  const std::string one = "be0123456789 ab0", two = "be0123456789 AB0";
  const Differences lines = Lines(Compared(with(one, "xyz"), with(two, "xyZ")));
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], "image 0, OWNTAG: xyz | xyZ");
  EXPECT_EQ(lines[1], "image 0, SECTGA SEC_BE: be0123456789 ab | be0123456789 AB");
}

TEST(Compare, BytesBehindTheLastSegment) {
  const std::string bytes = SoundFile().Bytes();
  EXPECT_EQ(Lines(Compared(bytes, bytes + "more")),
            (Differences{"bytes behind the last segment: 0 | 4 from 0"}));
  EXPECT_EQ(Lines(Compared(bytes + "mere", bytes + "more")),
            (Differences{"bytes behind the last segment: 4 | 4 from 1"}));
}

TEST(Compare, EntriesOfMasksAndTables) {
  const auto masked = [](uint32_t second) {
    return SoundWith({.blocksAcross = 2, .compression = "NM"},
                     MaskBytes({.blocks = {0, second}}) + std::string(128, 'i'))
        .Bytes();
  };
  EXPECT_EQ(Lines(Compared(masked(64), masked(0xFFFFFFFF)))[0], "image 0, BMR 1: 64 | none");
  const auto mapped = [](const std::string& table) {
    return SoundWith({.representation = "RGB/LUT", .lookup = table, .lookupTables = 3},
                     std::string(64, '\0'))
        .Bytes();
  };
  const Differences lines = Lines(Compared(mapped("abcdef"), mapped("abcdeg")));
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].substr(lines[0].find(' ', 9)), " 1: 102 | 103") << lines[0];
}

TEST(Compare, SamplesByGreatestAndMeanDifference) {
  const auto real = [](const std::vector<float>& numbers) {
    std::string data;
    for (const float number : numbers) {
      uint32_t bits = 0;
      std::memcpy(&bits, &number, sizeof bits);
      data += Big(bits, 4);
    }
    return SoundWith({.width = 2, .height = 2, .bits = 32, .pixelType = "R"}, data).Bytes();
  };
  const auto difference = [&](const std::vector<float>& a, const std::vector<float>& b) {
    const Comparison comparison = Compared(real(a), real(b));
    EXPECT_EQ(comparison.samples.size(), 1u);
    return comparison.samples.at(0);
  };
  const auto found = difference({1, 2, 3, 4}, {1, 2.5, 3, -4});
  EXPECT_EQ(found.problem, "");
  EXPECT_EQ(found.part, "image 0");
  EXPECT_EQ(found.samples, 4u);
  EXPECT_EQ(found.differing, 2u);
  EXPECT_EQ(found.largest, 8);
  EXPECT_EQ(found.mean, 8.5 / 4);
  const auto unlike = difference({1, NAN, 3, 4}, {2, 2, 3, 4});
  EXPECT_EQ(unlike.notNumbers, 1u);
  EXPECT_EQ(unlike.differing, 2u);
  EXPECT_EQ(unlike.largest, 1);
}

TEST(Compare, PicturesByTheirPixels) {
  std::string data(64, 'i');
  const std::string a = SoundWith({}, data).Bytes();
  data[9] = 'k';
  data[20] = 'a';
  const std::string b = SoundWith({}, data).Bytes();
  core::ScratchFile scratch("");
  const Survey one{std::string_view(a)}, two{std::string_view(b)};
  const core::PixelDifference pixels = ComparePixels(one, two, scratch);
  ASSERT_TRUE(pixels.BothDraw());
  EXPECT_EQ(pixels.count, 2u);
  EXPECT_EQ(pixels.largest, 8);
  EXPECT_EQ((std::vector{pixels.left, pixels.top, pixels.right, pixels.bottom}),
            (std::vector<uint32_t>{1, 1, 4, 2}));
  uint8_t rgb[3] = {};
  scratch.ReadBack(uint64_t{3} * (pixels.widthA + 1), rgb, 3);
  EXPECT_EQ(rgb[1], 2);
}

}  // namespace
}  // namespace test
