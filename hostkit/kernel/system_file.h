// The operating system's files, by descriptor.
#pragma once

#include "hostkit/kernel/internal.h"

namespace hostkit {

/// Opens a path for reading, or creates (or empties) it for both; -1 on failure.
int OpenPath(const char16_t* path, bool create);
/// A file's size, -1 on failure.
int64_t FileSize(int fd);
/// Move bytes at a position; return how many were moved, -1 on failure.
int64_t ReadAt(int fd, void* buffer, size_t count, int64_t offset);
int64_t WriteAt(int fd, const void* buffer, size_t count, int64_t offset);
bool CloseFile(int fd);
/// The system's number of what has just failed.
int32_t LastError();

}  // namespace hostkit
