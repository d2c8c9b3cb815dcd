// Files of Windows.
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "hostkit/kernel/system_file.h"

namespace hostkit {
namespace {

constexpr size_t kLargestMove = 1 << 30;

}  // namespace

int OpenPath(const char16_t* path, bool create) {
  const int flags = create ? _O_RDWR | _O_CREAT | _O_TRUNC | _O_BINARY | _O_NOINHERIT
                           : _O_RDONLY | _O_BINARY | _O_NOINHERIT;
  return _wopen(WindowsText(path), flags, _S_IREAD | _S_IWRITE);
}

int64_t FileSize(int fd) { return _filelengthi64(fd); }

int64_t ReadAt(int fd, void* buffer, size_t count, int64_t offset) {
  if (_lseeki64(fd, offset, SEEK_SET) != offset) return -1;
  return _read(fd, buffer, static_cast<unsigned>(std::min(count, kLargestMove)));
}

int64_t WriteAt(int fd, const void* buffer, size_t count, int64_t offset) {
  if (_lseeki64(fd, offset, SEEK_SET) != offset) return -1;
  return _write(fd, buffer, static_cast<unsigned>(std::min(count, kLargestMove)));
}

int32_t LastError() { return errno; }

bool CloseFile(int fd) { return _close(fd) == 0; }

}  // namespace hostkit
