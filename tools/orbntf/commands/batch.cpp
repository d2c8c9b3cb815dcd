#include "tools/orbntf/commands/batch.h"

#include <CLI/CLI.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <deque>
#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <set>

#include "hostkit/hostkit.h"
#include "tools/orbntf/inspect/words.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

bool IsNitf(const fs::path& path) {
  char mark[4] = {};
  std::ifstream(path, std::ios::binary).read(mark, sizeof mark);
  const std::string_view text(mark, sizeof mark);
  return text == "NITF" || text == "NSIF";
}

void AddFilesBelow(const std::string& folder, std::vector<BatchFile>& files) {
  std::vector<BatchFile> found;
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    std::error_code ignored;
    if (!entry->is_regular_file(ignored) || !IsNitf(entry->path())) continue;
    const std::string path = entry->path().string();
    found.push_back({path, entry->path().lexically_relative(folder).string()});
  }
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.path < b.path; });
  files.insert(files.end(), found.begin(), found.end());
}

// The line that shows how far a batch is, on a terminal.
class Progress {
 public:
  explicit Progress(size_t count) : count_(count), shown_(count > 1 && isatty(STDERR_FILENO) != 0) {}
  ~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  void Begin(const BatchFile& file) {
    ++begun_;
    if (shown_)
      std::fprintf(stderr, "\r\033[K%zu of %zu: %s", begun_, count_, Printable(file.name).c_str());
  }

 private:
  size_t count_, begun_ = 0;
  bool shown_;
};

struct CloseFile {
  void operator()(std::FILE* file) const { (void)std::fclose(file); }
};

// A file's work in a process of its own, which prints into a scratch file.
class Job {
 public:
  Job(const BatchFile& file, const FileWork& work) : out_(std::tmpfile()) {
    if (out_ == nullptr) return;
    (void)std::fflush(nullptr);
    process_ = fork();
    if (process_ != 0) return;
    // Nothing may leave this process but by its end: what the caller holds is the parent's.
    int code = kExitStatus;
    try {
      code = work(file, out_.get());
    } catch (const std::bad_alloc&) {
      std::fputs("orbntf: status -1: out of memory\n", stderr);
    }
    if (std::fflush(out_.get()) != 0) code = kExitStatus;
    _exit(code);
  }
  /// Waits for the end and prints; the exit code.
  int Finish() {
    int status = 0;
    if (process_ <= 0) {
      std::fputs("orbntf: no process could be started for a file\n", stderr);
      return kExitStatus;
    }
    while (waitpid(process_, &status, 0) < 0) {
      if (errno != EINTR) return kExitStatus;
    }
    std::rewind(out_.get());
    char piece[65536];
    for (size_t count; (count = std::fread(piece, 1, sizeof piece, out_.get())) != 0;)
      (void)std::fwrite(piece, 1, count, stdout);
    return WIFEXITED(status) ? WEXITSTATUS(status) : kExitStatus;
  }

 private:
  std::unique_ptr<std::FILE, CloseFile> out_;
  pid_t process_ = -1;
};

// Takes the exit codes and prints what stands between the files.
class Results {
 public:
  explicit Results(const BatchFrame& frame) : frame_(frame) {}
  void Begin() const {
    if (done_ != 0) std::fputs(frame_.between.c_str(), stdout);
  }
  void Take(int code) {
    ++done_;
    failed_ += code != kExitOk;
    worst_ = std::max(worst_, code);
  }
  size_t Failed() const { return failed_; }
  int Worst() const { return worst_; }

 private:
  const BatchFrame& frame_;
  size_t done_ = 0, failed_ = 0;
  int worst_ = kExitOk;
};

}  // namespace

void AddBatchOptions(CLI::App& command, BatchOptions& options) {
  command.add_option("FILE", options.paths, "files, and folders with -r")->required();
  command.add_flag("-r,--recursive", options.recursive, "take the NITF files of folders");
  command.add_option("--jobs", options.jobs, "work on this many files at once")
      ->check(CLI::Range(1, 256));
}

std::vector<BatchFile> FilesOf(const BatchOptions& options) {
  std::vector<BatchFile> files;
  for (const std::string& path : options.paths) {
    std::error_code error;
    if (options.recursive && fs::is_directory(path, error)) {
      AddFilesBelow(path, files);
    } else {
      files.push_back({path, fs::path(path).filename().string()});
    }
  }
  return files;
}

int RunBatch(const std::string& command, const BatchOptions& options, const std::vector<BatchFile>& files,
             const BatchFrame& frame, const FileWork& work) {
  std::fputs(frame.before.c_str(), stdout);
  Results results(frame);
  {
    Progress progress(files.size());
    std::deque<std::unique_ptr<Job>> jobs;
    const auto finish = [&] {
      results.Begin();
      results.Take(jobs.front()->Finish());
      jobs.pop_front();
    };
    for (const BatchFile& file : files) {
      progress.Begin(file);
      if (options.jobs == 1) {
        results.Begin();
        results.Take(work(file, stdout));
        HostkitLiftWorkLimit();
        continue;
      }
      if (jobs.size() == options.jobs) finish();
      jobs.push_back(std::make_unique<Job>(file, work));
    }
    while (!jobs.empty()) finish();
  }
  std::fputs(frame.after.c_str(), stdout);
  if (files.size() > 1) {
    std::fprintf(stderr, "orbntf: %s: %zu files, %zu failed\n", command.c_str(), files.size(),
                 results.Failed());
  }
  return results.Worst();
}

std::string OutputNameIn(const std::string& folder, const BatchFile& file, const std::string& ending) {
  fs::path path = fs::path(folder) / file.name;
  if (!ending.empty()) path.replace_extension(ending);
  std::error_code error;
  fs::create_directories(path.parent_path(), error);
  return path.string();
}

std::string DoubledName(const std::string& folder, const std::vector<BatchFile>& files,
                        const std::string& ending) {
  std::set<std::string> names;
  for (const BatchFile& file : files) {
    fs::path name = file.name;
    if (!ending.empty()) name.replace_extension(ending);
    if (!names.insert(name.string()).second) return (fs::path(folder) / name).string();
  }
  return "";
}

}  // namespace tool
