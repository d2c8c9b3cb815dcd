// Long work that is told of, asked to end, and not done twice.
#include <algorithm>

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
using orbntf::core::Interruption;
using orbntf::core::SampleRequest;
using orbntf::core::SegmentKind;

// A file of one image in one JPEG or facsimile stream.
std::string OneStream(const std::string& compression) {
  constexpr int kSide = 64;
  if (compression == "C3") {
    ImageForm form = BlockForm("C3", 1, 1, 1, "MONO");
    form.width = form.height = kSide;
    form.bits = 8;
    return SoundWith(form, EncodeJpeg(std::string(kSide * kSide, 'j'), kSide, kSide, 1)).Bytes();
  }
  ImageForm form = BlockForm("C1", 1, 1, 1, "MONO");
  form.width = form.height = kSide;
  form.pixelType = "B";
  form.rate = "2DS";
  form.bits = 1;
  return SoundWith(form, EncodeFacsimile(kSide, kSide, true)).Bytes();
}

TEST(CoreWork, WorkStopsWhenItIsNotWantedAnyMore) {
  const std::string bytes = SoundWith({.width = 1024, .height = 4096}, std::string(4 << 20, 's')).Bytes();
  const File file = File::FromMemory(bytes.data(), bytes.size());
  const auto& image = file.Segment(SegmentKind::Image);
  SampleRequest request;
  double reached = 0;
  request.progress = [&](double done) { return (reached = done) < 0.5; };
  EXPECT_EQ(KindOf([&] { (void)file.ReadSamples(image, request); }), ErrorKind::Stopped);
  EXPECT_NEAR(reached, 0.5, 0.1);
  request.progress = [](double) -> bool { throw 1; };
  EXPECT_EQ(KindOf([&] { (void)file.ReadSamples(image, request); }), ErrorKind::Stopped);
  EXPECT_EQ(KindOf([&] { (void)file.Check([](double done) { return done < 0.3; }); }),
            ErrorKind::Stopped);
}

TEST(CoreWork, OneStreamTellsOfItsRows) {
  for (const std::string compression : {"C3", "C1"}) {
    const std::string bytes = OneStream(compression);
    const File file = File::FromMemory(bytes.data(), bytes.size());
    const auto& image = file.Segment(SegmentKind::Image);
    SampleRequest request;
    std::vector<double> told;
    request.progress = [&](double done) {
      told.push_back(done);
      return true;
    };
    const auto all = file.ReadSamples(image, request).data;
    EXPECT_GT(told.size(), 20u) << compression;
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_GT(told.back(), 0.5);
    EXPECT_LE(told.back(), 1.0);
    request.progress = [](double done) { return done < 0.5; };
    EXPECT_EQ(KindOf([&] { (void)file.ReadSamples(image, request); }), ErrorKind::Stopped);
    request = {};
    // Windows one below the other, above and below.
    for (const uint64_t row : {0, 20, 40, 10}) {
      request.row = row, request.rows = 20;
      const auto some = file.ReadSamples(image, request).data;
      EXPECT_TRUE(std::equal(some.begin(), some.end(), all.begin() + static_cast<long>(row * 64)))
          << compression << ' ' << row;
    }
  }
}

TEST(CoreWork, AnInterruptionEndsWhateverIsDone) {
  const TempFile source(OneStream("C3")), out;
  const File file = File::Open(source.Path());
  const auto& image = file.Segment(SegmentKind::Image);
  const auto take = [](uint32_t, const uint8_t*) { return true; };
  Edit edit(file);
  edit.Set(SegmentKind::FileHeader, 0, "FTITLE", "A title");
  orbntf::core::Storage storage;
  storage.way = orbntf::core::StorageWay::Uncompressed;
  const std::function<void()> works[] = {[&] { (void)File::Open(source.Path()); },
                                         [&] { (void)file.ReadSamples(image); },
                                         [&] { (void)file.Check(); },
                                         [&] { (void)file.Draw({}, take); },
                                         [&] { (void)file.Report("A title"); },
                                         [&] { (void)Compare(file, file); },
                                         [&] { edit.Recompress(0, storage); },
                                         [&] { edit.Save(out.Path()); }};
  for (const auto& work : works) {
    const ptrdiff_t number = &work - works;
    const Interruption goesOn([] { return true; });
    {
      const Interruption stops([] { return false; });
      EXPECT_EQ(KindOf(work), ErrorKind::Stopped) << number;
      const Interruption throws([]() -> bool { throw 1; });
      EXPECT_EQ(KindOf(work), ErrorKind::Stopped) << number;
    }
    EXPECT_NO_THROW(work()) << number;
  }
}

