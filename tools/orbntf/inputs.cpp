#include "tools/orbntf/inputs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <memory>

#include "hostkit/hostkit.h"
#include "tools/orbntf/output/output.h"

namespace tool {
namespace {

constexpr size_t kPiece = 256 << 10;

// Standard input as a file; it can be read once.
std::unique_ptr<TemporaryFile>& StandardInput() {
  static std::unique_ptr<TemporaryFile> file;
  return file;
}

std::string TakeStandardInput() {
  std::unique_ptr<TemporaryFile>& held = StandardInput();
  if (held != nullptr) return held->Path();
  auto file = std::make_unique<TemporaryFile>();
  std::error_code error;
  const std::string folder = std::filesystem::temp_directory_path(error).string();
  if (error || !file->Make(folder)) throw ReadError("-", WordsOfErrno(errno));
  const Descriptor out(open(file->Path().c_str(), O_WRONLY | O_CLOEXEC));
  std::vector<char> piece(kPiece);
  for (;;) {
    const ssize_t got = Restarted([&] { return read(STDIN_FILENO, piece.data(), piece.size()); });
    if (got < 0 || out.Get() < 0) throw ReadError("-", WordsOfErrno(errno));
    if (got == 0) break;
    if (!WriteAll(out.Get(), piece.data(), static_cast<size_t>(got)))
      throw ReadError("-", "it does not fit into a temporary file: " + WordsOfErrno(errno));
  }
  held = std::move(file);
  return held->Path();
}

}  // namespace

std::string TakeInput(const std::string& name) {
  if (name == "-") return TakeStandardInput();
  struct stat status;
  const bool isOther =
      stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
  if (isOther) throw ReadError(name, "is no regular file; - reads standard input");
  return name;
}

std::string InputName(const std::string& path) {
  const auto& held = StandardInput();
  return held != nullptr && held->Path() == path ? "standard input" : path;
}

void RequireHostReads(const std::string& path) {
  if (const int32_t error = HostkitReadError(); error != 0)
    throw ReadError(path, "cannot be read: " + WordsOfErrno(error));
}

Inputs::Inputs(const std::vector<std::string>& paths) {
  for (const std::string& path : paths) Add(path);
}

void Inputs::Add(const std::string& path) {
  const auto identity = core::IdentityOf(path);
  if (!identity) return;
  identities_.insert(std::lower_bound(identities_.begin(), identities_.end(), *identity), *identity);
}

bool Inputs::Hold(const std::string& output) const {
  if (output == "-") return false;
  const auto identity = core::IdentityOf(output);
  return identity && std::binary_search(identities_.begin(), identities_.end(), *identity);
}

}  // namespace tool
