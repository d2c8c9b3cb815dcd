// Filter entry points: the host's records and the row callback.
#include "Common/NitfFile.h"
#include "tests/support/objects.h"

namespace {

using test::ImageForm;
using test::NitfBuilder;

std::string Ramp(int width, int height) {
  std::string data;
  for (int i = 0; i < width * height; ++i) data += static_cast<char>(i);
  return data;
}

NitfBuilder RampFile(int width, int height) {
  ImageForm form{.width = width, .height = height};
  return NitfBuilder().Image(form, Ramp(width, height));
}

using FilterTest = test::ModuleTest;

TEST_F(FilterTest, InfoFillsTheHostsRecord) {
  for (const auto& [width, lineBytes] : {std::pair{100, 300}, std::pair{101, 304}}) {
    const test::TempFile file(RampFile(width, 50).Bytes());
    HostFileInfo info = {};
    HostLoadOptions options = {};
    options.flags = 2;
    HostInformationRecord record = test::InformationRecord(file.Wide(), info, options);
    EXPECT_EQ(fltInfo(&record), 1);
    EXPECT_EQ(info.width, static_cast<uint32_t>(width));
    EXPECT_EQ(info.height, 50u);
    EXPECT_EQ(info.bitsPerPixel, 24u);
    EXPECT_EQ(info.format, 248u);
    EXPECT_EQ(info.imageBytes, static_cast<uint32_t>(lineBytes) * 50);
    EXPECT_EQ(info.pageNumber, 1u);
    EXPECT_EQ(info.pageCount, 1u);
    EXPECT_EQ(options.flags, 0x80000003u);
  }
}

TEST_F(FilterTest, SaveAndIncompleteRecordsAreRefused) {
  EXPECT_EQ(fltSave(nullptr), ORB_UNSUPPORTED);
  EXPECT_EQ(fltLoad(nullptr), ORB_INVALID_PARAMETER);
  HostLoadRecord record = {};
  record.fileName = u"/no/such/file";
  record.loadMemory = &FileFormatLoadMemory;
  record.setLoadCallback = &FileFormatSetLoadInfoCallback;
  EXPECT_EQ(fltLoad(&record), ORB_BAD_STRUCTURE);
  record.required2224 = 1;
  EXPECT_EQ(fltLoad(&record), ORB_BAD_STRUCTURE) << "no row callback";
  record.rowCallback = [](void*, KernelBitmap*, uint8_t*, uint32_t, int32_t, int32_t, void*)
                           ORB_CALL -> int32_t { return 1; };
  EXPECT_EQ(fltLoad(&record), ORB_SHORT_READ);
  record.required2224 = 0;
  EXPECT_EQ(fltLoad(&record), ORB_BAD_STRUCTURE) << "each of what the host has to give is asked for";
  record.required2224 = 1;
  record.loadMemory = nullptr;
  EXPECT_EQ(fltLoad(&record), ORB_BAD_STRUCTURE);
}

TEST_F(FilterTest, DrawingAsksForADocumentAndABitmap) {
  KernelBitmap bitmap = {};
  EXPECT_EQ(Orb_NtfRenderBitmap(&bitmap, nullptr), ORB_NULL_HANDLE);
  EXPECT_EQ(Orb_NtfRenderBitmap(nullptr, nullptr), ORB_INVALID_PARAMETER);
  EXPECT_EQ(Orb_NitfDrawObjects(nullptr, nullptr, nullptr, nullptr), ORB_NULL_HANDLE);
  EXPECT_EQ(fltInfo(nullptr), ORB_INVALID_PARAMETER);
}

TEST_F(FilterTest, RowsArriveFromTheTopWithTheirFlags) {
  const auto picture = test::RenderBytes(RampFile(5, 4).Bytes());
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.rowFlags, (std::vector<uint32_t>{7, 3, 3, 11}));
  for (uint32_t y = 0; y < 4; ++y) {
    for (uint32_t x = 0; x < 5; ++x) EXPECT_EQ(picture.At(x, y), test::Grey(static_cast<int>(5 * y + x)));
  }
  EXPECT_EQ(test::RenderBytes(RampFile(5, 1).Bytes()).rowFlags, std::vector<uint32_t>{15});
}

