#include "fuzz/support.h"

namespace {

int32_t ORB_CALL TakeRow(void*, KernelBitmap*, uint8_t*, uint32_t, int32_t, int32_t, void* userData) {
  ++*static_cast<uint32_t*>(userData);
  return 1;
}

int32_t Info(const fuzz::MemoryFile& file, uint32_t flags, HostFileInfo& info) {
  HostLoadOptions options = {};
  options.size = kLoadOptionsSize;
  options.flags = flags;
  HostInformationRecord record = {};
  record.fileName = file.Wide();
  record.file = kNoFile;
  record.info = &info;
  record.options = &options;
  return fltInfo(&record);
}

int32_t Load(const fuzz::MemoryFile& file, uint32_t flags, uint32_t& rows) {
  HostLoadOptions options = {};
  options.size = kLoadOptionsSize;
  options.flags = flags;
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 24);
  HostLoadRecord record = {};
  record.fileName = file.Wide();
  record.bitmap = &bitmap;
  record.rowCallback = &TakeRow;
  record.userData = &rows;
  record.options = &options;
  record.loadMemory = &FileFormatLoadMemory;
  record.setLoadCallback = &FileFormatSetLoadInfoCallback;
  record.required2224 = 1;
  return fltLoad(&record);
}

}  // namespace

int fuzz::Filter(const uint8_t* data, size_t size) {
  static MemoryFile file;
  Begin(size);
  const uint8_t options = Choices(data, size).Byte();
  const uint32_t flags = (options & 1 ? kLoadFixedCanvas : 0) | (options & 2 ? kLoadLiftDarkImages : 0);
  file.Fill(data, size);
  HostFileInfo info = {};
  const int32_t measured = Info(file, flags, info);
  uint32_t rows = 0;
  const int32_t loaded = Load(file, flags, rows);
  // What loads has a size, and all of its rows come.
  if (loaded == 1) Require(measured == 1 && rows == info.height, "as many rows as the file has");
  RequireNothingHeld();
  return 0;
}
