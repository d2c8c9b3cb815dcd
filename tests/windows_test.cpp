// The module as a DLL, and the stand-in toolkit on the real GDI.
#include <process.h>

#include <filesystem>
#include <regex>
#include <set>

#include "host/display.h"
#include "tests/support/objects.h"

namespace {

using WindowsTest = test::ModuleTest;
using test::ImageForm;
using test::NitfBuilder;
using test::Rgb;

class Module {
 public:
  Module() : module_(LoadLibraryW(L"orbntf.dll")) { EXPECT_NE(module_, nullptr) << GetLastError(); }
  ~Module() { FreeLibrary(module_); }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;
  /// The export of a declared function's name.
  template <class F>
  F* Export(F*, const char* name) const {
    const FARPROC address = GetProcAddress(module_, name);
    EXPECT_NE(address, nullptr) << name;
    return reinterpret_cast<F*>(reinterpret_cast<void*>(address));
  }
  HMODULE get() const { return module_; }

 private:
  HMODULE module_;
};
#define EXPORT(module, name) (module).Export(&name, #name)

std::set<std::string> DeclaredExports() {
  const std::string header = test::ReadFile(std::string(PROJECT_SOURCE_DIR) + "/include/orbntf/orbntf.h");
  const std::regex declaration("ORB_API[^;{]*ORB_CALL\\s+(\\w+)\\(");
  std::set<std::string> names;
  for (std::sregex_iterator it(header.begin(), header.end(), declaration), end; it != end; ++it) {
    names.insert((*it)[1]);
  }
  return names;
}

struct Delivery {
  std::vector<std::string> rows;
};

int32_t ORB_CALL KeepRow(void* context, KernelBitmap* bitmap, uint8_t* row, uint32_t, int32_t, int32_t,
                         void*) {
  static_cast<Delivery*>(context)->rows.emplace_back(row, row + 3 * size_t{bitmap->reserved8});
  return 1;
}

TEST_F(WindowsTest, EveryDeclaredFunctionIsExportedUnderItsName) {
  const Module module;
  const std::set<std::string> names = DeclaredExports();
  EXPECT_GT(names.size(), 30u);
  for (const std::string& name : names) {
    EXPECT_NE(GetProcAddress(module.get(), name.c_str()), nullptr) << name;
  }
}

TEST_F(WindowsTest, AHostLoadsAPictureThroughTheDll) {
  const test::TempFile file(
      NitfBuilder().Image(ImageForm{}, std::string(32, 'a') + std::string(32, 'z')).Bytes());
  const Module module;
  HostLoadOptions options = {};
  HostFileInfo info = {};
  HostInformationRecord information = test::InformationRecord(file.Wide(), info, options);
  ASSERT_EQ(EXPORT(module, fltInfo)(&information), 1);
  EXPECT_EQ(info.format, kFormatNitf);
  EXPECT_EQ(info.imageBytes, 8u * 24);

  Delivery delivery;
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 24);
  bitmap.reserved8 = info.width;
  HostLoadRecord load = {};
  load.fileName = file.Wide();
  load.bitmap = &bitmap;
  load.rowCallback = &KeepRow;
  load.callbackContext = &delivery;
  load.options = &options;
  load.loadMemory = &FileFormatLoadMemory;
  load.setLoadCallback = &FileFormatSetLoadInfoCallback;
  EXPECT_EQ(EXPORT(module, fltLoad)(&load), ORB_BAD_STRUCTURE);
  load.required2224 = 1;
  ASSERT_EQ(EXPORT(module, fltLoad)(&load), 1);
  ASSERT_EQ(delivery.rows.size(), 8u);
  EXPECT_EQ(delivery.rows.front(), std::string(24, 'a'));
  EXPECT_EQ(delivery.rows.back(), std::string(24, 'z'));
  EXPECT_EQ(EXPORT(module, fltSave)(nullptr), ORB_UNSUPPORTED);
}

TEST_F(WindowsTest, AProgramEditsAFileThroughTheDll) {
  const test::TempFile file(NitfBuilder().Image(ImageForm{}, std::string(64, 'i')).Text("words").Bytes());
  const std::filesystem::path folder = testing::internal::GetArgvs().front();
  const test::TempFile out;
  const std::string program = (folder.parent_path() / "edit_title.exe").string();
  ASSERT_EQ(_spawnl(_P_WAIT, program.c_str(), "edit_title", file.Path().c_str(), out.Path().c_str(),
                    "CHANGED", nullptr),
            0)
      << program;
  std::string expected = file.Contents();
  expected.replace(39, 80, "CHANGED" + std::string(73, ' '));
  EXPECT_EQ(out.Contents(), expected);
}