TEST_F(FilterTest, ACallbackMayStopTheDelivery) {
  for (const int32_t result : {0, 2, -42}) {
    const auto picture =
        test::RenderBytes(RampFile(5, 8).Bytes(), {.stopAtRow = 3, .stopResult = result});
    EXPECT_EQ(picture.status, result);
    EXPECT_EQ(picture.rowFlags.size(), 4u);
  }
}

TEST_F(FilterTest, FixedCanvasShowsTheBackgroundAround) {
  NitfBuilder file = RampFile(5, 4);
  file.header.SetRaw("FBKGC", "\x10\x20\x30");
  const auto picture = test::RenderBytes(file.Bytes(), {.flags = kLoadFixedCanvas});
  ASSERT_EQ(picture.status, 1);
  EXPECT_EQ(picture.width, 2048u);
  EXPECT_EQ(picture.height, 2048u);
  EXPECT_EQ(picture.At(4, 3), test::Grey(19));
  EXPECT_EQ(picture.At(5, 3), (test::Rgb{0x10, 0x20, 0x30}));
  EXPECT_EQ(picture.At(2047, 2047), (test::Rgb{0x10, 0x20, 0x30}));
}

TEST_F(FilterTest, CanvasesOfOtherDepthsAreDrawn) {
  const std::string bytes = RampFile(9, 4).Bytes();
  for (uint32_t depth : {1u, 4u, 8u, 16u, 32u}) {
    const auto picture = test::RenderBytes(bytes, {.bitsPerPixel = depth});
    EXPECT_EQ(picture.status, 1) << depth;
    EXPECT_EQ(picture.rowFlags.size(), 4u);
  }
  EXPECT_EQ(test::RenderBytes(bytes, {.bitsPerPixel = 0}).status, ORB_OUT_OF_MEMORY);
}

TEST_F(FilterTest, RenderExportOwnsAndReplacesItsCanvas) {
  const test::TempFile file(RampFile(5, 4).Bytes());
  NitfFile document;
  ASSERT_EQ(document.ReadDocument(file.Wide()), Status::Success);
  EXPECT_EQ(Orb_NtfRenderBitmap(nullptr, &document), ORB_INVALID_PARAMETER);
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 0);
  EXPECT_EQ(Orb_NtfRenderBitmap(&bitmap, &document), 1);
  EXPECT_EQ(Orb_NtfRenderBitmap(&bitmap, &document), 1);
  EXPECT_EQ(bitmap.bitsPerPixel, 24u);
  EXPECT_EQ(test::RowOf(bitmap, 3)[3], 1) << "the last kernel row is the top of the picture";
  KernelFreeBitmap(&bitmap);
}

TEST_F(FilterTest, DarkImagesAreLiftedOnRequest) {
  ImageForm form;
  const auto render = [&](char grey, uint32_t flags) {
    return test::RenderBytes(NitfBuilder().Image(form, std::string(64, grey)).Bytes(), {.flags = flags})
        .At(0, 0);
  };
  EXPECT_EQ(render(19, 0), test::Grey(19));
  EXPECT_EQ(render(19, kLoadLiftDarkImages), test::Grey(19 + 89));
  EXPECT_EQ(render(20, kLoadLiftDarkImages), test::Grey(20)) << "one level brighter is not dark";
  // Colours, without a palette to lift.
  form.bands = 3;
  form.representation = "RGB";
  const auto lifted = [&](char blue) {
    const std::string data = std::string(64, 10) + std::string(64, 0) + std::string(64, blue);
    return test::RenderBytes(NitfBuilder().Image(form, data).Bytes(), {.flags = kLoadLiftDarkImages})
        .At(7, 7);
  };
  EXPECT_EQ(lifted(19), (test::Rgb{10 + 89, 89, 19 + 89}));
  EXPECT_EQ(lifted('\xFF'), (test::Rgb{10, 0, 255}));
}

