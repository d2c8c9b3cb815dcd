// What a signal that ends the tool leaves behind: nothing.
#pragma once

#include <string>

namespace tool {

/// From here on SIGINT, SIGTERM, SIGHUP, SIGPIPE and SIGXFSZ remove the temporary files that there are
/// and then end the process as they would have; those that were ignored stay so.
void CatchSignals();

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
