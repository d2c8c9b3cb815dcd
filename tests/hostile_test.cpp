// Files made to break a reader: each ends with a status, at once, and without taking memory for its
// claims.
#include <ctime>
#include <random>

#include "Common/NitfFile.h"
#include "tests/support/support.h"

namespace {

using test::ImageForm;
using test::NitfBuilder;

class HostileTest : public test::ModuleTest {
 protected:
  // Renders and checks that neither a second of the processor nor much memory was spent.
  static int32_t Provoke(const std::string& bytes) {
    HostkitPeakBytes(1);
    const uint64_t before = HostkitBytesHeld();
    const std::clock_t start = std::clock();
    const int32_t status = test::RenderBytes(bytes).status;
    EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC);
    EXPECT_LT(HostkitPeakBytes(0) - before, 64u << 20);
    return status;
  }
};

TEST_F(HostileTest, ClaimsBeyondTheFileAreShortReads) {
  ImageForm form;
  EXPECT_EQ(Provoke(NitfBuilder().Image(form, "x").Patch("LI0", "9999999990").Bytes()), ORB_SHORT_READ);
  form.compression = "C3";
  EXPECT_EQ(Provoke(NitfBuilder().Image(form, "x").Patch("LI0", "9999999998").Bytes()), ORB_SHORT_READ);
  form.compression = "C1";
  EXPECT_EQ(Provoke(NitfBuilder().Image(form, "x").Patch("LI0", "0999999999").Bytes()), ORB_SHORT_READ);
  form.compression = "NC";
  form.pixelType = "B";
  form.bits = 1;
  EXPECT_EQ(Provoke(NitfBuilder().Image(form, "x").Patch("LI0", "0999999999").Bytes()), ORB_SHORT_READ);
  EXPECT_EQ(Provoke(NitfBuilder().Patch("NUMI", "999").Bytes()), ORB_SHORT_READ);
  EXPECT_EQ(Provoke(NitfBuilder().Graphic(test::GraphicRecord(), "x").Patch("LS0", "999999").Bytes()),
            -7);
}

TEST_F(HostileTest, HugeImagesWithoutTheirDataAreShortReads) {
  ImageForm form{.width = 1200, .height = 1200};
  for (const int bands : {1, 3}) {
    form.bands = bands;
    form.representation = bands == 3 ? "RGB" : "MONO";
    for (const char* mode : {"B", "P", "R", "S"}) {
      form.mode = mode;
      form.blocksAcross = form.blocksDown = 4;
      EXPECT_EQ(test::RenderBytes(NitfBuilder().Image(form, "x").Bytes()).status, ORB_SHORT_READ)
          << bands << mode;
      form.blocksAcross = form.blocksDown = 90;
      EXPECT_EQ(Provoke(NitfBuilder().Image(form, "x").Bytes()), ORB_OUT_OF_MEMORY)
          << "the canvas comes first";
    }
  }
}

TEST_F(HostileTest, CountsInSubheadersAreHeldAgainstTheFile) {
  test::Record bands = test::ImageRecord({});
  bands.Set("NBANDS", "0").InsertAfter("NBANDS", "XBANDS", "99999");
  EXPECT_EQ(Provoke(NitfBuilder().Image(bands, "").Bytes()), ORB_SHORT_READ);
  ImageForm lookup{.lookup = "abc", .lookupTables = 1};
  test::Record entries = test::ImageRecord(lookup);
  entries.Set("NELUT0", "99999");
  EXPECT_EQ(Provoke(NitfBuilder().Image(entries, "").Bytes()), ORB_SHORT_READ);
  ImageForm masked{.compression = "NM"};
  test::Record blocks = test::ImageRecord(masked);
  blocks.Set("NBPR", "9999").Set("NBPC", "9999");
  EXPECT_EQ(Provoke(NitfBuilder().Image(blocks, test::MaskBytes({.blocks = {0}})).Bytes()),
            ORB_SHORT_READ);
}

TEST_F(HostileTest, OddDepthsAndSignsEndWithAStatus) {
  for (const char* bits :
       {"00", "03", "07", "09", "11", "13", "21", "24", "25", "33", "48", "64", "99", "-1", "-9"}) {
    for (const int bands : {1, 2, 3, 4}) {
      for (const char* mode : {"B", "P", "R", "S"}) {
        ImageForm form{.bands = bands, .representation = bands == 1 ? "MONO" : "MULTI", .mode = mode};
        test::Record record = test::ImageRecord(form);
        record.Set("NBPP", bits);
        (void)Provoke(NitfBuilder().Image(record, std::string(4096, 'x')).Bytes());
      }
    }
  }
  for (const char* field : {"NBPR", "NBPC", "NPPBH", "NPPBV"}) {
    for (const char* text : {"0000", "-001", "9999", "    "}) {
      test::Record record = test::ImageRecord({});
      record.Set(field, text);
      EXPECT_NE(Provoke(NitfBuilder().Image(record, std::string(64, 'x')).Bytes()), 1) << field << text;
    }
  }
}

TEST_F(HostileTest, RandomDamageNeverBreaksTheReader) {
  ImageForm form{.blocksAcross = 2, .bands = 3, .compression = "NM", .representation = "RGB"};
  NitfBuilder file;
  file.Image(form,
             test::MaskBytes({.blocks = {0, 192, 0, 0, 0, 0}, .pads = {0, 1, 2, 3, 4, 5}, .padCode = 1}) +
                 std::string(400, 'x'));
  file.Text("text").extensions.push_back({test::DataExtensionRecord("TRE_OVERFLOW"), "data"});
  const std::string whole = file.Bytes();
  std::mt19937 random(2500);
  constexpr int kRounds = sizeof(void*) == 4 ? 1000 : 4000;  // 32-bit programs often run emulated
  for (int round = 0; round < kRounds; ++round) {
    std::string damaged = whole;
    for (int i = 0; i < 3; ++i) {
      const size_t at = random() % damaged.size();
      damaged[at] =
          random() % 2 != 0 ? static_cast<char>('0' + random() % 10) : static_cast<char>(random());
    }
    NitfFile document;
    const test::TempFile onDisk(damaged);
    if (Ok(document.ReadDocument(onDisk.Wide()))) {
      uint32_t width = 0, height = 0;
      if (GetActual_Width_Height(&document, &width, &height) == 1 && uint64_t{width} * height < 1 << 22) {
        KernelBitmap bitmap = {};
        if (Orb_NtfRenderBitmap(&bitmap, &document) == 1) KernelFreeBitmap(&bitmap);
      }
    }
  }
}

}  // namespace