TEST_F(FilterTest, DrawingStopsAtTheFirstFailure) {
  NitfBuilder file = RampFile(5, 4);
  ImageForm broken{.compression = "M0"};
  test::Record record = test::ImageRecord(broken);
  record.Set("IDLVL", 2);
  file.Image(record, test::MaskBytes({}));
  const auto picture = test::RenderBytes(file.Bytes());
  EXPECT_EQ(picture.status, ORB_UNSUPPORTED);
  EXPECT_TRUE(picture.rowFlags.empty());
}

TEST_F(FilterTest, WhatWasDrawnBeforeAFailureStays) {
  NitfBuilder file = RampFile(5, 4);
  ImageForm small{.width = 2, .height = 2};
  for (const int level : {2, 3}) {
    small.compression = level == 2 ? "C0" : "NC";  // which no reader takes
    test::Record record = test::ImageRecord(small);
    record.Set("IDLVL", level).Set("ILOC", level == 2 ? "0000000000" : "0000200002");
    file.Image(record, "yyyy");
  }
  const test::TempFile onDisk(file.Bytes());
  NitfFile document;
  ASSERT_EQ(document.ReadDocument(onDisk.Wide()), Status::Success);
  KernelBitmap canvas;
  ASSERT_EQ(KernelAllocateBitmap(&canvas, kBitmapRecordSize, 1, 5, 4, 24, kOrderBgr, nullptr,
                                 kViewTopLeft, nullptr, 0),
            1);
  const HDC dc = KernelCreateBitmapDc(&canvas);
  const int32_t status = Orb_NitfDrawObjects(nullptr, dc, &canvas, &document);
  KernelDeleteBitmapDc(dc);
  const std::vector<uint8_t> row = test::RowOf(canvas, 3);
  KernelFreeBitmap(&canvas);
  EXPECT_EQ(status, ORB_UNSUPPORTED);
  EXPECT_EQ(row[3 * 4], 19) << "the first image";
  EXPECT_EQ(row[3 * 3], 18) << "the third is not drawn";
}

TEST_F(FilterTest, AFailedRenderLeavesNoCanvas) {
  ImageForm unknown{.compression = "M0"};
  const test::TempFile good(RampFile(5, 4).Bytes());
  const test::TempFile bad(NitfBuilder().Image(unknown, test::MaskBytes({})).Bytes());
  NitfFile first, second;
  ASSERT_EQ(first.ReadDocument(good.Wide()), Status::Success);
  ASSERT_EQ(second.ReadDocument(bad.Wide()), Status::Success);
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 0);
  ASSERT_EQ(Orb_NtfRenderBitmap(&bitmap, &first), 1);
  EXPECT_EQ(Orb_NtfRenderBitmap(&bitmap, &second), ORB_UNSUPPORTED);
  EXPECT_EQ(bitmap.flags & kBitmapAllocated, 0u);
  HostFileInfo info = {};
  HostLoadOptions options = {};
  HostInformationRecord record = test::InformationRecord(u"no such file", info, options);
  EXPECT_EQ(fltInfo(&record), ORB_SHORT_READ);
  EXPECT_EQ(info.format, 0u) << "filled on success only";
  EXPECT_EQ(options.flags, kLoadFlagsAlways);
}

TEST_F(FilterTest, TheHostsHandleIsRewound) {
  const test::TempFile file(RampFile(5, 4).Bytes());
  const int32_t handle = KernelOpen(file.Wide(), kOpenRead, kPermissionRead);
  ASSERT_NE(handle, kNoFile);
  KernelSeek(handle, 100, kSeekStart);
  HostFileInfo info = {};
  HostLoadOptions options = {};
  HostInformationRecord record = test::InformationRecord(file.Wide(), info, options);
  record.file = handle;
  EXPECT_EQ(fltInfo(&record), 1);
  EXPECT_EQ(KernelSeek(handle, 0, kSeekCurrent), 0);
  KernelClose(handle);
}

TEST_F(FilterTest, CompressionsWithoutAReaderAreUnsupported) {
  for (const char* compression : {"C0", "C2", "C7", "M0", "M2", "ZZ"}) {
    ImageForm form{.compression = compression};
    EXPECT_EQ(test::RenderBytes(NitfBuilder().Image(form, std::string(200, '\0')).Bytes()).status,
              ORB_UNSUPPORTED)
        << compression;
  }
}

}  // namespace
