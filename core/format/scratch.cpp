#include "core/format/scratch.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace core {
namespace {

int OpenScratch(const std::string& folder) {
  std::string name = folder + "/.orbntf-XXXXXX";
  const int descriptor = mkostemp(name.data(), O_CLOEXEC);
  if (descriptor >= 0) (void)unlink(name.c_str());
  return descriptor;
}

}  // namespace

void FailToWrite() { throw WriteError(WordsOfErrno(errno)); }

ScratchFile::ScratchFile(const std::string& folder) : descriptor_(-1) {
  int descriptor = OpenScratch(folder.empty() ? "." : folder);
  std::error_code error;
  if (descriptor < 0) descriptor = OpenScratch(std::filesystem::temp_directory_path(error).string());
  if (descriptor < 0) FailToWrite();
  descriptor_.Take(descriptor);
}

void ScratchFile::Write(uint64_t at, const void* bytes, size_t count) {
  constexpr size_t kTogether = 1 << 20;
  if (at != waitingAt_ + waiting_.size() || waiting_.size() + count > kTogether) Flush();
  if (waiting_.empty()) waitingAt_ = at;
  waiting_.append(static_cast<const char*>(bytes), count);
  size_ = std::max(size_, at + count);
}

void ScratchFile::Flush() {
  for (size_t done = 0; done < waiting_.size();) {
    const ssize_t wrote = Restarted([&] {
      return pwrite(descriptor_.Get(), waiting_.data() + done, waiting_.size() - done,
                    static_cast<off_t>(waitingAt_ + done));
    });
    if (wrote < 0) FailToWrite();
    done += static_cast<size_t>(wrote);
  }
  waiting_.clear();
}

void ScratchFile::ReadBack(uint64_t at, void* bytes, size_t count) {
  Flush();
  auto* to = static_cast<char*>(bytes);
  std::fill_n(to, count, '\0');
  for (size_t done = 0; done < count;) {
    const ssize_t got = Restarted(
        [&] { return pread(descriptor_.Get(), to + done, count - done, static_cast<off_t>(at + done)); });
    if (got < 0) FailToWrite();
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
}

void ScratchFile::Extend(uint64_t size) {
  Flush();
  size_ = std::max(size_, size);
  if (Restarted([&] { return ftruncate(descriptor_.Get(), static_cast<off_t>(size_)); }) != 0)
    FailToWrite();
}

int ScratchFile::Open() {
  Flush();
  const int again = fcntl(descriptor_.Get(), F_DUPFD_CLOEXEC, 0);
  if (again < 0) FailToWrite();
  return again;
}

const FileBytes& ScratchFile::Bytes() {
  Flush();
  if (bytes_ == nullptr || bytes_->Size() != size_) bytes_ = std::make_unique<FileBytes>(Open(), size_);
  return *bytes_;
}

}  // namespace core
