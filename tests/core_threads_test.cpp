// Files of different threads, and the threads that read and write beside them.
#include <thread>

#include "core/pictures/behind.h"
#include "orbntf/core.hpp"
#include "tests/support/encoders.h"
#include "tests/support/support.h"

namespace test {
namespace {

using orbntf::core::File;
using orbntf::core::SegmentKind;

constexpr int kSide = 512;

std::vector<std::string> Files() {
  ImageForm jpeg = BlockForm("C3", 1, 1, 3, "RGB");
  jpeg.width = jpeg.height = kSide;
  const std::string stream = EncodeJpeg(Samples(0, 0, kSide, kSide, {0, 1, 2}), kSide, kSide, 3, true);
  ImageForm words{.width = kSide, .height = kSide, .blocksAcross = 2, .blocksDown = 2, .bits = 16};
  ImageForm whole = BlockForm("C8", 1, 1, 1, "MONO");
  whole.width = whole.height = kSide;
  std::string ramp(size_t{8} * kSide * kSide, '\0');
  for (size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<char>(i * 7 / 1024);
  return {NitfBuilder().Image(jpeg, stream).Text("words").Bytes(),
          NitfBuilder().Image(words, ramp).Bytes(),
          NitfBuilder().Image(whole, EncodeJpeg2000(kSide, kSide, {0})).Bytes()};
}

// Keeps the rows that it is given.
class KeepRows : public core::PictureWriter {
 public:
  explicit KeepRows(std::string& rows) : rows_(rows) {}
  bool PutRows(const uint8_t* rgb, uint32_t rows) override {
    rows_.append(reinterpret_cast<const char*>(rgb), size_t{rows} * 3 * kSide);
    return true;
  }
  bool Finish() override { return true; }

 private:
  std::string& rows_;
};

// All that a file gives: its picture, written behind its drawing, its samples and its findings.
std::string AllOf(const std::string& bytes) {
  const File file = File::FromMemory(bytes.data(), bytes.size());
  std::string all;
  {
    const auto writer = core::WriteBehind(std::make_unique<KeepRows>(all), size_t{3} * kSide);
    (void)file.Draw({}, [&](uint32_t, const uint8_t* rgb) { return writer->PutRow(rgb); });
    EXPECT_TRUE(writer->Finish());
  }
  const auto samples = file.ReadSamples(file.Segment(SegmentKind::Image));
  all.append(samples.data.begin(), samples.data.end());
  for (const auto& finding : file.Check()) all += finding.rule;
  return all;
}

TEST(CoreThreads, FilesOfThreadsHaveNothingToDoWithEachOther) {
  for (const std::string& bytes : Files()) {
    std::string results[4];
    std::vector<std::thread> threads;
    for (std::string& result : results) threads.emplace_back([&] { result = AllOf(bytes); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_GE(results[0].size(), size_t{kSide} * kSide * 4);
    for (const std::string& result : results) EXPECT_TRUE(result == results[0]);
  }
}

}  // namespace
}  // namespace test
