// The core as programs use it.
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "tests/support/core_errors.h"
#include "tests/support/encoders.h"
#include "tests/support/sound.h"
#include "tests/support/support.h"

namespace test {
namespace {

using orbntf::core::Edit;
using orbntf::core::Error;
using orbntf::core::ErrorKind;
using orbntf::core::File;
using orbntf::core::SampleRequest;
using orbntf::core::Samples;
using orbntf::core::SegmentKind;

std::string Ramp() {
  std::string data;
  for (int i = 0; i < 64; ++i) data += static_cast<char>(i);
  return data;
}

TEST(Core, AFileFromItsPathAndFromMemory) {
  const TempFile file(SoundWith({}, Ramp()).Bytes());
  const std::string bytes = file.Contents();
  File files[] = {File::Open(file.Path()), File::FromMemory(bytes.data(), bytes.size())};
  std::swap(files[0], files[1]);
  for (const File& open : files) {
    EXPECT_EQ(open.Size(), bytes.size());
    ASSERT_EQ(open.Segments().size(), 4u);
    const auto& image = open.Segment(SegmentKind::Image);
    EXPECT_EQ(image.title, "image 0");
    EXPECT_EQ(open.Data(image, 60, 100), Ramp().substr(60));
    EXPECT_EQ(open.Data(image, 64, 1), "");
    const auto rows = open.Field(image, "NROWS");
    ASSERT_TRUE(rows.has_value());
    EXPECT_EQ(rows->text, bytes.substr(rows->offset, 8));
    EXPECT_NE(rows->meaning, "");
    EXPECT_FALSE(open.Field(image, "NONESUCH").has_value());
    EXPECT_EQ(open.Fields(open.Segments()[0])[0].text, "NITF");
    EXPECT_TRUE(open.Check().empty());
  }
}

TEST(Core, WindowsOfSamples) {
  const std::string bytes = SoundWith({}, Ramp()).Bytes();
  const File file = File::FromMemory(bytes.data(), bytes.size());
  const auto& image = file.Segment(SegmentKind::Image);
  SampleRequest request;
  request.row = 2, request.column = 3, request.rows = 4, request.columns = 100;
  Samples samples = file.ReadSamples(image, request);
  EXPECT_EQ(samples.width, 5u);
  EXPECT_EQ(samples.height, 4u);
  EXPECT_EQ(samples.sampleBytes, 1u);
  for (uint32_t y = 0; y < 4; ++y) {
    for (uint32_t x = 0; x < 5; ++x) EXPECT_EQ(samples.data[y * 5 + x], (y + 2) * 8 + x + 3);
  }
  request.reduce = 1;
  samples = file.ReadSamples(image, request);
  EXPECT_EQ(samples.data, (std::vector<uint8_t>{19, 21, 23, 35, 37, 39}));
}

TEST(Core, FindingsAndRecordsSayWhereTheyAre) {
  NitfBuilder builder = SoundFile();
  builder.images[0].subheader.Set("IXSHDL", 3 + 13).InsertAfter("IXSHDL", "IXS", "000TAGONE00002xy");
  builder.images[0].subheader.Set("ISYNC", "1");
  const std::string bytes = builder.Bytes();
  const File file = File::FromMemory(bytes.data(), bytes.size());
  const auto records = file.Records(file.Segment(SegmentKind::Image));
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].tag, "TAGONE");
  EXPECT_EQ(records[0].bytes, "xy");
  EXPECT_EQ(bytes.substr(records[0].offset, 6), "TAGONE");
  EXPECT_NE(records[0].problem, "");
  bool found = false;
  for (const auto& finding : file.Check()) {
    if (finding.rule != "image.isync") continue;
    found = true;
    EXPECT_EQ(finding.segment, "image 0");
    EXPECT_EQ(finding.field, "ISYNC");
    EXPECT_EQ(bytes[finding.offset], '1');
    EXPECT_NE(finding.sentence, "");
    EXPECT_NE(finding.standard, "");
  }
  EXPECT_TRUE(found);
}