TEST_F(WindowsTest, PathsOfOneFileAreKnownAsOne) {
  const test::TempFile file(NitfBuilder().Text("words").Bytes());
  const test::TempFile link("", "-\xD0\x96\xE6\xBC\xA2.ntf"), other("", "-\xC3\xA9.ntf");
  ASSERT_TRUE(DeleteFileW(WindowsText(link.Wide())));
  ASSERT_TRUE(CreateHardLinkW(WindowsText(link.Wide()), WindowsText(file.Wide()), nullptr))
      << GetLastError();
  std::u16string upper = file.Wide();
  for (char16_t& c : upper) c = c >= 'a' && c <= 'z' ? static_cast<char16_t>(c - 32) : c;
  WideFileIdentity first, second;
  ASSERT_TRUE(WideIdentify(file.Wide(), &first));
  EXPECT_TRUE(WideIdentify(upper.c_str(), &second) && first == second);
  EXPECT_TRUE(WideIdentify(other.Wide(), &second) && !(first == second));
  EXPECT_FALSE(WideIdentify(u"no such file", &second));

  NitfHandle handle = nullptr;
  ASSERT_EQ(Orb_NITFCreate(&handle, link.Wide()), 1);
  EXPECT_EQ(Orb_NITFSaveFile(handle, upper.c_str()), ORB_INVALID_PARAMETER);
  EXPECT_EQ(Orb_NITFSaveFile(handle, link.Wide()), ORB_INVALID_PARAMETER);
  EXPECT_EQ(Orb_NITFSaveFile(handle, other.Wide()), 1);
  Orb_NITFDestroy(&handle);
  EXPECT_EQ(other.Contents(), file.Contents());
  EXPECT_EQ(Orb_NITFCreate(&handle, u"no such file"), ORB_FILE_NOT_FOUND);
}

struct CanvasForm {
  uint32_t bits;
  KernelColourOrder order;
  Rgb shown;  ///< of the colour (200, 100, 50)
};

TEST_F(WindowsTest, ADeviceContextPaintsOnEveryDepth) {
  const CanvasForm forms[] = {{1, kOrderRgb, test::Grey(0)},
                              {8, kOrderRgb, test::Grey(117)},
                              {24, kOrderBgr, {200, 100, 50}},
                              {32, kOrderBgr, {200, 100, 50}}};
  for (const CanvasForm& form : forms) {
    SCOPED_TRACE(form.bits);
    KernelBitmap canvas;
    ASSERT_EQ(KernelAllocateBitmap(&canvas, kBitmapRecordSize, 1, 5, 3, form.bits, form.order, nullptr,
                                   kViewBottomLeft, nullptr, 0),
              1);
    KernelFillBitmap(&canvas, RGB(255, 255, 255));
    const HDC dc = KernelCreateBitmapDc(&canvas);
    ASSERT_NE(dc, nullptr);
    RECT place = {1, 0, 3, 2};
    const HBRUSH brush = CreateSolidBrush(RGB(200, 100, 50));
    FillRect(dc, &place, brush);
    DeleteObject(brush);
    EXPECT_EQ(KernelDeleteBitmapDc(dc), 1);
    EXPECT_NE(KernelDeleteBitmapDc(dc), 1);
    KernelBitmap shown;
    ASSERT_EQ(KernelAllocateBitmap(&shown, kBitmapRecordSize, 1, 5, 3, 24, kOrderBgr, nullptr,
                                   kViewTopLeft, nullptr, 0),
              1);
    EXPECT_EQ(ImageEffectsCombine(&shown, 0, 0, 5, 3, &canvas, 0, 0, kCombineCopy), 1);
    for (uint32_t y = 0; y < 3; ++y) {
      const std::vector<uint8_t> row = test::RowOf(shown, y);
      for (uint32_t x = 0; x < 5; ++x) {
        const Rgb expected = x >= 1 && x < 3 && y < 2 ? form.shown : test::kWhite;
        const Rgb got = {row[3 * x + 2], row[3 * x + 1], row[3 * x]};
        EXPECT_TRUE(got == expected || (form.bits == 8 && std::abs(got.red - expected.red) < 12))
            << x << ',' << y << ": " << got;
      }
    }
    KernelFreeBitmap(&shown);
    KernelFreeBitmap(&canvas);
  }
}

