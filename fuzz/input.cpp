#include "fuzz/support.h"
#include "tools/orbntf/load.h"

int fuzz::Input(const uint8_t* data, size_t size) {
  static MemoryFile file, saved;
  Begin(size);
  const uint8_t choice = Choices(data, size).Byte();
  file.Fill(data, size);
  NitfHandle document = nullptr;
  Require(Orb_NITFCreate(&document, nullptr) == ORB_SUCCESS, "an empty document");
  int32_t added = 0;
  if (choice % 2 == 0) {
    tool::Bitmap bitmap;
    if (bitmap.Load(file.Path()) == kHostOk) {
      const uint32_t depth = bitmap.record.bitsPerPixel == 8 ? 8 : 24;
      added = Orb_NITFAppendImageSegment(document, &bitmap.record, kFormatJpegRgb, depth, 30);
    }
  } else {
    added = Orb_NITFAppendTextSegment(document, file.Wide());
  }
  if (added == ORB_SUCCESS) {
    Require(Orb_NITFSaveFileA(document, saved.Path().c_str()) == ORB_SUCCESS, "what was taken is saved");
    NitfHandle again = nullptr;
    Require(Orb_NITFCreateA(&again, saved.Path().c_str()) == ORB_SUCCESS, "what was saved opens");
    Orb_NITFDestroy(&again);
  }
  Orb_NITFDestroy(&document);
  RequireNothingHeld();
  return 0;
}
