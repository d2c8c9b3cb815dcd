#include "fuzz/support.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

// Libraries that keep what they loaded until the process ends.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:libfontconfig\nleak:libcairo\n";
}

namespace fuzz {

MemoryFile::MemoryFile()
    : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)),
      path_("/proc/self/fd/" + std::to_string(descriptor_)),
      wide_(path_.begin(), path_.end()) {
  Require(descriptor_ >= 0, "a file in memory");
}
MemoryFile::~MemoryFile() { close(descriptor_); }

void MemoryFile::Fill(const void* data, size_t size) {
  Require(
      ftruncate(descriptor_, 0) == 0 && pwrite(descriptor_, data, size, 0) == static_cast<ssize_t>(size),
      "a filled file");
}

std::string MemoryFile::Contents() const {
  std::string bytes(static_cast<size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
  bytes.resize(static_cast<size_t>(pread(descriptor_, bytes.data(), bytes.size(), 0)));
  return bytes;
}

void Begin(size_t size) {
  constexpr uint64_t kMostPixels = 1 << 18;
  HostkitSetMessageHandler([](const char*, const char*) {});
  HostkitSetMaxPixels(kMostPixels);
  constexpr uint32_t kPercent = 10;  // of an instrumented program
  HostkitLimitWork(size, 0, kPercent);
}

void RequireNothingHeld() {
  HostkitLeak leak;
  if (HostkitOutstanding(&leak, 1) == 0) return;
  std::fprintf(stderr, "held: kind %d, line %u, %llu bytes\n", leak.kind, leak.line,
               static_cast<unsigned long long>(leak.bytes));
  std::abort();
}

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "not so: %s\n", what);
  std::abort();
}

int32_t Draw(NitfHandle document) {
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 0);
  const int32_t status = Orb_NtfRenderBitmap(&bitmap, document);
  KernelFreeBitmap(&bitmap);
  return status;
}

}  // namespace fuzz
