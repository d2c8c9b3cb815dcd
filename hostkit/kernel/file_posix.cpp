// Files of POSIX systems.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "hostkit/kernel/system_file.h"

namespace hostkit {
namespace {

// Repeats a call that a signal broke off.
int64_t Restarted(auto call) {
  int64_t moved = 0;
  do {
    moved = call();
  } while (moved < 0 && errno == EINTR);
  return moved;
}

}  // namespace

int OpenPath(const char16_t* path, bool create) {
  // What is read is a regular file: a FIFO has no size and would be waited for.
  const int flags = create ? O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC : O_RDONLY | O_CLOEXEC | O_NONBLOCK;
  const int fd = open(ToUtf8(path).c_str(), flags, 0666);
  struct stat status;
  if (fd < 0 || create || (fstat(fd, &status) == 0 && S_ISREG(status.st_mode))) return fd;
  close(fd);
  return -1;
}

int64_t FileSize(int fd) {
  struct stat status;
  return fstat(fd, &status) == 0 ? static_cast<int64_t>(status.st_size) : -1;
}

int64_t ReadAt(int fd, void* buffer, size_t count, int64_t offset) {
  return Restarted([&] { return pread(fd, buffer, count, offset); });
}

int64_t WriteAt(int fd, const void* buffer, size_t count, int64_t offset) {
  return Restarted([&] { return pwrite(fd, buffer, count, offset); });
}

int32_t LastError() { return errno; }

bool CloseFile(int fd) { return close(fd) == 0; }

}  // namespace hostkit