TEST(Core, ErrorsHaveTheirKind) {
  EXPECT_EQ(KindOf([] { (void)File::Open("/nonesuch/a.ntf"); }), ErrorKind::Unreadable);
  EXPECT_EQ(KindOf([] { (void)File::Open("/"); }), ErrorKind::Unreadable);
  EXPECT_EQ(KindOf([] { (void)File::FromMemory(nullptr, 0); }), ErrorKind::NotNitf);
  EXPECT_EQ(KindOf([] { (void)File::FromMemory("NITF02.00", 9); }), ErrorKind::NotNitf);
  std::string bytes = SoundWith({}, Ramp()).Bytes();
  const File file = File::FromMemory(bytes.data(), bytes.size());
  const auto& image = file.Segment(SegmentKind::Image);
  EXPECT_EQ(KindOf([&] { (void)file.Segment(SegmentKind::Image, 1); }), ErrorKind::Invalid);
  EXPECT_EQ(KindOf([&] { (void)file.ReadSamples(file.Segments()[0]); }), ErrorKind::Invalid);
  SampleRequest request;
  request.row = 8;
  EXPECT_EQ(KindOf([&] { (void)file.ReadSamples(image, request); }), ErrorKind::Invalid);
  request.row = 0;
  request.bands = {1};
  EXPECT_EQ(KindOf([&] { (void)file.ReadSamples(image, request); }), ErrorKind::Invalid);
  const File cut = File::FromMemory(bytes.data(), image.dataOffset + 20);
  EXPECT_EQ(KindOf([&] { (void)cut.ReadSamples(image); }), ErrorKind::Truncated);
  const std::string damaged = SoundWith(BlockForm("C8", 1, 1, 1, "MONO"), "no codestream").Bytes();
  const File other = File::FromMemory(damaged.data(), damaged.size());
  try {
    (void)other.ReadSamples(image);
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.Kind(), ErrorKind::Damaged);
    EXPECT_EQ(error.Segment(), "image 0");
    EXPECT_EQ(damaged.substr(error.Byte().value(), 13), "no codestream");
  }
}

TEST(Core, PicturesComeRowByRow) {
  const std::string bytes = SoundWith({}, Ramp()).Bytes();
  const File file = File::FromMemory(bytes.data(), bytes.size());
  orbntf::core::PictureRequest request;
  request.image = 0;
  EXPECT_EQ(file.DescribePicture(request).fullWidth, 8u);
  request.row = 2;
  request.rows = 3;
  std::string rows;
  const auto info = file.Draw(request, [&](uint32_t row, const uint8_t* rgb) {
    EXPECT_EQ(row * 24, rows.size());
    rows.append(reinterpret_cast<const char*>(rgb), 24);
    return true;
  });
  EXPECT_EQ(info.height, 3u);
  EXPECT_TRUE(info.missing.empty());
  for (size_t i = 0; i < rows.size(); ++i) EXPECT_EQ(rows[i], Ramp()[16 + i / 3]) << i;
  const auto stop = [](uint32_t, const uint8_t*) { return false; };
  EXPECT_EQ(KindOf([&] { (void)file.Draw(request, stop); }), ErrorKind::Stopped);
  EXPECT_EQ(KindOf([&] { (void)file.Draw(request, [](uint32_t, const uint8_t*) -> bool { throw 1; }); }),
            ErrorKind::Stopped);
  EXPECT_EQ(KindOf([&] { (void)file.Draw(request, {}); }), ErrorKind::Invalid);
  request.row = 99;
  EXPECT_EQ(KindOf([&] { (void)file.DescribePicture(request); }), ErrorKind::Invalid);
  request = {};
  request.low = 98;
  EXPECT_EQ(KindOf([&] { (void)file.DescribePicture(request); }), ErrorKind::Invalid);
}

// A small file that says that its image is vast.
TEST(Core, WhatIsNotWorthItsBytesIsRefused) {
  NitfBuilder builder = SoundFile();
  test::Record& image = builder.images[0].subheader;
  image.Set("NROWS", 99999999).Set("NCOLS", 99999999).Set("NPPBH", "0000").Set("NPPBV", "0000");
  image.Set("IC", "NM");
  builder.images[0].data = MaskBytes({{0xFFFFFFFF}, {}, -1});
  const std::string bytes = builder.Bytes();
  const File file = File::FromMemory(bytes.data(), bytes.size());
  EXPECT_EQ(KindOf([&] { (void)file.ReadSamples(file.Segment(SegmentKind::Image)); }),
            ErrorKind::TooMuch);
}

