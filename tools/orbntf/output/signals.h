// What a signal that ends the tool leaves behind: nothing.
#pragma once

#include <string>

namespace tool {

/// From here on SIGINT, SIGTERM, SIGHUP and SIGPIPE remove the temporary files that there are, end the
/// processes that were started, and then end this one as they would have; those that were ignored stay
/// so. A file beyond the limit of its size is an error of the write, not a signal.
void CatchSignals();

/// A process that does a part of the work: it ends with this one, however that ends.
class ChildProcess {
 public:
  ChildProcess();
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Splits: true in the new process, which has to leave by _exit. `Started` tells whether there is one.
  bool Fork();
  bool Started() const { return process_ > 0; }
  /// Waits for its end; the status as waitpid has it. What temporary files it left are removed.
  int Wait();

 private:
  struct Shared;
  int process_ = -1, entry_ = -1;
  Shared* shared_;
};

/// A new file of a name of its own, removed with its owner or by a signal.
class TemporaryFile {
 public:
  TemporaryFile() = default;
  ~TemporaryFile() { Remove(); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  /// Makes it in a folder; false when that fails, with errno set.
  bool Make(const std::string& folder);
  void Remove();
  /// The file has got another name: there is nothing to remove any more.
  void Forget();
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
  int slot_ = -1;
};

}  // namespace tool
