#include "tests/support/objects.h"

namespace test {

std::string Saved(NitfHandle handle, int32_t expected) {
  const TempFile out;
  EXPECT_EQ(Orb_NITFSaveFile(handle, out.Wide()), expected);
  return out.Contents();
}

std::vector<uint8_t> RowOf(KernelBitmap& bitmap, uint32_t row) {
  std::vector<uint8_t> bytes(bitmap.bytesPerLine);
  EXPECT_EQ(KernelAccessBitmap(&bitmap), 1);
  EXPECT_EQ(KernelGetRow(&bitmap, bytes.data(), row, bitmap.bytesPerLine), 1);
  EXPECT_EQ(KernelReleaseBitmap(&bitmap), 1);
  return bytes;
}

void StartDrawing(VectorHandle& handle) {
  handle = {};
  handle.flags = kVectorHandleFlags;
  EXPECT_EQ(VectorInitialise(&handle), 1);
  handle.flags2 = kVectorHandleFlags2;
}

Drawing::Drawing() { StartDrawing(handle); }

Drawing::Drawing(const std::string& cgm) {
  StartDrawing(handle);
  EXPECT_EQ(DecodeMetafile(cgm, handle), 1);
}

int32_t DecodeMetafile(const std::string& cgm, VectorHandle& handle) {
  HostLoadOptions options;
  FileFormatDefaultLoadOptions(&options, kLoadOptionsSize);
  options.flags |= kLoadFlagsAlways;
  return FileFormatLoadDrawingMemory(cgm.data(), &handle, static_cast<uint32_t>(cgm.size()), &options, 0);
}

std::string EncodeMetafile(const VectorHandle& handle) {
  HostSaveOptions options;
  FileFormatDefaultSaveOptions(&options, kSaveOptionsSize);
  options.flags |= kSaveToMemory;
  HGLOBAL memory = nullptr;
  uint32_t count = 0;
  EXPECT_EQ(FileFormatSaveDrawingMemory(&memory, &handle, kFormatCgm, &count, &options), 1);
  const std::string bytes(static_cast<const char*>(GlobalLock(memory)), count);
  GlobalUnlock(memory);
  KernelFreeGlobal(memory, __LINE__, u"test");
  return bytes;
}

std::string Unsound(const std::string& bytes) {
  NitfFile document;
  if (!Ok(document.ReadDocument(TempFile(bytes).Wide()))) return "it does not open";
  uint64_t end = document.header.headerLength;
  for (const SegmentLengthFields& fields : kSegmentLengths) {
    const LengthTable& table = document.header.Lengths(fields.kind);
    for (uint32_t i = 0; i < table.Count(); ++i)
      end += uint64_t{table.inFile[i].subheader} + table.inFile[i].data;
  }
  if (end != bytes.size())
    return "segments end at " + std::to_string(end) + " of " + std::to_string(bytes.size());
  return document.header.fileLength == bytes.size() ? "" : "FL";
}

}  // namespace test
