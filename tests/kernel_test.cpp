// The stand-in toolkit where the module relies on it: files, bitmaps, painting, text.
#include "host/display.h"
#include "tests/support/objects.h"

namespace {

using KernelTest = test::ModuleTest;

TEST_F(KernelTest, ArgumentsOutsideTheInterfaceAreRefused) {
  const test::TempFile file("bytes");
  EXPECT_EQ(KernelOpen(file.Wide(), kOpenRead, kPermissionWrite), kNoFile);
  EXPECT_EQ(KernelOpen(file.Wide(), 0, kPermissionRead), kNoFile);
  EXPECT_EQ(KernelOpen(file.Wide(), kOpenCreate, kPermissionRead), kNoFile);
  EXPECT_EQ(file.Contents(), "bytes");
  test::Bitmap bitmap(4, 4, 24);
  uint8_t row[12] = {};
  EXPECT_NE(KernelGetRow(&bitmap.record, row, 0, 12), 1) << "rows are between access and release";
  EXPECT_NE(KernelReleaseBitmap(&bitmap.record), 1);
  ASSERT_EQ(KernelAccessBitmap(&bitmap.record), 1);
  EXPECT_NE(KernelAccessBitmap(&bitmap.record), 1);
  EXPECT_EQ(KernelPutRow(&bitmap.record, row, 3, 12), 1);
  EXPECT_NE(KernelPutRow(&bitmap.record, row, 4, 12), 1);
  EXPECT_EQ(KernelReleaseBitmap(&bitmap.record), 1);
  EXPECT_NE(KernelPutRow(&bitmap.record, row, 0, 12), 1);
  KernelBitmap refused;
  for (const auto& [kind, order, view] :
       {std::array{0u, 1u, 1u}, {3u, 1u, 1u}, {1u, 4u, 1u}, {1u, 1u, 2u}}) {
    EXPECT_NE(KernelAllocateBitmap(&refused, kBitmapRecordSize, kind, 2, 2, 24, order, nullptr, view,
                                   nullptr, 0),
              1);
  }
  VectorHandle drawing = {};
  EXPECT_NE(VectorInitialise(&drawing), 1) << "the flags word comes first";
  drawing.flags = kVectorHandleFlags;
  EXPECT_EQ(VectorInitialise(&drawing), 1);
  HostLoadOptions options;
  FileFormatDefaultLoadOptions(&options, kLoadOptionsSize);
  options.flags = kLoadFlagsAlways;
  EXPECT_EQ(FileFormatLoadDrawingMemory("", &drawing, 0, &options, 0), kHostInvalid)
      << "the second flags word";
  drawing.flags2 = kVectorHandleFlags2;
  EXPECT_EQ(FileFormatLoadDrawingMemory("", &drawing, 0, &options, 0), kHostBadData);
  options.flags = 1;
  EXPECT_EQ(FileFormatLoadDrawingMemory("", &drawing, 0, &options, 0), kHostInvalid);
  EXPECT_NE(VectorSetPaintMode(&drawing, 0), 1);
}

TEST_F(KernelTest, FilesKeepTheirPositionsThroughBuffers) {
  const test::TempFile file(std::string(100000, 'a') + "tail");
  const int32_t handle = KernelOpen(file.Wide(), kOpenRead, kPermissionRead);
  char buffer[70000];
  EXPECT_EQ(KernelSeek(handle, -4, kSeekEnd), 100000);
  EXPECT_EQ(KernelRead(handle, buffer, 10), 4u);
  EXPECT_EQ(std::string(buffer, 4), "tail");
  EXPECT_EQ(KernelSeek(handle, -2, kSeekCurrent), 100002);
  EXPECT_EQ(KernelRead(handle, buffer, 2), 2u);
  EXPECT_EQ(std::string(buffer, 2), "il");
  EXPECT_EQ(KernelSeek(handle, 99990, kSeekStart), 99990);
  EXPECT_EQ(KernelRead(handle, buffer, 70000), 14u);
  EXPECT_EQ(KernelSeek(handle, 0, kSeekStart), 0);
  EXPECT_EQ(KernelRead(handle, buffer, 70000), 70000u);
  EXPECT_EQ(buffer[69999], 'a');
  EXPECT_EQ(KernelSeek(handle, -1, kSeekStart), -1);
  EXPECT_EQ(KernelSeek(handle, INT64_MAX, kSeekEnd), -1);
  EXPECT_EQ(KernelClose(handle), 1);
  EXPECT_NE(KernelClose(handle), 1);
  EXPECT_EQ(KernelRead(kNoFile, buffer, 1), 0u);
}

TEST_F(KernelTest, WritesPatchWhatWasWrittenAndLoseNothing) {
  test::TempFile file;
  const int32_t handle = KernelOpen(file.Wide(), kOpenCreate, kPermissionWrite);
  EXPECT_EQ(KernelWrite(handle, "0123456789", 10), 10u);
  KernelSeek(handle, 2, kSeekStart);
  EXPECT_EQ(KernelWrite(handle, "ab", 2), 2u);
  char back[10];
  KernelSeek(handle, 0, kSeekStart);
  EXPECT_EQ(KernelRead(handle, back, 10), 10u);
  EXPECT_EQ(std::string(back, 10), "01ab456789");
  EXPECT_EQ(KernelSeek(handle, 0, kSeekEnd), 10);
  EXPECT_EQ(KernelWrite(handle, "!", 1), 1u);
  EXPECT_EQ(KernelClose(handle), 1);
  EXPECT_EQ(file.Contents(), "01ab456789!");
  const int32_t full = KernelOpen(u"/dev/full", kOpenCreate, kPermissionWrite);
  if (full == kNoFile) GTEST_SKIP() << "no full device";
  const bool lost = KernelWrite(full, "x", 1) != 1;
  EXPECT_TRUE(KernelClose(full) != 1 || lost) << "a byte that did not reach the disk is reported";
}

TEST_F(KernelTest, BitmapGeometryIsRefusedBeforeMemoryIsTaken) {
  const auto allocate = [](uint32_t width, uint32_t height, uint32_t bits) {
    KernelBitmap bitmap;
    const int32_t status = KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, width, height, bits,
                                                kOrderBgr, nullptr, kViewTopLeft, nullptr, 0);
    if (status == 1) KernelFreeBitmap(&bitmap);
    return status;
  };
  EXPECT_EQ(allocate(3, 3, 12), 1);
  EXPECT_EQ(allocate(0, 3, 8), -1);
  EXPECT_EQ(allocate(3, 3, 65), -1);
  EXPECT_EQ(allocate(65536, 65536, 8), -1);
  EXPECT_EQ(allocate(0xFFFFFFFF, 0xFFFFFFFF, 64), -1);
  HostkitSetMaxPixels(100);
  EXPECT_EQ(allocate(11, 10, 8), -1);
  EXPECT_EQ(allocate(10, 10, 8), 1);
}

