// Composite size, display order and attachment.
#include "Common/NitfFile.h"
#include "Common/Utility.h"
#include "tests/support/metafile.h"
#include "tests/support/support.h"

namespace {

using test::ImageForm;
using test::NitfBuilder;

struct Placed {
  int level, attachment;
  const char* location;
  int width, height;
  int grey = 0;
};

NitfBuilder Compose(const std::vector<Placed>& images) {
  NitfBuilder file;
  for (const Placed& placed : images) {
    ImageForm form{.width = placed.width, .height = placed.height};
    test::Record record = test::ImageRecord(form);
    record.Set("IDLVL", placed.level).Set("IALVL", placed.attachment).Set("ILOC", placed.location);
    file.Image(record, std::string(static_cast<size_t>(placed.width) * placed.height,
                                   static_cast<char>(placed.grey)));
  }
  return file;
}

struct Size {
  int32_t status;
  uint32_t width, height;
  bool operator==(const Size&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Size& size) {
  return out << size.status << ": " << size.width << " x " << size.height;
}
Size SizeOf(const NitfBuilder& file) {
  const test::TempFile onDisk(file.Bytes());
  NitfFile document;
  Size size{ToCaller(document.ReadDocument(onDisk.Wide())), 0, 0};
  if (size.status == 1) size.status = GetActual_Width_Height(&document, &size.width, &size.height);
  return size;
}

using GeometryTest = test::ModuleTest;

TEST_F(GeometryTest, CompositeReachesTheFarthestSegment) {
  ImageForm blocks{.width = 512, .height = 300, .blocksAcross = 2};
  EXPECT_EQ(SizeOf(NitfBuilder().Image(blocks, "")), (Size{1, 1024, 300}));
  EXPECT_EQ(SizeOf(Compose({{1, 0, "0001000020", 400, 300}, {2, 1, "0010000050", 200, 100}})),
            (Size{1, 420, 310}));
  EXPECT_EQ(SizeOf(NitfBuilder().Text("only text")), (Size{1, 2, 2}));
  EXPECT_EQ(SizeOf(NitfBuilder()), (Size{1, 2048, 2048}));
}

TEST_F(GeometryTest, TheFirstOfSeveralSegmentsOfALevelIsTheFirstByIndex) {
  EXPECT_EQ(SizeOf(Compose({{1, 0, "0001000020", 4, 3},
                            {1, 0, "0050000700", 4, 3},
                            {2, 1, "0000000000", 1000, 1000},
                            {1, 0, "0060000800", 4, 3}})),
            (Size{1, 1020, 1010}));
}

TEST_F(GeometryTest, GraphicsReachTheirBounds) {
  test::Record graphic = test::GraphicRecord();
  graphic.Set("SFMT", "B")
      .Set("SLOC", "0001000020")
      .Set("SBND1", "0000000000")
      .Set("SBND2", "0005000100");
  EXPECT_EQ(SizeOf(NitfBuilder().Graphic(graphic, "")), (Size{1, 100, 50}));
}

TEST_F(GeometryTest, SegmentsWhollyOffTheCanvasAddNothing) {
  EXPECT_EQ(SizeOf(Compose({{1, 0, "0000000000", 30, 20}, {2, 0, "-0100-0100", 50, 60}})),
            (Size{1, 30, 20}));
}

TEST_F(GeometryTest, LoopingAttachmentsStop) {
  // Each segment counts once: 1 is attached to 2 and 2 to 1; 3 to itself.
  EXPECT_EQ(SizeOf(Compose({{1, 2, "0000100001", 10, 10}, {2, 1, "0000200002", 10, 10}})),
            (Size{1, 13, 13}));
  EXPECT_EQ(SizeOf(Compose({{3, 3, "0000500005", 10, 10}})), (Size{1, 15, 15}));
  // 1 leads into a loop that it is not in.
  EXPECT_EQ(
      SizeOf(Compose(
          {{1, 2, "0000100001", 10, 10}, {2, 3, "0000200002", 10, 10}, {3, 2, "0000400004", 10, 10}})),
      (Size{1, 17, 17}));
}

TEST_F(GeometryTest, AbsurdSizesAreRefused) {
  test::Record record = test::ImageRecord({});
  record.Set("NBPR", "-001");
  EXPECT_EQ(SizeOf(NitfBuilder().Image(record, "")).status, ORB_OUT_OF_MEMORY);
}

TEST_F(GeometryTest, EqualLevelsFollowTheExchangeSort) {
  const test::TempFile onDisk(
      Compose({{2, 0, "0000000000", 1, 1}, {2, 0, "0000000000", 1, 1}, {1, 0, "0000000000", 1, 1}})
          .Bytes());
  NitfFile document;
  ASSERT_EQ(document.ReadDocument(onDisk.Wide()), Status::Success);
  DisplayList list;
  ASSERT_EQ(BuildDisplayList(document, list), Status::Success);
  std::vector<uint32_t> order;
  for (const DisplayItem& item : list.Items()) order.push_back(item.index);
  EXPECT_EQ(order, (std::vector<uint32_t>{2, 1, 0}));
  EXPECT_EQ(NextDisplayLevel(document), 3u);
  EXPECT_EQ(NextDisplayLevel(NitfFile()), 1u);
}

TEST_F(GeometryTest, HigherLevelsCoverLowerOnes) {
  const auto picture = test::RenderBytes(Compose({{3, 0, "0000000000", 4, 4, 30},
                                                  {1, 0, "0000000000", 8, 8, 10},
                                                  {2, 3, "0000200002", 4, 4, 20}})
                                             .Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.At(0, 0), test::Grey(30));
  EXPECT_EQ(picture.At(3, 3), test::Grey(30));
  EXPECT_EQ(picture.At(4, 4), test::Grey(20));
  EXPECT_EQ(picture.At(7, 7), test::Grey(10));
}

TEST_F(GeometryTest, ABlankImageIsDrawnOnceBelowThoseAboveIt) {
  ImageForm blank{.width = 4,
                  .height = 8,
                  .blocksAcross = 2,
                  .compression = "NM",
                  .lookup = "\x50q",
                  .lookupTables = 1};
  NitfBuilder file;
  file.Image(blank, test::MaskBytes({.blocks = {0xFFFFFFFF, 0xFFFFFFFF}}));
  for (int level = 2; level <= 3; ++level) {
    test::Record above = test::ImageRecord({.width = 2, .height = 2});
    above.Set("IDLVL", level).Set("ILOC", level == 2 ? "0000000000" : "0000400004");
    file.Image(above, std::string(4, static_cast<char>(0x20 * level)));
  }
  const test::Picture picture = test::RenderBytes(file.Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.At(0, 0), test::Grey(0x40));
  EXPECT_EQ(picture.At(5, 5), test::Grey(0x60));
  EXPECT_EQ(picture.At(3, 3), test::Grey(0x50)) << "what its table has for zero";
}

TEST_F(GeometryTest, LongAttachmentChainsAreFollowedQuickly) {
  std::vector<Placed> chain;
  for (int i = 1; i <= 999; ++i) chain.push_back({i, i - 1, "0000100001", 1, 1});
  EXPECT_EQ(SizeOf(Compose(chain)), (Size{1, 1000, 1000}));
}

TEST_F(GeometryTest, DrawnSegmentsStandWhereTheirAttachmentsPutThem) {
  const auto picture = test::RenderBytes(Compose({{1, 0, "0000100003", 12, 9, 10},
                                                  {2, 1, "0000200005", 2, 3, 20},
                                                  {3, 2, "0000300001", 1, 1, 30}})
                                             .Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.width, 15u);
  EXPECT_EQ(picture.height, 10u);
  EXPECT_EQ(picture.At(2, 1), test::kWhite);
  EXPECT_EQ(picture.At(3, 1), test::Grey(10));
  EXPECT_EQ(picture.At(8, 3), test::Grey(20));
  EXPECT_EQ(picture.At(9, 5), test::Grey(20));
  EXPECT_EQ(picture.At(10, 5), test::Grey(10));
  EXPECT_EQ(picture.At(9, 6), test::Grey(30));
}

TEST_F(GeometryTest, AttachmentsReachAcrossKinds) {
  NitfBuilder file = Compose({{1, 0, "0001000020", 1, 1}, {3, 2, "0000300004", 50, 40}});
  test::Record graphic = test::GraphicRecord();
  graphic.Set("SFMT", "B").Set("SDLVL", 2).Set("SALVL", 1).Set("SLOC", "0010000200");
  file.Graphic(graphic, "");
  EXPECT_EQ(SizeOf(file), (Size{1, 20 + 200 + 4 + 50, 10 + 100 + 3 + 40}));
}

TEST_F(GeometryTest, GraphicsBehindTheFirstHavePlacesOfTheirOwn) {
  NitfBuilder file = Compose({{1, 0, "0001000020", 1, 1}, {2, 0, "0000100002", 1, 1}});
  for (int level = 3; level <= 5; ++level) {
    test::Record graphic = test::GraphicRecord();
    graphic.Set("SDLVL", level).Set("SALVL", level == 3 ? 0 : level - 1);
    graphic.Set("SLOC", "0010000200").Set("SBND1", "0000000000").Set("SBND2", "0000100001");
    file.Graphic(graphic, test::Metafile(""));
  }
  EXPECT_EQ(SizeOf(file), (Size{1, 3 * 200 + 1, 3 * 100 + 1}));
}

// Two blocks side by side of an image whose table has a colour for zero.
ImageForm TwoBlocks(const std::string& table) {
  return {.width = 2,
          .height = 4,
          .blocksAcross = 2,
          .compression = "NM",
          .lookup = table,
          .lookupTables = 1};
}

TEST_F(GeometryTest, BlankImagesShowUnlessTheirColourIsLeftOut) {
  for (const int code : {0, 1}) {
    NitfBuilder file = Compose({{1, 0, "0000000000", 4, 4, 0x20}});
    test::Record above = test::ImageRecord(TwoBlocks("\x50q"));
    above.Set("IDLVL", 2);
    file.Image(above, test::MaskBytes({.blocks = {0xFFFFFFFF, 0xFFFFFFFF}, .padCode = code}));
    const test::Picture picture = test::RenderBytes(file.Bytes());
    ASSERT_EQ(picture.status, 1);
    EXPECT_EQ(picture.At(1, 1), test::Grey(code == 0 ? 0x20 : 0x50)) << code;
  }
}

TEST_F(GeometryTest, ABlankImageIsLiftedAsOthersAre) {
  test::Picture pictures[2];
  for (const bool blank : {false, true}) {
    const uint32_t record = blank ? 0xFFFFFFFF : 0;
    const std::string data = test::MaskBytes({.blocks = {record, record}}) + std::string(64, char{});
    pictures[blank] = test::RenderBytes(NitfBuilder().Image(TwoBlocks("\5q"), data).Bytes(),
                                        {.flags = ORB_LOAD_LIFT_DARK});
    ASSERT_EQ(pictures[blank].status, 1);
  }
  EXPECT_NE(pictures[0].At(1, 1), test::Grey(5));
  EXPECT_EQ(pictures[1].At(1, 1), pictures[0].At(1, 1));
}

// Of three bands the one colour is black, which a pad code leaves out.
TEST_F(GeometryTest, BlankColourWithAPadCodeIsNotSeen) {
  const ImageForm blank{.width = 2,
                        .height = 4,
                        .blocksAcross = 2,
                        .bands = 3,
                        .compression = "NM",
                        .representation = "RGB"};
  const std::vector<uint32_t> none(6, 0xFFFFFFFF);
  for (const int code : {-1, 9}) {
    NitfBuilder file = Compose({{1, 0, "0000000000", 4, 4, 0x20}});
    test::Record above = test::ImageRecord(blank);
    above.Set("IDLVL", 2);
    file.Image(above, test::MaskBytes({.blocks = none, .padCode = code}));
    const test::Picture picture = test::RenderBytes(file.Bytes());
    ASSERT_EQ(picture.status, 1);
    EXPECT_EQ(picture.At(1, 1), test::Grey(code < 0 ? 0 : 0x20)) << code;
  }
}

TEST_F(GeometryTest, AMetafileReachesItsBoundsFromItsAttachment) {
  NitfBuilder file = Compose({{1, 0, "0003000060", 1, 1}});
  test::Record graphic = test::GraphicRecord();
  graphic.Set("SDLVL", 2).Set("SALVL", 1).Set("SLOC", "0000200003");
  graphic.Set("SBND1", "0000000000").Set("SBND2", "0001000020");
  file.Graphic(graphic, test::Metafile(""));
  EXPECT_EQ(SizeOf(file), (Size{1, 60 + 3 + 10, 30 + 2 + 20}));
}

TEST_F(GeometryTest, MetafilesReachTheirBoundsFromTheirPlace) {
  const auto size = [](const char* location, const char* first, const char* second) {
    test::Record graphic = test::GraphicRecord();
    graphic.Set("SLOC", location).Set("SBND1", first).Set("SBND2", second);
    return SizeOf(NitfBuilder().Graphic(graphic, test::Metafile("")));
  };
  EXPECT_EQ(size("0001000020", "0000000000", "0010000050"), (Size{1, 120, 60})) << "100 columns, 50 rows";
  EXPECT_EQ(size("0000000000", "0000000000", "-003000040"), (Size{1, 30, 40})) << "without the sign";
  EXPECT_EQ(size("-0020-0020", "-0090-0080", "-0010-0005"), (Size{1, 30, 25}))
      << "wholly at negative coordinates";
  EXPECT_EQ(size("0000000000", "0000000000", "0000000050"), (Size{1, 0, 50})) << "a flat one";
  EXPECT_EQ(size("0000000000", "00000-0080", "00010-0005"), (Size{1, 10, 5}));
}

}  // namespace
