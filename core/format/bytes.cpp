#include "core/format/bytes.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "core/format/interruption.h"

namespace core {
namespace {

constexpr uint64_t kMostAtOnce = 1 << 30;

// Up to `count` bytes from an offset on, fewer only at the end of the file.
size_t ReadFrom(int descriptor, char* to, size_t count, uint64_t offset, const std::string& path) {
  size_t taken = 0;
  while (taken < count) {
    const ssize_t got = Restarted(
        [&] { return pread(descriptor, to + taken, count - taken, static_cast<off_t>(offset + taken)); });
    if (got < 0) throw ReadError(path, "cannot be read: " + WordsOfErrno(errno));
    if (got == 0) break;
    taken += static_cast<size_t>(got);
  }
  return taken;
}

}  // namespace

std::string WordsOfErrno(int error) {
  switch (error) {
    case ENOENT:
      return "no such file or folder";
    case EISDIR:
      return "is a folder";
    case ENOTDIR:
      return "a part of the name is no folder";
    case EACCES:
    case EPERM:
      return "permission denied";
    case ENOSPC:
    case EDQUOT:
      return "no space left";
    case EFBIG:
      return "too large for the file system or the limit set";
    default:
      return std::strerror(error);
  }
}

Descriptor::~Descriptor() { Close(); }

void Descriptor::Close() {
  if (const int fd = std::exchange(fd_, -1); fd >= 0) close(fd);
}

bool WriteAll(int descriptor, const void* bytes, size_t count) {
  const auto* from = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t wrote = Restarted([&] { return write(descriptor, from, count); });
    if (wrote < 0) return false;
    from += wrote;
    count -= static_cast<size_t>(wrote);
  }
  return true;
}

std::optional<FileIdentity> IdentityOf(const std::string& path) {
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return FileIdentity{status.st_dev, status.st_ino};
}

std::string ReadWhole(const std::string& path) {
  struct stat status;
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.Get() < 0 || fstat(file.Get(), &status) != 0) throw ReadError(path, WordsOfErrno(errno));
  if (S_ISDIR(status.st_mode)) throw ReadError(path, "is a folder");
  if (!S_ISREG(status.st_mode)) throw ReadError(path, "is no regular file");
  std::string bytes(static_cast<size_t>(status.st_size), '\0');
  if (ReadFrom(file.Get(), bytes.data(), bytes.size(), 0, path) != bytes.size())
    throw ReadError(path, "became shorter while it was read");
  return bytes;
}

FileBytes::FileBytes(const std::string& path)
    : path_(path), descriptor_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
  struct stat status;
  if (descriptor_.Get() < 0) return;
  if (fstat(descriptor_.Get(), &status) == 0 && S_ISREG(status.st_mode)) {
    size_ = static_cast<uint64_t>(status.st_size);
  } else {
    descriptor_.Close();
  }
}

bool FileBytes::Is(const std::string& path) const {
  struct stat own;
  return descriptor_.Get() >= 0 && fstat(descriptor_.Get(), &own) == 0 &&
         IdentityOf(path) == FileIdentity{own.st_dev, own.st_ino};
}

int FileBytes::Again() const { return fcntl(descriptor_.Get(), F_DUPFD_CLOEXEC, 0); }

FileBytes::FileBytes(std::string_view memory) : memory_(memory), descriptor_(-1), size_(memory.size()) {}

std::string FileBytes::At(uint64_t offset, uint64_t count) const {
  if (offset >= size_) return "";
  count = std::min(count, size_ - offset);
  if (count > kMostAtOnce)
    throw ReadError(path_, "more than 1 GiB of it would have to be held in memory at once");
  std::string bytes(static_cast<size_t>(count), '\0');
  (void)Read(offset, bytes.data(), bytes.size());
  return bytes;
}

bool FileBytes::ReadStored(uint64_t offset, void* to, size_t count) const {
  Interruption::Ask();
  if (offset > size_ || count > size_ - offset) return false;
  auto* bytes = static_cast<char*>(to);
  if (memory_.data() != nullptr) {
    memory_.copy(bytes, count, static_cast<size_t>(offset));
  } else if (ReadFrom(descriptor_.Get(), bytes, count, offset, path_) != count) {
    throw ReadError(path_, "became shorter while it was read");
  }
  return true;
}

bool FileBytes::Read(uint64_t offset, void* to, size_t count) const {
  if (!ReadStored(offset, to, count)) return false;
  if (offset < front_.size()) front_.copy(static_cast<char*>(to), count, static_cast<size_t>(offset));
  return true;
}

bool FileBytes::NextStored(uint64_t offset, uint64_t end, uint64_t& first, uint64_t& last) const {
  first = offset;
  last = std::min(end, size_);
  if (memory_.data() != nullptr || first >= last) return first < last;
  const off_t data = lseek(descriptor_.Get(), static_cast<off_t>(offset), SEEK_DATA);
  if (data < 0 && errno != ENXIO) return true;  // a file system that knows of no holes
  if (data < 0) {
    // A hole up to the end, where that is still where it was.
    struct stat status;
    if (fstat(descriptor_.Get(), &status) != 0) throw ReadError(path_, WordsOfErrno(errno));
    if (static_cast<uint64_t>(status.st_size) < size_)
      throw ReadError(path_, "became shorter while it was read");
    return false;
  }
  first = static_cast<uint64_t>(data);
  const off_t hole = lseek(descriptor_.Get(), data, SEEK_HOLE);
  if (hole > data) last = std::min(last, static_cast<uint64_t>(hole));
  return first < last;
}

PartBytes::PartBytes(const FileBytes& file, uint64_t offset, uint64_t length)
    : file_(file),
      offset_(offset),
      size_(std::min(length, file.Size() - std::min(file.Size(), offset))) {}

void PartBytes::Hold(uint64_t at) const {
  constexpr uint64_t kWindow = 64 << 10;
  if (at >= first_ && at - first_ < window_.size()) return;
  window_ = file_.At(offset_ + at, std::min(kWindow, size_ - at));
  first_ = at;
}

uint8_t PartBytes::At(uint64_t at) const {
  Hold(at);
  return static_cast<uint8_t>(window_[static_cast<size_t>(at - first_)]);
}

uint64_t PartBytes::Find(uint8_t value, uint64_t from) const {
  for (uint64_t at = from; at < size_; at = first_ + window_.size()) {
    Hold(at);
    const size_t found = window_.find(static_cast<char>(value), static_cast<size_t>(at - first_));
    if (found != std::string::npos) return first_ + found;
  }
  return size_;
}

uint64_t PartBytes::SkipFill(uint64_t from) const {
  for (uint64_t at = from; at < size_; at = first_ + window_.size()) {
    Hold(at);
    const size_t found =
        window_.find_first_not_of(std::string_view("\xFF\0", 2), static_cast<size_t>(at - first_));
    if (found != std::string::npos) return first_ + found;
  }
  return size_;
}

std::string PartBytes::Piece(uint64_t at, uint64_t count) const {
  return at < size_ ? file_.At(offset_ + at, std::min(count, size_ - at)) : "";
}

}  // namespace core