TEST_F(KernelTest, EveryDepthKeepsAColourThroughPaint) {
  for (uint32_t bits = 1; bits <= 64; ++bits) {
    KernelBitmap source, canvas;
    ASSERT_EQ(KernelAllocateBitmap(&source, kBitmapRecordSize, 1, 5, 2, bits, kOrderBgr, nullptr,
                                   kViewTopLeft, nullptr, 0),
              1);
    ASSERT_EQ(KernelAllocateBitmap(&canvas, kBitmapRecordSize, 1, 7, 4, 24, kOrderBgr, nullptr,
                                   kViewBottomLeft, nullptr, 0),
              1);
    KernelFillBitmap(&source, 0xFFFFFF);
    HDC dc = KernelCreateBitmapDc(&canvas);
    const RECT place = {-1, 1, 4, 3};
    EXPECT_EQ(DisplayPaintBitmap(dc, &source, nullptr, nullptr, &place, nullptr, SRCCOPY), 1);
    KernelDeleteBitmapDc(dc);
    std::vector<uint8_t> row = test::RowOf(canvas, 2);  // picture row 1
    EXPECT_GT(row[9], 100) << bits << " bits, pixel 3";
    EXPECT_EQ(row[12], 0) << "pixel 4 is untouched";
    row = test::RowOf(canvas, 3);
    EXPECT_EQ(row[0], 0) << "picture row 0 is untouched";
    KernelFreeBitmap(&source);
    KernelFreeBitmap(&canvas);
  }
}

TEST_F(KernelTest, CombineCopiesBitsAtAnyPosition) {
  for (uint32_t bits : {1u, 4u, 12u, 24u}) {
    KernelBitmap block, image;
    KernelAllocateBitmap(&block, kBitmapRecordSize, 1, 3, 1, bits, kOrderBgr, nullptr, kViewTopLeft,
                         nullptr, 0);
    KernelAllocateBitmap(&image, kBitmapRecordSize, 1, 8, 1, bits, kOrderBgr, nullptr, kViewTopLeft,
                         nullptr, 0);
    KernelFillBitmap(&block, 0xFFFFFF);
    EXPECT_EQ(ImageEffectsCombine(&image, 5, 0, 3, 1, &block, 0, 0, kCombineCopy), 1);
    EXPECT_EQ(ImageEffectsCombine(&image, 7, 0, 3, 1, &block, 0, 0, kCombineCopy), 1) << "clipped";
    uint32_t counters[256] = {};
    EXPECT_EQ(ColourHistogram(&image, counters, 256, 0), 1);
    EXPECT_EQ(counters[0], 5u) << bits;
    KernelFreeBitmap(&block);
    KernelFreeBitmap(&image);
  }
}

TEST_F(KernelTest, NarrowTextIsWidened) {
  Orb_A2W wide;
  EXPECT_NE(wide.Convert("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), 0);
  EXPECT_EQ(std::u16string(wide.Value()), u"a\u00E9\u20AC\U0001F600");
  EXPECT_NE(wide.Convert("\xC3"
                         "a\xFF"),
            0);
  EXPECT_EQ(std::u16string(wide.Value()), (std::u16string{0xDCC3, u'a', 0xDCFF})) << "bytes, not text";
  EXPECT_NE(wide.Convert("\xED\xA0\x80"), 0);
  EXPECT_EQ(std::u16string(wide.Value()), (std::u16string{0xDCED, 0xDCA0, 0xDC80})) << "no character";
  EXPECT_EQ(wide.Convert(nullptr), 0);
}

TEST_F(KernelTest, TheTrackerNamesWhatIsOutstanding) {
  void* block = KernelAllocate(3, 5, 77, u"here");
  HostkitLeak leak;
  ASSERT_EQ(HostkitOutstanding(&leak, 1), 1u);
  EXPECT_EQ(leak.line, 77u);
  EXPECT_EQ(std::u16string(leak.file), u"here");
  EXPECT_EQ(leak.bytes, 15u);
  EXPECT_EQ(KernelAllocate(SIZE_MAX / 2, 4, 1, u"here"), nullptr);
  KernelFree(block, 78, u"here");
}

}  // namespace
