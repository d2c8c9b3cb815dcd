// Files: 64-bit, buffered, positions kept by arithmetic so that a seek costs no system call.
#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "hostkit/kernel/read_windows.h"
#include "hostkit/kernel/system_file.h"
#include "media/work.h"

namespace {

constexpr size_t kWriteBuffer = 256 * 1024;

thread_local int32_t readError = 0, writeError = 0;

class File {
 public:
  File(int fd, int64_t size) : fd_(fd), size_(size) {}

  uint32_t Read(uint8_t* buffer, uint32_t count) {
    if (!Flush()) return 0;
    uint32_t moved = 0;
    while (moved < count) {
      const int64_t got = windows_.Read(fd_, position_, buffer + moved, count - moved);
      if (got < 0 && readError == 0) readError = hostkit::LastError();
      if (got <= 0) break;
      moved += static_cast<uint32_t>(got);
      position_ += got;
    }
    return moved;
  }

  uint32_t Write(const uint8_t* bytes, uint32_t count) {
    windows_.Forget();
    if (failed_) return 0;
    if (position_ != pendingStart_ + static_cast<int64_t>(pending_.size()) && !Flush()) return 0;
    if (pending_.empty()) pendingStart_ = position_;
    // What fills the buffer by itself goes past it.
    const bool direct = count >= kWriteBuffer;
    if (direct) {
      if (!Flush() || !WriteOut(bytes, count, position_)) return 0;
    } else {
      pending_.insert(pending_.end(), bytes, bytes + count);
    }
    position_ += count;
    size_ = std::max(size_, position_);
    if (direct) pendingStart_ = position_;
    return pending_.size() < kWriteBuffer || Flush() ? count : 0;
  }

  int64_t Seek(int64_t offset, int32_t origin) {
    const int64_t base = origin == kSeekStart ? 0 : origin == kSeekCurrent ? position_ : size_;
    int64_t target = 0;
    if (origin < kSeekStart || origin > kSeekEnd || __builtin_add_overflow(base, offset, &target) ||
        target < 0) {
      return -1;
    }
    position_ = target;
    return target;
  }

  bool Close() {
    const bool flushed = Flush();
    return hostkit::CloseFile(fd_) && flushed;
  }

 private:
  bool Flush() {
    (void)WriteOut(pending_.data(), pending_.size(), pendingStart_);
    pending_.clear();
    return !failed_;
  }

  bool WriteOut(const uint8_t* bytes, size_t count, int64_t position) {
    size_t done = 0;
    while (!failed_ && done < count) {
      const int64_t wrote =
          hostkit::WriteAt(fd_, bytes + done, count - done, position + static_cast<int64_t>(done));
      if (wrote < 0 && writeError == 0) writeError = hostkit::LastError();
      if (wrote <= 0) failed_ = true;  // a lost byte is never forgotten: the close fails too
      done += wrote > 0 ? static_cast<size_t>(wrote) : 0;
    }
    return !failed_;
  }

  int fd_;
  int64_t size_;
  int64_t position_ = 0;
  hostkit::ReadWindows windows_;
  std::vector<uint8_t> pending_;
  int64_t pendingStart_ = 0;
  bool failed_ = false;
};

// A handle is the number of its slot; finding a file locks nothing.
constexpr int32_t kMostFiles = 1 << 16;
std::atomic<File*> files[kMostFiles];

File* Find(int32_t handle) { return handle >= 0 && handle < kMostFiles ? files[handle].load() : nullptr; }

int32_t Enter(std::unique_ptr<File> file) {
  for (int32_t handle = 0; handle < kMostFiles; ++handle) {
    File* none = nullptr;
    if (!files[handle].compare_exchange_strong(none, file.get())) continue;
    hostkit::Track(hostkit::kKindFile, file.release(), 0, 0, u"file");
    return handle;
  }
  (void)file->Close();
  return kNoFile;
}

}  // namespace

int32_t ORB_CALL KernelOpen(const char16_t* path, int32_t flags, int32_t permission) {
  const bool reads = flags == kOpenRead && permission == kPermissionRead;
  const bool creates = flags == kOpenCreate && permission == kPermissionWrite;
  if (path == nullptr || (!reads && !creates) || HostkitShouldFail(kFaultOpen)) return kNoFile;
  int fd = -1;
  try {
    fd = hostkit::OpenPath(path, creates);
    const int64_t size = fd < 0 ? -1 : hostkit::FileSize(fd);
    if (size >= 0) return Enter(std::make_unique<File>(fd, size));
  } catch (const std::bad_alloc&) {
    // closed below
  }
  if (fd >= 0) hostkit::CloseFile(fd);
  return kNoFile;
}

uint32_t ORB_CALL KernelRead(int32_t handle, void* buffer, uint32_t count) {
  File* file = Find(handle);
  if (file == nullptr || HostkitShouldFail(kFaultRead)) return 0;
  (void)media::Spend(count / 4 + 20);  // what is too much is refused where there is a status
  try {
    return file->Read(static_cast<uint8_t*>(buffer), count);
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

uint32_t ORB_CALL KernelWrite(int32_t handle, const void* buffer, uint32_t count) {
  File* file = Find(handle);
  if (file == nullptr || HostkitShouldFail(kFaultWrite)) return 0;
  try {
    return file->Write(static_cast<const uint8_t*>(buffer), count);
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

int32_t ORB_CALL HostkitReadError() { return std::exchange(readError, 0); }
int32_t ORB_CALL HostkitWriteError() { return std::exchange(writeError, 0); }

int64_t ORB_CALL KernelSeek(int32_t handle, int64_t offset, int32_t origin) {
  File* file = Find(handle);
  return file == nullptr ? -1 : file->Seek(offset, origin);
}

int32_t ORB_CALL KernelClose(int32_t handle) {
  if (Find(handle) == nullptr) return kHostInvalid;
  const std::unique_ptr<File> file(files[handle].exchange(nullptr));
  if (file == nullptr) return kHostInvalid;
  hostkit::Untrack(hostkit::kKindFile, file.get());
  const bool closed = file->Close();
  return closed && !HostkitShouldFail(kFaultClose) ? kHostOk : kHostCloseFailed;
}
