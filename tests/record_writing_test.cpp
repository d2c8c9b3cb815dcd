// Header records as they are read, set and written, each by itself.
#include "Common/Exchange.h"
#include "Common/ImSubHdr.h"
#include "Common/ImgModes.h"
#include "tests/support/objects.h"

namespace {

using test::Handle;
using test::ImageForm;
using test::NitfBuilder;

using RecordWritingTest = test::ModuleTest;

// What some writing puts into a file.
template <class Write>
std::string Written(Write write) {
  const test::TempFile file;
  OwnedFile out;
  out.OpenForWriting(file.Wide());
  FieldWriter writer(out.Handle());
  EXPECT_EQ(write(writer), Status::Success);
  EXPECT_EQ(out.Close(), Status::Success);
  EXPECT_EQ(file.Contents().size(), writer.Written());
  return file.Contents();
}
template <class R>
std::string WrittenFresh() {
  const R fresh;
  return Written([&](FieldWriter& writer) { return WriteRows<R>(R::Table(), fresh, writer); });
}

TEST_F(RecordWritingTest, FreshRecordsAreFilledToTheirWidths) {
  const auto blanks = [](size_t count) { return std::string(count, ' '); };
  const auto zeros = [](size_t count) { return std::string(count, '0'); };
  const std::string security = "U" + blanks(166);
  EXPECT_EQ(WrittenFresh<BandFields>(), blanks(8) + "0" + blanks(3) + "0");
  EXPECT_EQ(WrittenFresh<ImageSubheader>(), "IMMissing ID" + blanks(14 + 17 + 80) + security + "0" +
                                                blanks(42) + zeros(16) + "INTRGB" + blanks(5) + "VIS" +
                                                blanks(5) + "00R 0  00.00000000P" +
                                                zeros(4 * 4 + 2 + 6 + 10) + "1.0 " + zeros(10));
  EXPECT_EQ(WrittenFresh<GraphicSubheader>(),
            "SYID" + blanks(8 + 20) + security + "0C" + zeros(13 + 6 + 20) + "C" + zeros(10 + 2 + 5));
  EXPECT_EQ(WrittenFresh<TextSubheader>(),
            "TEID" + blanks(5) + "000" + blanks(14 + 80) + security + "0STA" + zeros(5));
  EXPECT_EQ(WrittenFresh<DataExtensionSubheader>(), zeros(200));
}

TEST_F(RecordWritingTest, AMaskTableIsWrittenByItsFields) {
  const std::string bytes = test::Big(0x0A0B0C0D, 4) + test::Big(0x0102, 2) + test::Big(0x0304, 2) +
                            test::Big(12, 2) + "\x0D\xE5" + test::Big(0x11121314, 4) +
                            test::Big(0x21222324, 4) + test::Big(0x31323334, 4) +
                            test::Big(0x41424344, 4);
  MaskTable mask;
  const auto read = [&](const std::string& from) {
    const test::TempFile file(from);
    OwnedFile in;
    in.OpenForReading(file.Wide());
    FieldReader reader(in.Handle(), ReadMode::Normal, 0);
    return mask.Read(reader, 2);
  };
  ASSERT_EQ(read(bytes), Status::Success);
  EXPECT_EQ(Written([&](FieldWriter& writer) { return mask.Write(writer); }), bytes);
  // Records that a table has not are those of no earlier one.
  for (const uint64_t length : {0x0102, 0}) {
    const std::string less = test::Big(10, 4) + test::Big(length, 2) +
                             test::Big(length == 0 ? 0x0304 : 0, 2) + test::Big(0, 2) +
                             test::Big(0x51525354, 4) + test::Big(0x61626364, 4);
    ASSERT_EQ(read(less), Status::Success);
    EXPECT_EQ(mask.HasBlockRecords(), length != 0);
    EXPECT_EQ(mask.BlockRecord(1), length != 0 ? 0x61626364 : MaskTable::kNoBlock);
    EXPECT_EQ(mask.BlockRecord(2), MaskTable::kNoBlock) << "behind the table";
    EXPECT_EQ(mask.PadRecord(2), MaskTable::kNoBlock);
    EXPECT_EQ(mask.PadRecord(0), length == 0 ? 0x51525354 : MaskTable::kNoBlock);
    EXPECT_EQ(Written([&](FieldWriter& writer) { return mask.Write(writer); }), less);
  }
}

// What a large canvas is held against before it is made.
TEST_F(RecordWritingTest, TheLeastDataOfAnImageFollowsItsBlocks) {
  const auto least = [](ImageForm form) {
    const test::TempFile file(NitfBuilder().Image(form, std::string(4096, 'x')).Bytes());
    const Handle handle(file);
    return LeastDataBytes(*handle->images.At(0)).Value();
  };
  ImageForm form{.width = 10, .height = 6};
  EXPECT_EQ(least(form), 60u);
  form.bits = 12;
  EXPECT_EQ(least(form), 90u);
  form.bits = 16;
  EXPECT_EQ(least(form), 120u);
  form.bits = 8;
  form.blocksAcross = 3, form.blocksDown = 2;
  EXPECT_EQ(least(form), 6u * 60);
  form.bits = 64;
  EXPECT_EQ(least(form), 6u * 60 * 8);
  // Of three bands the last row may be missing.
  form.bits = 8;
  form.bands = 3;
  form.representation = "RGB";
  for (const char* mode : {"B", "P", "R", "S"}) {
    form.mode = mode;
    EXPECT_EQ(least(form), 6u * 10 * 5) << mode;
  }
  form.bits = 1;
  form.mode = "B";
  EXPECT_EQ(least(form), 10u * 5) << "blocks of less than a byte a pixel lie at one place";
  form = {.width = 10, .height = 6, .compression = "NM"};
  EXPECT_EQ(least(form), 0u);
}

// Numbers that callers set, those of lengths and counts aside: as they were set, saved and read again.
// What the module draws or writes by is the value that was read, but for a few that count at once.
constexpr std::string_view kAtOnce[] = {"ABPP", "SDLVL", "SALVL", "TXTALVL"};

template <class H, class T>
struct Exchanged {
  PublicTable table;
  int32_t(ORB_CALL* get)(NitfHandle, uint32_t, T*);
  int32_t(ORB_CALL* set)(NitfHandle, uint32_t, const T*);
  int32_t(ORB_CALL* free)(T*);
  H* (*of)(NitfFile* document);
};

template <class H, class T>
void SetOne(const Exchanged<H, T>& kind, const FieldRow<H>& row, const PublicField& field) {
  SCOPED_TRACE(row.name);
  const test::TempFile file(test::FullFile().Bytes());
  const Handle handle(file);
  T record = {};
  ASSERT_EQ(kind.get(handle, 0, &record), 1);
  uint8_t* place = field.place(&record);
  const auto before = LoadFrom<int32_t>(place);
  StoreTo(place, before + 1);
  ASSERT_EQ(kind.set(handle, 0, &record), 1);
  StoreTo(place, before);
  (void)kind.free(&record);
  const FieldView now = row.view(*kind.of(handle));
  EXPECT_EQ(DecimalOf(now.text), before + 1);
  const test::TempFile saved(test::Saved(handle));
  NitfFile again;
  ASSERT_EQ(again.ReadDocument(saved.Wide()), Status::Success);
  const FieldView reread = row.view(*kind.of(&again));
  EXPECT_STREQ(reread.text, now.text);
  if (now.value == nullptr) return;
  const bool atOnce = std::find(std::begin(kAtOnce), std::end(kAtOnce), row.name) != std::end(kAtOnce);
  EXPECT_EQ(*now.value, static_cast<uint32_t>(atOnce ? before + 1 : before));
  EXPECT_EQ(*reread.value, static_cast<uint32_t>(before + 1));
}

template <class H, class T>
uint32_t SetEveryNumber(const Exchanged<H, T>& kind) {
  constexpr std::string_view kLeftOut[] = {"NICOM", "XBANDS", "NBANDS", "IXSHDL",
                                           "UDIDL", "SXSHDL", "TXSHDL"};
  uint32_t count = 0;
  for (const FieldRow<H>& row : H::Table()) {
    const PublicField* field = FindField(kind.table, row.name);
    if (row.setAs != SetAs::Number || row.prefix[0] != 0 || field == nullptr) continue;
    if (std::find(std::begin(kLeftOut), std::end(kLeftOut), row.name) != std::end(kLeftOut)) continue;
    SetOne(kind, row, *field);
    ++count;
  }
  return count;
}

TEST_F(RecordWritingTest, NumbersAreSetSavedAndReadAgain) {
  EXPECT_GE((SetEveryNumber<ImageSubheader, ImageHeader>(
                {PublicImageFields(), Orb_NITFGetImageHeader, Orb_NITFSetImageHeader,
                 Orb_NITFFreeImageHeader, [](NitfFile* document) { return document->images.At(0); }})),
            10u);
  EXPECT_GE(
      (SetEveryNumber<GraphicSubheader, GraphicHeader>(
          {PublicGraphicFields(), Orb_NITFGetGraphicHeader, Orb_NITFSetGraphicHeader,
           Orb_NITFFreeGraphicHeader, [](NitfFile* document) { return document->graphics.At(0); }})),
      4u);
  EXPECT_GE((SetEveryNumber<TextSubheader, TextHeader>(
                {PublicTextFields(), Orb_NITFGetTextHeader, Orb_NITFSetTextHeader, Orb_NITFFreeTextHeader,
                 [](NitfFile* document) { return document->texts.At(0); }})),
            1u);
}

}  // namespace
