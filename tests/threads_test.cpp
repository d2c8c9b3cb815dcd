// Documents of different threads have nothing to do with each other.
#include <thread>

#include "tests/support/encoders.h"
#include "tests/support/metafile.h"
#include "tests/support/objects.h"
#include "tests/support/vq.h"

namespace {

using test::BlockForm;
using test::BlockStream;
using test::ImageForm;
using test::NitfBuilder;

using ThreadsTest = test::CodecTest;

std::vector<std::string> Files() {
  using test::Element;
  using test::I;
  const std::string cgm = test::Metafile(Element(5, 22, I({1})) + Element(4, 11, I({0, 0, 40, 40})) +
                                         Element(4, 4, I({7, 8, 1}) + test::S("words")));
  test::Record symbol = test::GraphicRecord();
  symbol.Set("SDLVL", 2).Set("SBND2", "0005000050");
  const test::VqForm vectors;
  ImageForm colour{.blocksAcross = 2, .bands = 3, .representation = "RGB"};
  NitfBuilder whole = test::FullFile();
  whole.Image(BlockForm("C3", 2, 1, 3, "RGB"),
              BlockStream(0, 2, {0, 1, 2}) + BlockStream(1, 2, {0, 1, 2}));
  return {
      whole.Bytes(),
      NitfBuilder().Image(colour, std::string(384, '\x40')).Graphic(symbol, cgm).Bytes(),
      NitfBuilder().Image(BlockForm("C8", 8, 8, 1, "MONO"), test::EncodeJpeg2000(512, 512, {0})).Bytes(),
      NitfBuilder().Image(test::VqImage(vectors, "C4", 1, 1), test::VqData(vectors)).Bytes(),
  };
}

// Opens, draws, edits, appends and saves; the saved bytes, or what failed.
std::string Work(const std::string& path, const std::string& output) {
  NitfHandle document = nullptr;
  if (Orb_NITFCreateA(&document, path.c_str()) != ORB_SUCCESS) return "open";
  std::string result;
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 0);
  if (Orb_NtfRenderBitmap(&bitmap, document) != ORB_SUCCESS) result = "render";
  NITFHeader header = {};
  if (Orb_NITFGetNITFHeader(document, &header) != ORB_SUCCESS ||
      Orb_NITFSetNITFHeader(document, &header) != ORB_SUCCESS) {
    result = "edit";
  }
  Orb_NITFFreeNITFHeader(&header);
  if (Orb_NITFAppendImageSegment(document, &bitmap, kFormatJpegRgb, 24, 40) != ORB_SUCCESS)
    result = "append";
  KernelFreeBitmap(&bitmap);
  if (Orb_NITFSaveFileA(document, output.c_str()) != ORB_SUCCESS) result = "save";
  Orb_NITFDestroy(&document);
  return result.empty() ? test::ReadFile(output) : result;
}

TEST_F(ThreadsTest, DocumentsOfDifferentThreadsAreIndependent) {
  std::vector<std::unique_ptr<test::TempFile>> files;
  for (const std::string& bytes : Files()) files.push_back(std::make_unique<test::TempFile>(bytes));
  const test::TempFile alone;
  std::vector<std::string> expected;
  for (const auto& file : files) {
    expected.push_back(Work(file->Path(), alone.Path()));
    ASSERT_EQ(expected.back().substr(0, 4), "NITF");
  }
  constexpr size_t kThreads = 4, kRounds = 5;
  std::vector<std::unique_ptr<test::TempFile>> outputs;
  for (size_t i = 0; i < kThreads; ++i) outputs.push_back(std::make_unique<test::TempFile>());
  std::vector<int> wrong(kThreads, 0);
  std::vector<std::thread> threads;
  for (size_t thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      for (size_t round = 0; round < kRounds * files.size(); ++round) {
        const size_t which = (round + thread) % files.size();
        wrong[thread] += Work(files[which]->Path(), outputs[thread]->Path()) != expected[which];
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const int count : wrong) EXPECT_EQ(count, 0);
}

}  // namespace
