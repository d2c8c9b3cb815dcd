#include "tools/orbntf/output/output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <vector>

#include "core/format/bytes.h"
#include "hostkit/hostkit.h"
#include "tools/orbntf/core_names.h"

namespace tool {
namespace {

std::string FolderOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

// The file that a name stands for: links are followed, also to where there is nothing yet.
std::string ResolveLinks(std::string path) {
  constexpr int kMostLinks = 40;
  for (int i = 0; i < kMostLinks; ++i) {
    char target[PATH_MAX];
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    if (length < 0 || length == sizeof target) break;
    std::string next = target[0] == '/' ? "" : FolderOf(path) + "/";
    path = next.append(target, static_cast<size_t>(length));
  }
  return path;
}

void SyncFolder(const std::string& folder) {
  const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  (void)Restarted([fd] { return fsync(fd); });  // the file itself is there already
  close(fd);
}

int together = 0;  // how many SyncTogether there are

// A stream whose writes go on where a signal broke them off or only some bytes were taken.
ssize_t WriteThrough(void* cookie, const char* bytes, size_t count) {
  const int fd = static_cast<int>(reinterpret_cast<intptr_t>(cookie));
  return WriteAll(fd, bytes, count) ? static_cast<ssize_t>(count) : 0;
}
int SeekThrough(void* cookie, off64_t* offset, int whence) {
  const off64_t at = lseek64(static_cast<int>(reinterpret_cast<intptr_t>(cookie)), *offset, whence);
  if (at < 0) return -1;
  *offset = at;
  return 0;
}
int CloseThrough(void* cookie) { return close(static_cast<int>(reinterpret_cast<intptr_t>(cookie))); }

std::FILE* StreamOf(int fd) {
  const cookie_io_functions_t functions = {nullptr, &WriteThrough, &SeekThrough, &CloseThrough};
  return fopencookie(reinterpret_cast<void*>(static_cast<intptr_t>(fd)), "w", functions);
}

}  // namespace

SyncTogether::SyncTogether(const std::string& folder) : folder_(folder) { ++together; }

SyncTogether::~SyncTogether() { --together; }

bool SyncTogether::Finish() {
  const int fd = open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return errno == ENOENT;  // nothing was written
  const bool synced = Restarted([fd] { return syncfs(fd); }) == 0;
  const int error = errno;
  close(fd);
  errno = error;
  return synced;
}

Output::Output(const std::string& path, Way way) : way_(way), target_(path) {
  if (path == "-") {
    inOrder_ = true;
    return;
  }
  target_ = ResolveLinks(path);
  struct stat status;
  if (stat(target_.c_str(), &status) != 0) {
    if (errno != ENOENT) (void)FailByErrno();
    return;
  }
  mode_ = status.st_mode & 07777;
  owner_ = status.st_uid;
  group_ = status.st_gid;
  if (S_ISDIR(status.st_mode)) {
    (void)Fail("is a folder");
  } else if (!S_ISREG(status.st_mode)) {
    inOrder_ = true;
  } else if ((mode_ & 0222) == 0 || access(target_.c_str(), W_OK) != 0) {
    (void)Fail("is read-only");
  } else {
    replaces_ = true;
  }
}

Output::~Output() {
  if (stream_ != nullptr) (void)std::fclose(stream_);
}

bool Output::Fail(const std::string& words) {
  if (problem_.empty()) problem_ = words;
  return false;
}
void Output::NoteFailure() {
  const int error = errno;
  // What wrote took no signals: a pipe that is closed ends the process as it would have.
  if (error == EPIPE) (void)raise(SIGPIPE);
  errno = error;
  (void)FailByErrno();
}

bool Output::FailByErrno() { return Fail(WordsOfErrno(errno)); }

bool Output::MakeTemporary() {
  if (!problem_.empty()) return false;
  std::error_code error;
  const std::string folder =
      inOrder_ ? std::filesystem::temp_directory_path(error).string() : FolderOf(target_);
  if (error || !temporary_.Make(folder)) return FailByErrno();
  if (replaces_) {
    // The owner is kept where that is allowed; changing it may clear permissions.
    (void)!chown(temporary_.Path().c_str(), owner_, group_);
    (void)chmod(temporary_.Path().c_str(), mode_);
  }
  return true;
}

const std::string& Output::Path() {
  if (temporary_.Path().empty()) (void)MakeTemporary();
  return temporary_.Path();
}

// What is not replaced: standard output, a FIFO or a device.
std::FILE* Output::OpenInOrder() {
  if (target_ == "-") (void)std::fflush(stdout);
  const int fd = Restarted([this] {
    return target_ == "-" ? dup(STDOUT_FILENO) : open(target_.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  });
  std::FILE* stream = fd < 0 ? nullptr : StreamOf(fd);
  if (stream == nullptr) (void)FailByErrno();
  return stream;
}

std::FILE* Output::Stream() {
  if (stream_ != nullptr || !problem_.empty()) return stream_;
  if (IsStraight()) return stream_ = OpenInOrder();
  if (!MakeTemporary()) return nullptr;
  const int fd = open(temporary_.Path().c_str(), O_RDWR | O_CLOEXEC);
  // What is written by name has a stream for its descriptor alone.
  stream_ = fd < 0 ? nullptr : way_ == Way::InOrder ? StreamOf(fd) : fdopen(fd, "w+b");
  if (stream_ == nullptr) (void)FailByErrno();
  return stream_;
}

bool Output::CloseStream() {
  if (stream_ == nullptr) return true;
  std::FILE* stream = stream_;
  if (std::fflush(stream) != 0 || std::ferror(stream) != 0) return FailByErrno();
  stream_ = nullptr;
  return std::fclose(stream) == 0 || FailByErrno();
}

bool Output::Commit() {
  if (!problem_.empty() || !CloseStream()) return false;
  if (const int32_t error = HostkitReadError(); error != 0)
    return Fail("what it is made from cannot be read: " + WordsOfErrno(error));
  if (!inOrder_) return Replace();
  return IsStraight() || SendOn();
}

bool Output::Replace() {
  if (temporary_.Path().empty()) return Fail("nothing was written");
  const bool waits = together == 0 || replaces_;
  if (waits && !Sync()) return false;
  const auto named = [this] { return rename(temporary_.Path().c_str(), target_.c_str()); };
  if (Restarted(named) != 0) return FailByErrno();
  temporary_.Forget();
  if (waits) SyncFolder(FolderOf(target_));
  return true;
}

bool Output::Sync() {
  const int fd = open(temporary_.Path().c_str(), O_RDONLY | O_CLOEXEC);
  const bool synced = fd >= 0 && Restarted([fd] { return fsync(fd); }) == 0;
  if (!synced) (void)FailByErrno();
  if (fd >= 0) close(fd);
  return synced;
}

// From the file that was written by name to where it belongs.
bool Output::SendOn() {
  const int from = open(temporary_.Path().c_str(), O_RDONLY | O_CLOEXEC);
  if (from < 0) return FailByErrno();
  stream_ = OpenInOrder();
  std::vector<char> piece(256 << 10);
  bool sent = stream_ != nullptr;
  for (ssize_t count = 1; sent && count > 0;) {
    count = Restarted([&] { return read(from, piece.data(), piece.size()); });
    if (count < 0) sent = Fail("what was written cannot be read: " + WordsOfErrno(errno));
    const auto bytes = static_cast<size_t>(std::max<ssize_t>(count, 0));
    if (sent) sent = std::fwrite(piece.data(), 1, bytes, stream_) == bytes || FailByErrno();
  }
  close(from);
  return sent && CloseStream();
}

bool CloseStandardOutput() {
  const bool written = std::fflush(stdout) == 0 && std::ferror(stdout) == 0;
  return std::fclose(stdout) == 0 && written;
}

void HoldStandardDescriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) >= 0 || errno != EBADF) continue;
    // Opened so that what is not there cannot be used: reading and writing fail.
    const int flags = fd == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (open("/dev/null", flags) != fd) return;
  }
}

}  // namespace tool
