// Vector-quantised images.
#include "tests/support/vq.h"
#include "tests/support/objects.h"

namespace {

using test::ImageForm;
using test::NitfBuilder;
using test::Rgb;
using test::VqCode;
using test::VqData;
using test::VqEntry;
using test::VqForm;
using test::VqImage;

using VqTest = test::ModuleTest;

// One block as its codes make it: a square of the vector's width at column k x vector height, as far as
// the vector has values and the block has room; later squares cover earlier ones.
std::vector<Rgb> BlockOf(const VqForm& vq, uint32_t firstCode) {
  std::vector<Rgb> block(size_t{vq.blockWidth} * vq.blockHeight);
  const uint32_t side = vq.VectorWidth(), height = vq.VectorHeight(), step = vq.ValueBytes();
  uint32_t n = firstCode;
  for (uint32_t y = 0; y < vq.blockHeight; y += height) {
    for (uint32_t k = 0; k < vq.codesPerRow; ++k) {
      const std::string entry = VqEntry(vq, VqCode(n++) % vq.codes);
      for (uint32_t j = 0; j < std::min({side, height, vq.blockHeight - y}); ++j) {
        for (uint32_t i = 0; i < side && k * height + i < vq.blockWidth; ++i) {
          const auto at = [&](uint32_t byte) {
            return static_cast<uint8_t>(entry[(size_t{j} * side + i) * step + byte]);
          };
          const int word = at(0) << 8 | (step > 1 ? at(1) : 0);
          Rgb& pixel = block[size_t{y + j} * vq.blockWidth + k * height + i];
          pixel = step == 3   ? Rgb{at(0), at(1), at(2)}
                  : step == 1 ? test::Grey(at(0))
                              : test::Grey(word >> (vq.bits - 8));
        }
      }
    }
  }
  return block;
}

void ExpectVq(const test::Picture& picture, const VqForm& vq, int across) {
  ASSERT_EQ(picture.status, 1);
  uint32_t first = 0;
  for (size_t n = 0; n < vq.stored.size(); ++n) {
    if (!vq.stored[n]) continue;
    const std::vector<Rgb> block = BlockOf(vq, first);
    const uint32_t left = static_cast<uint32_t>(n % static_cast<size_t>(across)) * vq.blockWidth;
    const uint32_t top = static_cast<uint32_t>(n / static_cast<size_t>(across)) * vq.blockHeight;
    for (uint32_t y = 0; y < vq.blockHeight; ++y) {
      for (uint32_t x = 0; x < vq.blockWidth; ++x) {
        ASSERT_EQ(picture.At(left + x, top + y), block[size_t{y} * vq.blockWidth + x])
            << n << ": " << x << ',' << y;
      }
    }
    first += vq.CodedRows() * vq.codesPerRow;
  }
}

TEST_F(VqTest, EveryShapeOfVectorsIsDecoded) {
  const std::pair<const char*, VqForm> forms[] = {
      {"squares", {}},
      {"wide vectors", {.codeRows = 8, .codesPerRow = 4, .tables = 4}},
      {"tall vectors", {.codeRows = 2, .codesPerRow = 4, .tables = 4}},
      {"vectors of one column", {.codeRows = 16, .codesPerRow = 16, .tables = 1}},
      {"more codes than are read at once",
       {.blockWidth = 256, .blockHeight = 256, .codeRows = 64, .codesPerRow = 64}},
      {"a single entry", {.entries = 1, .codes = 1}},
      {"fewer tables than columns", {.tables = 3}},
      {"entries that end within a row",
       {.blockWidth = 16, .blockHeight = 15, .codeRows = 3, .codesPerRow = 4, .tables = 3}},
      {"widths that are no multiple of four",
       {.blockWidth = 10, .blockHeight = 15, .codeRows = 3, .codesPerRow = 2, .tables = 5}},
      {"rows that are cut", {.blockWidth = 16, .blockHeight = 18, .codeRows = 4, .codesPerRow = 4}},
      {"codes of five bits", {.codeBits = 5}},
      {"codes of eight bits", {.codeBits = 8}},
      {"colour", {.bands = 3}},
      {"twelve bits", {.bits = 12}},
      {"twelve bits, odd width",
       {.blockWidth = 15, .blockHeight = 15, .codeRows = 5, .codesPerRow = 5, .tables = 3, .bits = 12}},
      {"sixteen bits", {.bits = 16}}};
  for (const auto& [name, form] : forms) {
    SCOPED_TRACE(name);
    ExpectVq(test::RenderImage(VqImage(form, "C4", 1, 1), VqData(form)), form, 1);
    VqForm four = form;
    four.stored = {true, true, true, true};
    ExpectVq(test::RenderImage(VqImage(four, "C4", 2, 2), VqData(four)), four, 2);
  }
}

TEST_F(VqTest, MaskTablesOfEveryKindArePassedOver) {
  for (const int bands : {1, 3}) {
    VqForm vq{.bands = bands};
    vq.stored = {true, true};
    std::vector<uint32_t> records(2 * static_cast<size_t>(bands), 0), none;
    for (const auto& mask : {test::MaskForm{.blocks = records},
                             {.pads = records},
                             {.blocks = records, .pads = records, .padCode = 0},
                             {.padCode = 0}}) {
      ImageForm form = VqImage(vq, "M4", 2, 1);
      const auto picture = test::RenderImage(form, test::MaskBytes(mask) + VqData(vq));
      ASSERT_EQ(picture.status, 1) << bands;
      if (mask.padCode < 0) ExpectVq(picture, vq, 2);
    }
  }
}

TEST_F(VqTest, MaskedVectorQuantisedBlocksConsumeNoCodes) {
  VqForm vq;
  vq.stored = {true, false, true, false};
  const std::string mask = test::MaskBytes({.blocks = {0, 0xFFFFFFFF, 0, 0xFFFFFFFF}});
  NitfBuilder file;
  file.header.SetRaw("FBKGC", "\x01\x02\x03");
  const auto picture = test::RenderBytes(file.Image(VqImage(vq, "M4", 2, 2), mask + VqData(vq)).Bytes());
  ExpectVq(picture, vq, 2);
  EXPECT_EQ(picture.At(16, 0), (Rgb{1, 2, 3})) << "the bitmap reaches as far as its stored blocks";
}

TEST_F(VqTest, FaultyVectorQuantisedDataIsRefused) {
  const auto status = [](const VqForm& vq, size_t cut = 0) {
    std::string data = VqData(vq);
    data.resize(data.size() - cut);
    return test::RenderImage(VqImage(vq, "C4", 1, 1), data).status;
  };
  VqForm vq;
  EXPECT_EQ(status(vq, 1), ORB_SHORT_READ);
  vq.codeRows = 0;
  EXPECT_EQ(status(vq), ORB_BAD_STRUCTURE);
  vq = {};
  vq.codesPerRow = 17;
  EXPECT_EQ(status(vq), ORB_BAD_STRUCTURE);
  vq = {};
  vq.codeBits = 40;
  EXPECT_EQ(status(vq), ORB_BAD_STRUCTURE);
  vq = {};
  vq.entries = 10;
  EXPECT_EQ(status(vq), ORB_BAD_STRUCTURE) << "a code beyond the codebook";
  for (vq.entries = 15; vq.entries <= 16; ++vq.entries)
    EXPECT_EQ(status(vq), vq.entries == 16 ? 1 : ORB_BAD_STRUCTURE) << "the code behind the last";
  vq = {};
  vq.tables = 5;
  EXPECT_EQ(status(vq), ORB_BAD_STRUCTURE) << "more tables than a vector has rows";
  // What the tables hold fits into memory, the vectors that they stand for do not.
  EXPECT_EQ(status({.blockWidth = 4096,
                    .blockHeight = 1,
                    .codeRows = 1,
                    .codesPerRow = 1,
                    .tables = 1,
                    .entries = 600000,
                    .codeBits = 20}),
            ORB_SHORT_READ);
  std::string huge = VqData({});
  huge.replace(21 + 2, 4, test::Big(0xFFFFFFFF, 4));
  EXPECT_EQ(test::RenderImage(VqImage({}, "C4", 1, 1), huge).status, ORB_SHORT_READ);
}

TEST_F(VqTest, VectorQuantisationOfOddDepthsIsRefused) {
  for (const int bits : {1, 4, 9, 17, 20}) {
    VqForm vq;
    ImageForm form = VqImage(vq, "C4", 1, 1);
    form.bits = bits;
    EXPECT_EQ(test::RenderImage(form, VqData(vq)).status, ORB_BAD_STRUCTURE) << bits;
  }
}

TEST_F(VqTest, VectorQuantisedIndexesAreShownThroughTheirTables) {
  const VqForm vq;
  ImageForm form = VqImage(vq, "C4", 1, 1);
  form.representation = "RGB/LUT";
  form.lookupTables = 3;
  for (int table = 0; table < 3; ++table) {
    for (int i = 0; i < 256; ++i) form.lookup += static_cast<char>(i + 10 * table);
  }
  const auto picture = test::RenderImage(form, VqData(vq));
  ASSERT_EQ(picture.status, 1);
  const int value = static_cast<uint8_t>(VqEntry(vq, VqCode(1))[2]);
  EXPECT_EQ(picture.At(6, 0), (Rgb{static_cast<uint8_t>(value), static_cast<uint8_t>(value + 10),
                                   static_cast<uint8_t>(value + 20)}));
}

}  // namespace
