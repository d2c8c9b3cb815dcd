#include "tools/orbntf/inspect/drawing.h"

#include "orbntf/orbntf.h"

namespace tool {

int32_t AskFilterSize(const std::string& path, uint32_t flags, HostFileInfo& info) {
  const std::u16string wide = Widen(path);
  HostLoadOptions options = {};
  options.size = kLoadOptionsSize;
  options.flags = flags;
  HostInformationRecord record = {};
  record.fileName = wide.c_str();
  record.file = kNoFile;
  record.info = &info;
  record.options = &options;
  const HostWork work;
  return fltInfo(&record);
}

int32_t LoadThroughFilter(const std::string& path, uint32_t flags, HostRowCallback take, void* userData) {
  const std::u16string wide = Widen(path);
  HostLoadOptions options = {};
  options.size = kLoadOptionsSize;
  options.flags = flags;
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 24);
  HostLoadRecord record = {};
  record.fileName = wide.c_str();
  record.bitmap = &bitmap;
  record.rowCallback = take;
  record.userData = userData;
  record.options = &options;
  record.loadMemory = &FileFormatLoadMemory;
  record.setLoadCallback = &FileFormatSetLoadInfoCallback;
  record.required2224 = 1;
  const HostWork work;
  return fltLoad(&record);
}

int32_t DrawDocument(const std::string& path, Document& document, OwnedBitmap& canvas, uint32_t& width,
                     uint32_t& height) {
  const WorkAccount account(path);
  const int32_t status = GetActual_Width_Height(document.get(), &width, &height);
  if (status != ORB_SUCCESS) return status;
  WorkAccount::AllowPixels(uint64_t{width} * height);
  const HostWork work;
  return Orb_NtfRenderBitmap(&canvas.record, document.get());
}

}  // namespace tool
