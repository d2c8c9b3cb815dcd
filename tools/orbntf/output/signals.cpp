#include "tools/orbntf/output/signals.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <new>

#include "core/format/background.h"

namespace tool {
namespace {

constexpr int kEnding[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGALRM};

// Names where a signal handler finds them, without a lock or memory of its own.
struct Slot {
  std::atomic<bool> taken{false};
  char path[PATH_MAX];
};
constexpr int kSlots = 8;
Slot ownSlots[kSlots];
Slot* slots = ownSlots;  // of a child process those that its parent sees

constexpr int kMostChildren = 256;
std::atomic<pid_t> children[kMostChildren];

void RemoveFiles(const Slot* from) {
  for (int i = 0; i < kSlots; ++i) {
    if (from[i].taken.load()) (void)unlink(from[i].path);
  }
}

extern "C" void RemoveAndEnd(int signal) {
  for (const std::atomic<pid_t>& child : children) {
    if (const pid_t process = child.load(); process > 0)
      (void)kill(process, signal == SIGALRM ? SIGTERM : signal);
  }
  // They remove what they have made before it is said that all is over.
  for (const std::atomic<pid_t>& child : children) {
    if (const pid_t process = child.load(); process > 0) (void)waitpid(process, nullptr, 0);
  }
  RemoveFiles(slots);
  if (signal == SIGALRM) {
    constexpr char kWords[] = "orbntf: it takes longer than --time-limit allows\n";
    (void)!write(STDERR_FILENO, kWords, sizeof kWords - 1);
    _exit(1);
  }
  struct sigaction usual = {};
  usual.sa_handler = SIG_DFL;
  (void)sigaction(signal, &usual, nullptr);
  (void)raise(signal);  // delivered when the handler returns
}

// Signals wait while a file and its entry are made one.
using core::SignalsBlocked;

int TakeSlot(const std::string& path) {
  if (path.size() >= PATH_MAX) return -1;
  for (int i = 0; i < kSlots; ++i) {
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
  (void)signal(SIGXFSZ, SIG_IGN);
}

// Where a child's temporary files have their names, for both to see.
struct ChildProcess::Shared {
  Slot slots[kSlots];
};

ChildProcess::ChildProcess() {
  void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  shared_ = memory != MAP_FAILED ? new (memory) Shared : nullptr;
}

ChildProcess::~ChildProcess() {
  if (Started()) (void)Wait();
  if (shared_ != nullptr) (void)munmap(shared_, sizeof(Shared));
}

bool ChildProcess::Fork() {
  if (shared_ == nullptr) return false;
  const SignalsBlocked blocked;
  for (entry_ = 0; entry_ < kMostChildren && children[entry_].load() != 0;) ++entry_;
  if (entry_ == kMostChildren) return false;
  const pid_t parent = getpid();
  process_ = fork();
  if (process_ > 0) children[entry_].store(process_);
  if (process_ != 0) return false;
  for (std::atomic<pid_t>& child : children) child.store(0);
  slots = shared_->slots;
  (void)prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) _exit(1);  // it has ended already
  return true;
}

int ChildProcess::Wait() {
  int status = 0;
  pid_t ended = 0;
  do {
    ended = waitpid(process_, &status, 0);
  } while (ended < 0 && errno == EINTR);
  children[entry_].store(0);
  process_ = -1;
  if (!WIFEXITED(status)) RemoveFiles(shared_->slots);
  return status;
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