// A file of one JPEG stream that is read piece by piece.
std::string LargeStream() {
  constexpr int kSide = 2400;
  std::string noise(size_t{kSide} * kSide, '\0');
  for (size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<char>(i * i % 251 + i / 7);
  ImageForm form = BlockForm("C3", 1, 1, 1, "MONO");
  form.width = form.height = kSide;
  return SoundWith(form, EncodeJpeg(noise, kSide, kSide, 1)).Bytes();
}

TEST(CoreWork, WhatWasStoppedIsReadAnew) {
  const std::string bytes = LargeStream();
  ASSERT_GT(bytes.size(), size_t{1} << 20);
  const File file = File::FromMemory(bytes.data(), bytes.size());
  const auto& image = file.Segment(SegmentKind::Image);
  SampleRequest request;
  request.rows = 10;
  const auto wanted = file.ReadSamples(image, request).data;
  {
    const Interruption stops([] { return false; });
    EXPECT_EQ(KindOf([&] { (void)file.ReadSamples(image, request); }), ErrorKind::Stopped);
    EXPECT_EQ(KindOf([&] { (void)file.ReadSamples(image, request); }), ErrorKind::Stopped);
  }
  EXPECT_EQ(file.ReadSamples(image, request).data, wanted);
}

// An image that was stored anew, but not compared yet, is not kept.
TEST(CoreWork, AChangeThatIsStoppedChangesNothing) {
  const TempFile source(LargeStream()), out;
  const File file = File::Open(source.Path());
  orbntf::core::Storage storage;
  storage.way = orbntf::core::StorageWay::Uncompressed;
  bool isStopped = true;
  for (int questions = 1; isStopped; ++questions) {
    Edit edit(file);
    int asked = 0;
    try {
      const Interruption stops([&] { return ++asked < questions; });
      edit.Recompress(0, storage);
      isStopped = false;
    } catch (const Error& error) {
      EXPECT_EQ(error.Kind(), ErrorKind::Stopped);
    }
    edit.Save(out.Path(), true);
    const File saved = File::Open(out.Path());
    EXPECT_EQ(saved.Field(saved.Segment(SegmentKind::Image), "IC")->text, isStopped ? "C3" : "NC");
    if (questions > 3) ++questions;
  }
}

TEST(CoreWork, ErrorsNameFieldAndByte) {
  const std::string bytes = SoundWith({}, std::string(64, 's')).Bytes();
  const File file = File::FromMemory(bytes.data(), bytes.size());
  Edit edit(file);
  auto error = ErrorOf([&] { edit.Set(SegmentKind::Image, 0, "IID1", std::string(11, 'x')); });
  ASSERT_TRUE(error.has_value());
  EXPECT_EQ(error->Field(), "IID1");
  EXPECT_EQ(error->Segment(), "image 0");
  EXPECT_EQ(error->Kind(), ErrorKind::Invalid);
  error = ErrorOf([&] { edit.SetAll("CLAS", "X"); });
  ASSERT_TRUE(error.has_value());
  EXPECT_EQ(error->Field(), "CLAS");
  const std::string other = SoundWith(BlockForm("XY", 1, 1, 1, "MONO"), "of no codec").Bytes();
  const File odd = File::FromMemory(other.data(), other.size());
  error = ErrorOf([&] { (void)odd.ReadSamples(odd.Segment(SegmentKind::Image)); });
  ASSERT_TRUE(error.has_value());
  EXPECT_EQ(error->Field(), "IC");
  EXPECT_EQ(error->Kind(), ErrorKind::Unsupported);
  EXPECT_EQ(other.substr(error->Byte().value(), 2), "XY");
}

}  // namespace
}  // namespace test
