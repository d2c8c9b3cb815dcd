// The fields of the data of a streaming file header.
#include "core/format/streaming.h"
#include "core/format/survey.h"
#include "tests/support/sound.h"
#include "tests/support/support.h"

namespace test {
namespace {

TEST(StreamingFieldsTest, AreThoseOfTheData) {
  NitfBuilder file = SoundFile();
  file.extensions.push_back({DataExtensionRecord("STREAMING_FILE_HEADER"), ""});
  // The replacement is the header with the length of the data that holds it.
  std::string header(360, ' ');
  for (int turn = 0; turn < 2; ++turn) {
    file.extensions[0].data = StreamingData(header);
    header = file.Bytes().substr(0, header.size());
  }
  file.extensions[0].data = StreamingData(header);
  const std::string bytes = file.Patch("FL", "999999999999").Bytes();
  const core::Survey survey{std::string_view(bytes)};
  ASSERT_TRUE(survey.streamed);
  const std::vector<core::DataField> fields = core::StreamingFields(survey.file, survey.parts.back());
  ASSERT_EQ(fields.size(), 5u);
  EXPECT_EQ(bytes.substr(fields[0].offset, fields[0].length), Digits(header.size(), 7));
  EXPECT_EQ(fields[1].text, "0a6e1d97");
  EXPECT_EQ(bytes.substr(fields[2].offset, fields[2].length), header);
  EXPECT_EQ(fields[2].offset, survey.replacementAt);
  EXPECT_EQ(fields[3].text, "0eca14bf");
  EXPECT_EQ(fields[4].text, fields[0].text);
  EXPECT_EQ(fields[4].offset + fields[4].length, bytes.size());
  // Nothing is told of data whose length leads elsewhere, or of another extension.
  for (const auto& [place, text] : {std::pair(fields[0].offset, std::string("0000001")),
                                    {fields[0].offset, "9999999"},
                                    {survey.parts.back().offset + 2, "STREAMED"}}) {
    std::string other = bytes;
    other.replace(place, text.size(), text);
    const core::Survey changed{std::string_view(other)};
    EXPECT_TRUE(core::StreamingFields(changed.file, changed.parts.back()).empty()) << text;
  }
}

}  // namespace
}  // namespace test