TEST(Core, FilesMayBeUsedInThreads) {
  const std::string bytes =
      SoundWith(BlockForm("C8", 1, 1, 3, "RGB"), EncodeJpeg2000(kSide, kSide, {0, 1, 2})).Bytes();
  std::vector<std::thread> threads;
  std::vector<std::vector<uint8_t>> results(4);
  for (auto& result : results) {
    threads.emplace_back([&] {
      const File file = File::FromMemory(bytes.data(), bytes.size());
      (void)file.Check();
      result = file.ReadSamples(file.Segment(SegmentKind::Image)).data;
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const auto& result : results) EXPECT_EQ(result, results[0]);
  EXPECT_EQ(results[0].size(), size_t{3} * kSide * kSide);
}

TEST(Core, ChangesAreWrittenUnderAnotherName) {
  const TempFile source(SoundWith({}, Ramp()).Bytes()), out("before");
  const std::string bytes = source.Contents();
  const File file = File::Open(source.Path());
  Edit edit(file);
  edit.Set(SegmentKind::FileHeader, 0, "FTITLE", "A title")
      .SetAll("CLAS", "S")
      .SetRecord(SegmentKind::Image, 0, "MADEUP", "abc");
  EXPECT_EQ(edit.AppendText("Words"), 1u);
  edit.Save(out.Path());
  const File changed = File::Open(out.Path());
  EXPECT_EQ(changed.Field(changed.Segment(SegmentKind::Image), "ISCLAS")->text, "S");
  EXPECT_EQ(changed.Records(changed.Segment(SegmentKind::Image))[0].bytes, "abc");
  EXPECT_EQ(changed.Data(changed.Segment(SegmentKind::Text, 1), 0, 100), "Words");
  EXPECT_TRUE(changed.Check().empty());
  Edit back(changed);
  back.Remove(SegmentKind::Text, 1).RemoveRecord(SegmentKind::Image, 0, "MADEUP").SetAll("CLAS", "U");
  back.Set(SegmentKind::FileHeader, 0, "FTITLE",
           std::string(file.Field(file.Segments()[0], "FTITLE")->text));
  const TempFile original;
  back.Save(original.Path());
  EXPECT_EQ(original.Contents(), bytes);
}

TEST(Core, WhatIsNotWrittenLeavesWhatWasThere) {
  const TempFile source(SoundWith({}, Ramp()).Bytes());
  // A folder of its own: others write beside it.
  const auto folder =
      std::filesystem::path(testing::TempDir()) / ("orbntf-core-" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  const std::string out = folder / "out.ntf";
  std::ofstream(out) << "before";
  const File file = File::Open(source.Path());
  Edit edit(file);
  EXPECT_EQ(KindOf([&] { edit.Set(SegmentKind::Image, 7, "IID1", "x"); }), ErrorKind::Invalid);
  EXPECT_EQ(KindOf([&] { edit.Set(SegmentKind::FileHeader, 0, "FTITLE", std::string(81, 'x')); }),
            ErrorKind::Invalid);
  EXPECT_EQ(KindOf([&] { edit.AppendImage(out); }), ErrorKind::Unsupported);
  EXPECT_EQ(KindOf([&] { edit.AppendImage("/none/such"); }), ErrorKind::Unreadable);
  edit.Set(SegmentKind::Image, 0, "ISCLAS", "T");
  EXPECT_EQ(KindOf([&] { edit.Save(out); }), ErrorKind::BreaksRule);
  EXPECT_EQ(KindOf([&] { edit.Save(source.Path(), true); }), ErrorKind::Invalid)
      << "the output is the input";
  EXPECT_EQ(KindOf([&] { edit.Save("/none/such/file.ntf", true); }), ErrorKind::NotWritten);
  EXPECT_EQ(test::ReadFile(out), "before");
  const auto entries = std::filesystem::directory_iterator(folder);
  EXPECT_EQ(std::distance(begin(entries), end(entries)), 1) << "nothing is left beside it";
  edit.Save(out, true);
  EXPECT_EQ(test::ReadFile(out).size(), file.Size());
  std::filesystem::remove_all(folder);
}

TEST(Core, SamplesBecomeANewFile) {
  const TempFile source(SoundWith({}, Ramp()).Bytes()), out;
  const File file = File::Open(source.Path());
  const Samples samples = file.ReadSamples(file.Segment(SegmentKind::Image));
  for (const auto way : {orbntf::core::StorageWay::Uncompressed, orbntf::core::StorageWay::Jpeg2000}) {
    orbntf::core::Storage storage;
    storage.way = way;
    Edit edit = Edit::New("20261126120000");
    EXPECT_EQ(edit.AppendImage(samples, storage), 0u);
    orbntf::core::Placement place;
    place.on = file.Segment(SegmentKind::Image);
    place.row = 3;
    EXPECT_EQ(edit.AppendImage(samples, storage, place), 1u);
    edit.SetLevel();
    edit.Save(out.Path());
    const File made = File::Open(out.Path());
    EXPECT_EQ(made.ReadSamples(made.Segment(SegmentKind::Image, 1)).data, samples.data);
    EXPECT_EQ(made.Field(made.Segment(SegmentKind::Image, 1), "ILOC")->text, "0000300000");
    Edit again(made);
    storage.way = orbntf::core::StorageWay::Jpeg2000;
    again.Recompress(0, storage).Merge(file);
    const TempFile other;
    again.Save(other.Path());
    const File packed = File::Open(other.Path());
    EXPECT_EQ(packed.Field(packed.Segment(SegmentKind::Image), "IC")->text, "C8");
    EXPECT_EQ(packed.ReadSamples(packed.Segment(SegmentKind::Image)).data, samples.data);
  }
}

// A mask's blocks and pad pixels, of which the one in the second block counts as a sample.
TEST(Core, MasksTellWhichPixelsAreThere) {
  ImageForm form;
  form.compression = "NM";
  form.width = form.height = 2;
  form.blocksAcross = 3;
  const std::string mask = MaskBytes({{0, 4, 0xFFFFFFFF}, {0, 0xFFFFFFFF, 0xFFFFFFFF}, 9});
  const std::string bytes = SoundWith(form, mask + std::string("\1\x09\3\4\x09\6\7\x08", 8)).Bytes();
  const File file = File::FromMemory(bytes.data(), bytes.size());
  const auto& image = file.Segment(SegmentKind::Image);
  EXPECT_EQ(file.ReadMask(image), (std::vector<uint8_t>{1, 0, 1, 1, 0, 0, 1, 1, 1, 1, 0, 0}));
  SampleRequest request;
  request.column = 1, request.columns = 3, request.rows = 1;
  EXPECT_EQ(file.ReadMask(image, request), (std::vector<uint8_t>{0, 1, 1}));
  request.reduce = 1;
  EXPECT_EQ(KindOf([&] { (void)file.ReadMask(image, request); }), ErrorKind::Invalid);
  const Samples told = file.DescribeSamples(image);
  EXPECT_EQ(told.width, 6u);
  EXPECT_EQ(told.noData, 9u);
  EXPECT_TRUE(told.data.empty());
}

TEST(Core, PlacesValuesPagesAndDifferences) {
  NitfBuilder builder = SoundWith({}, Ramp());
  builder.images[0]
      .subheader.Set("ICORDS", "D")
      .InsertAfter("ICORDS", "IGEOLO", "+52.000+010.000+52.000+011.000+51.000+011.000+51.000+010.000");
  const std::string bytes = builder.Bytes(), plain = SoundWith({}, Ramp()).Bytes();
  const File file = File::FromMemory(bytes.data(), bytes.size()),
             other = File::FromMemory(plain.data(), plain.size());
  const auto& image = file.Segment(SegmentKind::Image);
  const auto place = file.ToGround(image, 3.5, 3.5);
  EXPECT_NEAR(place.latitude, 51.5, 1e-12);
  EXPECT_NEAR(place.longitude, 10.5, 1e-12);
  EXPECT_EQ(place.model, "IGEOLO");
  EXPECT_FALSE(place.height.has_value());
  EXPECT_NEAR(file.ToImage(image, 51.5, 10.5).row, 3.5, 1e-9);
  EXPECT_EQ(KindOf([&] { (void)file.ToImage(image, 95, 10); }), ErrorKind::Invalid);
  EXPECT_EQ(KindOf([&] { (void)other.ToGround(other.Segment(SegmentKind::Image), 0, 0); }),
            ErrorKind::Invalid);
  EXPECT_EQ(KindOf([&] { (void)file.ToGround(file.Segment(SegmentKind::Text), 0, 0); }),
            ErrorKind::Invalid);
  EXPECT_NE(file.ValuesJson(image).find("\"NROWS\":8"), std::string::npos) << file.ValuesJson(image);
  const std::string page = file.Report("A title");
  EXPECT_NE(page.find("A title"), std::string::npos);
  EXPECT_EQ(page.find("The module"), std::string::npos) << "it is not asked";
  EXPECT_TRUE(Compare(file, file).empty());
  bool named = false;
  for (const auto& difference : Compare(other, file)) {
    if (difference.name != "IGEOLO") continue;
    named = true;
    EXPECT_EQ(difference.segment, "image 0");
    EXPECT_FALSE(difference.a.has_value());
    EXPECT_EQ(difference.b->substr(0, 7), "+52.000");
  }
  EXPECT_TRUE(named);
  EXPECT_EQ(KindOf([&] { (void)file.Check({}, "nonsense"); }), ErrorKind::Invalid);
  EXPECT_TRUE(file.Check({}, "level:03").empty());
}

}  // namespace
}  // namespace test