TEST_F(WindowsTest, PixelsThatAreNotPaintedKeepTheirBits) {
  KernelBitmap canvas;
  ASSERT_EQ(KernelAllocateBitmap(&canvas, kBitmapRecordSize, 1, 4, 1, 16, kOrderGrey, nullptr,
                                 kViewTopLeft, nullptr, 0),
            1);
  const uint16_t before[4] = {0x1234, 0x00FF, 0xABCD, 0xFFFF};
  KernelSetBitmapData(&canvas, before, sizeof before);
  const HDC dc = KernelCreateBitmapDc(&canvas);
  SetPixel(dc, 1, 0, RGB(255, 255, 255));
  KernelDeleteBitmapDc(dc);
  uint16_t after[4];
  std::memcpy(after, test::RowOf(canvas, 0).data(), sizeof after);
  EXPECT_EQ(after[0], before[0]);
  EXPECT_EQ(after[1] >> 8, 0xFF);
  EXPECT_EQ(after[2], before[2]);
  EXPECT_EQ(after[3], before[3]);
  KernelFreeBitmap(&canvas);
}

// A bitmap on any device context, its clip region respected.
TEST_F(WindowsTest, PaintingHonoursTheClipRegion) {
  KernelBitmap canvas, stamp;
  ASSERT_EQ(KernelAllocateBitmap(&canvas, kBitmapRecordSize, 1, 6, 1, 24, kOrderBgr, nullptr,
                                 kViewTopLeft, nullptr, 0),
            1);
  ASSERT_EQ(KernelAllocateBitmap(&stamp, kBitmapRecordSize, 1, 6, 1, 8, kOrderRgb, nullptr, kViewTopLeft,
                                 nullptr, 0),
            1);
  const uint8_t greys[6] = {10, 20, 30, 40, 30, 60};
  KernelSetBitmapData(&stamp, greys, sizeof greys);
  const HDC dc = KernelCreateBitmapDc(&canvas);
  IntersectClipRect(dc, 1, 0, 5, 1);
  const RECT place = {0, 0, 6, 1};
  EXPECT_EQ(EffectsPaintTransparent(dc, &stamp, nullptr, nullptr, &place, nullptr, 1000, 1, 1, 1, 1, 1, 1,
                                    1, RGB(30, 30, 30), 0, 0, SRCCOPY),
            1);
  const RECT last = {4, 0, 6, 1};
  EXPECT_EQ(DisplayPaintBitmap(dc, &stamp, nullptr, nullptr, &last, nullptr, SRCCOPY), 1);
  KernelDeleteBitmapDc(dc);
  const std::vector<uint8_t> row = test::RowOf(canvas, 0);
  const int expected[6] = {0, 20, 0, 40, 10, 0};
  for (int x = 0; x < 6; ++x) EXPECT_EQ(row[3 * x], expected[x]) << x;
  KernelFreeBitmap(&stamp);
  KernelFreeBitmap(&canvas);
}

TEST_F(WindowsTest, WhatNeedsALibraryIsNotSupported) {
  ImageForm form{.compression = "C3", .rate = "00.0"};
  EXPECT_EQ(test::RenderBytes(NitfBuilder().Image(form, "\xFF\xD8\xFF\xD9").Bytes()).status,
            kHostUnsupported);
  form.blocksAcross = 2;
  const std::string stream = std::string("\xFF\xD8\xFF\xD9", 4) + std::string(2000, 'x');
  for (const char* mode : {"B", "P", "S"}) {
    form.mode = mode;
    EXPECT_EQ(test::RenderBytes(NitfBuilder().Image(form, stream + stream).Bytes()).status,
              kHostUnsupported)
        << mode;
  }
  NitfHandle document = nullptr;
  ASSERT_EQ(Orb_NITFCreate(&document, nullptr), 1);
  KernelBitmap bitmap;
  ASSERT_EQ(KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, 2, 2, 24, kOrderBgr, nullptr,
                                 kViewTopLeft, nullptr, 0),
            1);
  EXPECT_EQ(Orb_NITFAppendImageSegment(document, &bitmap, 182, 24, 2), kHostUnsupported);
  EXPECT_EQ(Orb_NITFGetImageHeaderCount(document), 0u);
  KernelFreeBitmap(&bitmap);
  Orb_NITFDestroy(&document);
}

TEST_F(WindowsTest, PalettesAreRealOnes) {
  const KernelColour colours[3] = {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}};
  const HPALETTE palette = KernelCreatePalette(colours, 3);
  ASSERT_EQ(GetObjectType(palette), static_cast<DWORD>(OBJ_PAL));
  KernelBitmap bitmap;
  ASSERT_EQ(KernelAllocateBitmap(&bitmap, kBitmapRecordSize, 1, 2, 2, 8, kOrderRgb, palette, kViewTopLeft,
                                 nullptr, 0),
            1);
  KernelColour got[4];
  KernelGetColours(&bitmap, 0, 4, got);
  EXPECT_EQ(got[2].red, 9);
  EXPECT_EQ(got[2].blue, 7);
  EXPECT_EQ(KernelDeleteObject(palette, 0, u""), 1);
  KernelFreeBitmap(&bitmap);
}

}  // namespace
