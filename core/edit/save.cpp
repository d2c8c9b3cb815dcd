#include "core/edit/save.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace core {
namespace {

[[noreturn]] void Fail() { throw WriteError(WordsOfErrno(errno)); }

// A file beside another one, which is gone unless it gets that one's name.
class Beside {
 public:
  explicit Beside(const std::string& path) : target_(Resolved(path)) {
    const size_t slash = target_.rfind('/');
    folder_ = slash == std::string::npos ? "." : target_.substr(0, slash + 1);
    name_ = folder_ + (slash == std::string::npos ? "/" : "") + ".orbntf-XXXXXX";
    struct stat status;
    const bool replaces = stat(target_.c_str(), &status) == 0;
    if (replaces && !S_ISREG(status.st_mode)) throw WriteError("is no regular file");
    if (replaces && access(target_.c_str(), W_OK) != 0) throw WriteError("is read-only");
    descriptor_.Take(mkostemp(name_.data(), O_CLOEXEC));
    if (descriptor_.Get() < 0) {
      name_.clear();
      Fail();
    }
    const mode_t mask = umask(0);
    umask(mask);
    (void)fchmod(descriptor_.Get(), replaces ? status.st_mode & 07777 : 0666 & ~mask);
  }
  ~Beside() {
    if (!name_.empty()) (void)unlink(name_.c_str());
  }
  Beside(const Beside&) = delete;
  Beside& operator=(const Beside&) = delete;

  int Get() const { return descriptor_.Get(); }
  const std::string& Name() const { return name_; }
  void Rename() {
    if (Restarted([this] { return fsync(descriptor_.Get()); }) != 0) Fail();
    if (std::rename(name_.c_str(), target_.c_str()) != 0) Fail();
    name_.clear();
    const Descriptor folder(open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.Get() >= 0) (void)fsync(folder.Get());
  }

 private:
  // A link keeps pointing: what it points to is replaced.
  static std::string Resolved(const std::string& path) {
    char* real = realpath(path.c_str(), nullptr);
    std::string resolved = real != nullptr ? real : path;
    std::free(real);
    return resolved;
  }
  std::string target_, folder_, name_;
  Descriptor descriptor_{-1};
};

}  // namespace

Proof SaveAs(Draft& draft, const std::string& path, const RecordDefinitions& definitions, bool force) {
  Beside file(path);
  Proof proof = WriteProven(draft, file.Get(), file.Name(), definitions);
  if (proof.fault.empty() && (proof.errors.empty() || force)) file.Rename();
  return proof;
}

}  // namespace core
