#include "tools/orbntf/output/signals.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>

namespace tool {
namespace {

constexpr int kEnding[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ};

// Names where a signal handler finds them, without a lock or memory of its own.
struct Slot {
  std::atomic<bool> taken{false};
  char path[PATH_MAX];
};
Slot slots[8];

extern "C" void RemoveAndEnd(int signal) {
  for (const Slot& slot : slots) {
    if (slot.taken.load()) (void)unlink(slot.path);
  }
  struct sigaction usual = {};
  usual.sa_handler = SIG_DFL;
  (void)sigaction(signal, &usual, nullptr);
  (void)raise(signal);  // delivered when the handler returns
}

// Signals wait while a file and its entry are made one.
class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : kEnding) sigaddset(&ending, signal);
    (void)sigprocmask(SIG_BLOCK, &ending, &before_);
  }
  ~SignalsBlocked() {
    const int error = errno;
    (void)sigprocmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;

 private:
  sigset_t before_;
};

int TakeSlot(const std::string& path) {
  if (path.size() >= PATH_MAX) return -1;
  for (int i = 0; i < static_cast<int>(std::size(slots)); ++i) {
    if (slots[i].taken.load()) continue;
    std::memcpy(slots[i].path, path.c_str(), path.size() + 1);
    slots[i].taken.store(true);
    return i;
  }
  return -1;
}

}  // namespace

void CatchSignals() {
  struct sigaction action = {};
  action.sa_handler = &RemoveAndEnd;
  sigemptyset(&action.sa_mask);
  for (const int signal : kEnding) {
    struct sigaction before;
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
      (void)sigaction(signal, &action, nullptr);
  }
}

bool TemporaryFile::Make(const std::string& folder) {
  const SignalsBlocked blocked;
  std::string path = folder + "/.orbntf-XXXXXX";
  const int fd = mkstemp(path.data());
  if (fd < 0) return false;
  // mkstemp makes a private file; the output has the permissions of any new one.
  const mode_t mask = umask(0);
  umask(mask);
  (void)fchmod(fd, 0666 & ~mask);
  close(fd);
  path_ = path;
  slot_ = TakeSlot(path);
  return true;
}

void TemporaryFile::Remove() {
  const SignalsBlocked blocked;
  if (!path_.empty()) (void)unlink(path_.c_str());
  Forget();
}

void TemporaryFile::Forget() {
  if (slot_ >= 0) slots[slot_].taken.store(false);
  slot_ = -1;
  path_.clear();
}

}  // namespace tool
