#include "fuzz/support.h"
#include "tools/orbntf/inspect/load.h"

int fuzz::Input(const uint8_t* data, size_t size) {
  static MemoryFile file, saved;
  Begin(size);
  const uint8_t choice = Choices(data, size).Byte();
  file.Fill(data, size);
  NitfHandle document = nullptr;
  Require(Orb_NITFCreate(&document, nullptr) == ORB_SUCCESS, "an empty document");
  int32_t added = 0;
  if (choice % 2 == 0) {
    core::Picture picture;
    tool::Bitmap bitmap;
    if (tool::LoadInput(file.Path(), picture) == kHostOk && picture.bits == 8 &&
        bitmap.Take(picture) == kHostOk)
      added =
          Orb_NITFAppendImageSegment(document, &bitmap.record, kFormatJpegRgb, picture.channels * 8, 30);
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
