// Band selection and sample conversion.
#include "Common/ImgPixel.h"
#include "tests/support/support.h"

namespace {

using PixelsTest = test::ModuleTest;

void GiveBands(ImageSubheader& header, const std::vector<std::string>& codes) {
  ASSERT_TRUE(header.bands.Make(codes.size(), {0, u"test"}) == Status::Success);
  header.bandCount = header.NBANDS.value = static_cast<uint32_t>(codes.size());
  for (uint32_t band = 0; band < codes.size(); ++band)
    (void)header.SetBandCode(band, codes[band].c_str());
}

std::array<int, 3> Select(const std::vector<std::string>& codes, BandSelection initial = {0, 1, 2},
                          BandSelection remembered = {-1, -1, -1}) {
  ImageSubheader header;
  GiveBands(header, codes);
  const BandSelection bands = SelectBands(header, remembered, initial);
  return {bands.red, bands.green, bands.blue};
}

using Three = std::array<int, 3>;

TEST_F(PixelsTest, BandsAreChosenByTheirRepresentations) {
  EXPECT_EQ(Select({"G", "B", "R"}), (Three{2, 0, 1}));
  EXPECT_EQ(Select({"", "", "", ""}), (Three{0, 1, 2}));
  EXPECT_EQ(Select({"Y", "Cb", "Cr"}), (Three{0, 1, 2}));
  EXPECT_EQ(Select({"", "Y", "", "Cb"}), (Three{1, 3, 3})) << "an absent chroma is the last band";
  EXPECT_EQ(Select({"", "G", ""}, {0, 0, 0}), (Three{0, 1, 0})) << "an absent colour keeps its start";
  EXPECT_EQ(Select({"", "LU", "M"}), (Three{1, 1, 1}));
  EXPECT_EQ(Select({"", "", "", "M", ""}), (Three{3, 3, 3}));
  EXPECT_EQ(Select({"", "", "", ""}, {0, 1, 2}, {3, 3, 1}), (Three{3, 3, 1}));
  EXPECT_EQ(Select({"", "", "", ""}, {0, 1, 2}, {3, -1, 1}), (Three{0, 1, 2}));
}

TEST_F(PixelsTest, SelectionsWithEqualBandsAreRemembered) {
  ImageSubheader header;
  GiveBands(header, {"", "", "", "M", ""});
  (void)SelectBands(header, header.rememberedBands, {0, 1, 2});
  EXPECT_EQ(header.rememberedBands.green, 3);
  // Two equal indexes are enough, whichever they are.
  for (const BandSelection initial : {BandSelection{1, 0, 0}, {0, 0, 1}, {2, 0, 2}}) {
    ImageSubheader pair;
    GiveBands(pair, {"", "G", ""});
    (void)SelectBands(pair, pair.rememberedBands, initial);
    EXPECT_EQ(pair.rememberedBands.red, initial.red);
    EXPECT_EQ(pair.rememberedBands.blue, initial.blue);
  }
  ImageSubheader distinct;
  GiveBands(distinct, {"R", "G", "B"});
  (void)SelectBands(distinct, distinct.rememberedBands, {0, 1, 2});
  EXPECT_EQ(distinct.rememberedBands.red, -1);
}

std::vector<uint8_t> Converted(std::vector<uint8_t> row, uint32_t nbpp, uint32_t abpp,
                               SampleRange range = {}) {
  ConvertSamples(row, nbpp, abpp, range);
  return row;
}

uint16_t Word(const std::vector<uint8_t>& row, size_t index) {
  uint16_t value;
  std::memcpy(&value, &row[2 * index], 2);
  return value;
}

TEST_F(PixelsTest, SamplesAreStretchedRepackedAndScaled) {
  const auto stretched = Converted({0x0F, 0xFF, 0x08, 0x00}, 16, 12);
  EXPECT_EQ(Word(stretched, 0), 65535);
  EXPECT_EQ(Word(stretched, 1), 32775);
  EXPECT_EQ(Word(Converted({0x12, 0x34}, 16, 16), 0), 0x1234) << "host order";
  EXPECT_EQ(Converted({0x12, 0x34}, 16, 8), (std::vector<uint8_t>{0x12, 0x34}));
  EXPECT_EQ(Converted({0xAB, 0xC1, 0x23}, 12, 12), (std::vector<uint8_t>{0xBC, 0x3A, 0x12}));
  const auto scaled = Converted({0, 0, 1, 0x63, 0, 0, 0, 227}, 32, 24, {100, 355});
  EXPECT_EQ(scaled[0], 255);
  EXPECT_EQ(scaled[1], 127);
  EXPECT_EQ(Converted({0, 0xFF, 0xFF, 0xFF}, 32, 24, {0, 0})[0], 255)
      << "without a range: all values of 24 bits";
}

TEST_F(PixelsTest, RangeIsThatOfAllSamples) {
  std::string data;
  for (uint32_t value : {500u, 100u, 0x80000000u, 900u}) data += test::Big(value, 4);
  // Long data is read in pieces.
  for (int i = 0; i < 20000; ++i) data += test::Big(700, 4);
  data += test::Big(1000, 4);
  const test::TempFile file(test::NitfBuilder().Image(test::ImageForm{}, data).Bytes());
  NitfFile document;
  ASSERT_EQ(document.ReadDocument(file.Wide()), Status::Success);
  SampleRange range;
  EXPECT_EQ(FindSampleRange(ImageSource::Of(document, 0, nullptr), range), Status::Success);
  EXPECT_EQ(range.low, INT32_MIN) << "compared as signed numbers";
  EXPECT_EQ(range.high, 1000);
}

}  // namespace
