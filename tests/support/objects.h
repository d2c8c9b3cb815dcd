// What tests hold of the module and its host: documents, bitmaps and drawings, each released with its
// owner.
#pragma once

#include "Common/NitfFile.h"
#include "tests/support/support.h"

namespace test {

/// A document handle.
class Handle {
 public:
  /// An empty document, or the one of a file.
  Handle() { EXPECT_EQ(Orb_NITFCreate(&handle_, nullptr), 1); }
  explicit Handle(const TempFile& file) { EXPECT_EQ(Orb_NITFCreate(&handle_, file.Wide()), 1); }
  ~Handle() {
    if (handle_ != nullptr) Orb_NITFDestroy(&handle_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  operator NitfHandle() const { return handle_; }  // NOLINT: stands for the handle
  NitfFile* operator->() const { return handle_; }

 private:
  NitfHandle handle_ = nullptr;
};

/// What a document saves as, through a file that is removed again.
std::string Saved(NitfHandle handle, int32_t expected = 1);

/// A bitmap of one colour.
class Bitmap {
 public:
  Bitmap(uint32_t width, uint32_t height, uint32_t bits, COLORREF colour = 0x4080C0) {
    KernelAllocateBitmap(&record, kBitmapRecordSize, 1, width, height, bits, kOrderBgr, nullptr,
                         kViewTopLeft, nullptr, 0);
    KernelFillBitmap(&record, colour);
  }
  ~Bitmap() { KernelFreeBitmap(&record); }
  Bitmap(const Bitmap&) = delete;
  Bitmap& operator=(const Bitmap&) = delete;
  KernelBitmap record;
};

/// A kernel row of a bitmap.
std::vector<uint8_t> RowOf(KernelBitmap& bitmap, uint32_t row);

/// A drawing: empty, or decoded from a metafile.
class Drawing {
 public:
  Drawing();
  explicit Drawing(const std::string& cgm);
  ~Drawing() { VectorFree(&handle); }
  Drawing(const Drawing&) = delete;
  Drawing& operator=(const Drawing&) = delete;
  VectorHandle handle{};
};
/// A drawing of one square.
class Square : public Drawing {
 public:
  explicit Square(const std::string& corner = std::string("\x00\x0A\x00\x0A\x00\x32\x00\x28", 8))
      : Drawing(std::string("\x00\x22\x01t", 4) + std::string("\x00\x62\x01p", 4) +
                std::string("\x20\x42\x00\x01", 4) + std::string("\x00\x80", 2) +
                std::string("\x52\xC2\x00\x01", 4) + std::string("\x41\x68", 2) + corner +
                std::string("\x00\xA0\x00\x40", 4)) {}
};
/// A handle as its holder starts it.
void StartDrawing(VectorHandle& handle);
/// Decodes a metafile into a started handle. A host status.
int32_t DecodeMetafile(const std::string& cgm, VectorHandle& handle);
/// Encodes a drawing as a metafile.
std::string EncodeMetafile(const VectorHandle& handle);

/// Tests that have the host compress images.
class CodecTest : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    if (!HostHasCodecs()) GTEST_SKIP() << "the host toolkit of this build has no codecs";
  }
};

/// Why a file is not what its own lengths say; empty when it is.
std::string Unsound(const std::string& bytes);

}  // namespace test
