#include "Common/Fields.h"

#include <cmath>

#include "Common/NitfFile.h"
#include "Common/SharedFields.h"
#include "tests/support/support.h"

namespace {

using FieldsTest = test::ModuleTest;

TEST_F(FieldsTest, DecimalConversionFollowsAtoiAndNeverOverflows) {
  EXPECT_EQ(DecimalOf("  42x"), 42);
  EXPECT_EQ(DecimalOf("-0012"), -12);
  EXPECT_EQ(DecimalOf("+7"), 7);
  EXPECT_EQ(DecimalOf("   "), 0);
  EXPECT_EQ(DecimalOf(":5"), 0);
  EXPECT_EQ(DecimalOf("/5"), 0);
  EXPECT_EQ(DecimalOf("9999999999"), INT32_MAX);
  EXPECT_EQ(DecimalOf("-99999999999999999999999999"), INT32_MIN);
  EXPECT_EQ(LengthOf("4294967295"), 4294967295u);
  EXPECT_EQ(LengthOf("9999999999"), 4294967295u);
  EXPECT_EQ(LengthOf("99999999999999999999999999"), 4294967295u);
  EXPECT_EQ(LengthOf("-5"), 0u);
}

TEST_F(FieldsTest, SpacesAndSignsStandInFrontOfNumbers) {
  for (const char space : {' ', '\t', '\n', '\v', '\f', '\r'}) {
    EXPECT_EQ(DecimalOf(space + std::string("42")), 42) << int{space};
    EXPECT_EQ(RealOf(space + std::string("4.5")), 4.5) << int{space};
  }
  for (const char other : {'\b', '\x0E', '!'}) {
    EXPECT_EQ(DecimalOf(other + std::string("42")), 0) << int{other};
    EXPECT_EQ(RealOf(other + std::string("42")), 0) << int{other};
  }
  EXPECT_EQ(DecimalOf("+-5"), 0);
  EXPECT_EQ(DecimalOf("2147483647"), INT32_MAX);
  EXPECT_EQ(DecimalOf("-2147483647"), -INT32_MAX);
  EXPECT_EQ(DecimalOf("-2147483648"), INT32_MIN);
  const std::pair<const char*, double> reals[] = {
      {"+5", 5},         {"-5", -5},      {"-+5", 0},     {"5e", 5},  {"5E1", 50}, {"5e+1", 50},
      {"-2.5e-1", -.25}, {"1.5.5", 1.5},  {".", 0},       {"", 0},    {"-", 0},    {"7:", 7},
      {"7/", 7},         {"0.125", .125}, {"1e99", 1e99}, {"9e0", 9}, {"e5", 0}};
  for (const auto& [text, value] : reals)
    EXPECT_NEAR(RealOf(text), value, 1e-12 * std::abs(value)) << text;
  EXPECT_NEAR(RealOf("1e500"), 1e99, 1e87);
  EXPECT_NEAR(RealOf("1e-500"), 1e-99, 1e-111);
}

TEST_F(FieldsTest, NumberFieldKeepsTheSignWhereFormattingPutsIt) {
  char field[8] = "unset";
  EXPECT_EQ(FormatNumberField(field, 3, 7), Status::Success);
  EXPECT_STREQ(field, "007");
  EXPECT_EQ(FormatNumberField(field, 5, -12), Status::Success);
  EXPECT_STREQ(field, "00-12");
  EXPECT_EQ(FormatNumberField(field, 4, 0), Status::Success);
  EXPECT_STREQ(field, "0000");
  char longest[24];
  EXPECT_EQ(FormatNumberField(longest, 21, INT64_MIN), Status::Success);
  EXPECT_STREQ(longest, "0-9223372036854775808");
  EXPECT_EQ(FormatNumberField(longest, 19, INT64_MIN), Status::InvalidParameter);
  EXPECT_EQ(FormatNumberField(field, 2, 123), Status::InvalidParameter);
  EXPECT_STREQ(field, "0000");
}

TEST_F(FieldsTest, TextFieldIsPaddedOrRefused) {
  char field[6] = "12345";
  EXPECT_EQ(CopyTextField(field, 5, "ABCDEF"), Status::InvalidParameter);
  EXPECT_STREQ(field, "12345");
  EXPECT_EQ(CopyTextField(field, 5, "AB"), Status::Success);
  EXPECT_STREQ(field, "AB   ");
  EXPECT_EQ(CopyTextField(field, 5, nullptr), Status::InvalidParameter);
  EXPECT_EQ(CopyTextField(nullptr, 5, ""), Status::InvalidParameter);
  EXPECT_EQ(CopyTextField(field, 5, field), Status::Success) << "a field may be set to itself";
  EXPECT_STREQ(field, "AB   ");
}

TEST_F(FieldsTest, LocationsDifferInWhereTheSignStands) {
  Location location;
  EXPECT_EQ(SetLocation(location, -12, 345, true), Status::Success);
  EXPECT_STREQ(location.text, "-001200345");
  EXPECT_EQ(SetLocation(location, -12, 345, false), Status::Success);
  EXPECT_STREQ(location.text, "00-1200345");
  EXPECT_EQ(SetLocation(location, 100000, 0, true), Status::InvalidParameter);
  EXPECT_EQ(SetLocation(location, 0, -10000, true), Status::InvalidParameter);
  EXPECT_STREQ(location.text, "00-1200345");
  std::strcpy(location.text, "00100-0005");
  DecodeLocation(location);
  EXPECT_EQ(location.Row(), 100);
  EXPECT_EQ(location.Column(), -5);
}

TEST_F(FieldsTest, TaggedRecordsAreCountedWithinTheirBytes) {
  const std::string two = "TAGONE00010" + std::string(10, 'x') + "TAGTWO00003xyz";
  EXPECT_EQ(CountTaggedRecords(two), 2u);
  EXPECT_EQ(CountTaggedRecords(""), 0u);
  EXPECT_EQ(CountTaggedRecords(two + "CUT"), 3u) << "a cut record counts";
  EXPECT_EQ(CountTaggedRecords("TAGONE99999"), 1u);
  EXPECT_EQ(CountTaggedRecords("TAGONE-0050" + std::string(100, ' ')), 11u) << "no step backwards";
}

TEST_F(FieldsTest, PaddedFieldsAreWrittenAtTheirWidth) {
  test::TempFile file;
  {
    OwnedFile out;
    out.OpenForWriting(file.Wide());
    EXPECT_EQ(WritePaddedField(out.Handle(), "12", 5, '0'), Status::Success);
    EXPECT_EQ(WritePaddedField(out.Handle(), "12", 5, ' '), Status::Success);
    EXPECT_EQ(WritePaddedField(out.Handle(), "abcdefg", 5, '0'), Status::Success);
    EXPECT_EQ(out.Close(), Status::Success);
  }
  EXPECT_EQ(file.Contents(), "0001212   abcde");
  EXPECT_EQ(WritePaddedField(kNoFile, "12", 5, ' '), Status::ShortWrite);
}

TEST_F(FieldsTest, ExtendedDataMeasuresWhatACallerGives) {
  ExtendedData data;
  EXPECT_EQ(data.SetBytes(nullptr), Status::NoData);
  data.length.value = 2;
  EXPECT_EQ(data.SetBytes("x"), Status::InvalidParameter);
  data.length.value = 3 + 11;
  EXPECT_EQ(data.SetBytes("TAGONE00000 and more"), Status::Success);
  EXPECT_EQ(data.Data(), "TAGONE00000");
  EXPECT_EQ(data.recordCount, 1u);
}

TEST_F(FieldsTest, FreshRecordsHaveTheirDefaults) {
  const FileHeader header;
  EXPECT_STREQ(header.FHDR.text, "NITF");
  EXPECT_STREQ(header.FDT.text, "20050101010101");
  EXPECT_STREQ(header.security.CLAS.text, "U");
  EXPECT_EQ(std::string(header.security.CODE.text), std::string(40, ' '));
  EXPECT_EQ(std::string(header.ONAME.text), std::string(27, ' '));
  EXPECT_STREQ(header.FL.text, "");
  const ImageSubheader image;
  EXPECT_STREQ(image.IID1.text, "Missing ID");
  EXPECT_STREQ(image.ICAT.text, "VIS");
  EXPECT_STREQ(image.IMODE.text, "P");
  EXPECT_EQ(image.IDLVL.value, 1u);
  EXPECT_EQ(image.CompressionCode(), Compression::Unknown);
  const TextSubheader text;
  EXPECT_STREQ(text.TEXTID.text, "ID        ");
  EXPECT_STREQ(text.TXTFMT.text, "STA");
  const DataExtensionSubheader extension;
  EXPECT_STREQ(extension.security.CLAS.text, "");
  const GraphicSubheader graphic;
  EXPECT_STREQ(graphic.SFMT.text, "C");
  EXPECT_STREQ(graphic.SLOC.text, "");
}

}  // namespace
