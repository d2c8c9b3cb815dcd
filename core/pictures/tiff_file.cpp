#include "core/pictures/tiff_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include "core/format/bytes.h"
#include "core/pictures/geo_tags.h"

namespace core {
namespace {

int DescriptorOf(thandle_t handle) { return static_cast<int>(reinterpret_cast<intptr_t>(handle)); }

tmsize_t ReadTiff(thandle_t handle, void* to, tmsize_t count) {
  tmsize_t taken = 0;
  while (taken < count) {
    const ssize_t got = Restarted([&] {
      return read(DescriptorOf(handle), static_cast<char*>(to) + taken,
                  static_cast<size_t>(count - taken));
    });
    if (got < 0) return -1;
    if (got == 0) break;
    taken += got;
  }
  return taken;
}
tmsize_t WriteTiff(thandle_t handle, void* from, tmsize_t count) {
  return WriteAll(DescriptorOf(handle), from, static_cast<size_t>(count)) ? count : -1;
}
toff_t SeekTiff(thandle_t handle, toff_t offset, int whence) {
  return static_cast<toff_t>(lseek(DescriptorOf(handle), static_cast<off_t>(offset), whence));
}
int CloseTiff(thandle_t handle) { return close(DescriptorOf(handle)); }
toff_t SizeOfTiff(thandle_t handle) {
  struct stat status;
  return fstat(DescriptorOf(handle), &status) == 0 ? static_cast<toff_t>(status.st_size) : 0;
}

}  // namespace

TIFF* OpenTiffFile(int descriptor, const char* mode) {
  if (descriptor < 0) return nullptr;
  DeclareGeoTags();
  TIFFSetErrorHandler(nullptr);
  TIFFSetWarningHandler(nullptr);
  TIFF* tiff =
      TIFFClientOpen("picture", mode, reinterpret_cast<thandle_t>(static_cast<intptr_t>(descriptor)),
                     ReadTiff, WriteTiff, SeekTiff, CloseTiff, SizeOfTiff, nullptr, nullptr);
  if (tiff == nullptr) close(descriptor);
  return tiff;
}

}  // namespace core
