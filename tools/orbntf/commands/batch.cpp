#include "tools/orbntf/commands/batch.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <new>

#include "core/format/words.h"
#include "hostkit/hostkit.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/output/output.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

// Whether a file begins as one of the format; throws what reading it throws.
bool IsNitf(const std::string& path) {
  const FileBytes file(path);
  if (!file.IsOpen()) throw ReadError(path, WordsOfErrno(errno));
  const std::string mark = file.At(0, 4);
  return mark == "NITF" || mark == "NSIF";
}

bool HasNitfEnding(const fs::path& path) {
  std::string ending = path.extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending == ".ntf" || ending == ".nitf" || ending == ".nsf";
}

// Files below a folder, and what of it cannot be looked into.
class Finder {
 public:
  explicit Finder(const std::string& folder) : folder_(folder) {}
  std::vector<BatchFile> Find() {
    Look(folder_);
    std::sort(found_.begin(), found_.end(), [](const auto& a, const auto& b) { return a.path < b.path; });
    return std::move(found_);
  }

 private:
  void Look(const fs::path& folder) {
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      std::error_code ignored;
      const fs::path& path = entry->path();
      if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
        Look(path);
      } else if (entry->is_regular_file(ignored)) {
        Take(path);
      }
    }
    if (error) Add(folder, WordsOfErrno(error.value()));
  }
  void Take(const fs::path& path) {
    try {
      if (IsNitf(path.string())) {
        Add(path, "");
      } else if (HasNitfEnding(path)) {
        Add(path, "begins with neither NITF nor NSIF");
      }
    } catch (const ReadError& error) {
      Add(path, error.what());
    }
  }
  void Add(const fs::path& path, const std::string& problem) {
    found_.push_back({path.string(), path.lexically_relative(folder_).string(), problem});
  }

  fs::path folder_;
  std::vector<BatchFile> found_;
};

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

// A file's work, whatever it throws.
int WorkOn(const std::string& command, const BatchFile& file, std::FILE* out, const FileWork& work) {
  (void)HostkitReadError();
  try {
    if (!file.problem.empty()) throw ReadError(file.path, file.problem);
    return work(file, out);
  } catch (const ReadError& error) {
    return ReportUnread(command, error);
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "orbntf: %s: %s: status -1: out of memory\n", command.c_str(),
                 Printable(InputName(file.path)).c_str());
  }
  return kExitStatus;
}

// A file's work, which prints into a scratch file: what it printed shows only when it is whole.
class Job {
 public:
  Job(const std::string& command, const BatchFile& file, const FileWork& work, bool apart)
      : command_(command), file_(file), out_(std::tmpfile()) {
    if (out_ == nullptr) return;
    if (!apart) {
      code_ = WorkOn(command_, file_, out_.get(), work);
      return;
    }
    (void)std::fflush(nullptr);
    if (!process_.Fork()) return;
    // Nothing may leave this process but by its end: what the caller holds is the parent's.
    int code = WorkOn(command_, file_, out_.get(), work);
    if (std::fflush(out_.get()) != 0) code = kExitStatus;
    _exit(code);
  }
  /// Waits for the end; what came of the file.
  BatchResult Finish() {
    BatchResult result = {file_, code_};
    if (process_.Started()) {
      const int status = process_.Wait();
      if (!WIFEXITED(status))
        return Failed(std::string("its process was ended by a signal: ") + strsignal(WTERMSIG(status)));
      result.code = WEXITSTATUS(status);
    } else if (code_ < 0) {
      return Failed("no process could be started for it");
    }
    if (std::fseek(out_.get(), 0, SEEK_END) == 0 && std::ftell(out_.get()) != 0) {
      result.printed = out_.get();
      std::rewind(result.printed);
    } else if (result.code != kExitOk) {
      result.problem = "it could not be worked on";
    }
    return result;
  }

 private:
  BatchResult Failed(const std::string& words) const {
    std::fprintf(stderr, "orbntf: %s: %s: %s\n", command_.c_str(),
                 Printable(InputName(file_.path)).c_str(), words.c_str());
    return {file_, kExitStatus, nullptr, words};
  }

  const std::string& command_;
  const BatchFile& file_;
  std::unique_ptr<std::FILE, CloseFile> out_;
  ChildProcess process_;
  int code_ = -1;
};

template <class Take>
void ForEachPiece(const BatchResult& result, Take take) {
  char piece[65536];
  size_t count = 1;
  while (result.printed != nullptr && count != 0) {
    count = std::fread(piece, 1, sizeof piece, result.printed);
    take(piece, count);
  }
}

// Counts what came of the files.
class Results {
 public:
  void Take(int code) {
    failed_ += code != kExitOk;
    worst_ = std::max(worst_, code);
  }
  size_t Failed() const { return failed_; }
  int Worst() const { return worst_; }

 private:
  size_t failed_ = 0;
  int worst_ = kExitOk;
};

}  // namespace

std::string BatchResult::Text() const {
  std::string text;
  ForEachPiece(*this, [&](const char* piece, size_t count) { text.append(piece, count); });
  return text;
}

const std::string& OnlyPath(const std::vector<BatchFile>& files) {
  if (!files.front().problem.empty()) throw ReadError(files.front().path, files.front().problem);
  return files.front().path;
}

void AddBatchSwitches(const Command& command, BatchOptions& options) {
  command.Flag("-r,--recursive", options.recursive, "take the NITF files of folders");
  command.Take("--jobs", options.jobs, "work on this many files at once").Within(1, 256);
}

void AddBatchOptions(const Command& command, BatchOptions& options) {
  command.Take("FILE", options.paths, "files, and folders with -r; - for standard input").Required();
  AddBatchSwitches(command, options);
}

void AddKeepEnding(const Command& command, BatchOptions& options) {
  command.Flag("--keep-ending", options.keepEnding, "name outputs a.ntf.png instead of a.png");
}

std::vector<BatchFile> FilesOf(const BatchOptions& options) {
  std::vector<BatchFile> files;
  for (const std::string& path : options.paths) {
    std::error_code error;
    if (options.recursive && fs::is_directory(path, error)) {
      const std::vector<BatchFile> found = Finder(path).Find();
      files.insert(files.end(), found.begin(), found.end());
      continue;
    }
    BatchFile file = {path, path == "-" ? "stdin" : fs::path(path).filename().string()};
    try {
      file.path = TakeInput(path);
    } catch (const ReadError& problem) {
      file.problem = problem.what();
    }
    files.push_back(file);
  }
  return files;
}

int CollectBatch(const std::string& command, const BatchOptions& options,
                 const std::vector<BatchFile>& files, const FileWork& work,
                 const std::function<void(const BatchResult&)>& take) {
  Results results;
  {
    Progress progress(files.size());
    std::deque<std::unique_ptr<Job>> jobs;
    const auto finish = [&] {
      const BatchResult result = jobs.front()->Finish();
      results.Take(result.code);
      take(result);
      jobs.pop_front();
    };
    for (const BatchFile& file : files) {
      progress.Begin(file);
      if (jobs.size() == options.jobs) finish();
      jobs.push_back(std::make_unique<Job>(command, file, work, options.jobs > 1));
    }
    while (!jobs.empty()) finish();
  }
  if (files.empty()) {
    std::fprintf(stderr, "orbntf: %s: no file of the format was found\n", command.c_str());
    return kExitStatus;
  }
  if (files.size() > 1) {
    std::fprintf(stderr, "orbntf: %s: %zu files, %zu failed\n", command.c_str(), files.size(),
                 results.Failed());
  }
  return results.Worst();
}

int RunBatch(const std::string& command, const BatchOptions& options, const std::vector<BatchFile>& files,
             const BatchFrame& frame, const FileWork& work) {
  const auto put = [](const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); };
  put(frame.before);
  bool isFirst = true;
  const int code = CollectBatch(command, options, files, work, [&](const BatchResult& result) {
    if (!isFirst) put(frame.between);
    isFirst = false;
    if (!result.problem.empty() && frame.failure) return put(frame.failure(result.file, result.problem));
    ForEachPiece(result, [](const char* piece, size_t count) { std::fwrite(piece, 1, count, stdout); });
  });
  put(frame.after);
  return code;
}

std::string BatchOutputs::NameOf(const BatchFile& file) const {
  fs::path path = fs::path(folder_) / file.name;
  if (!ending_.empty() && options_.keepEnding) path += ending_;
  if (!ending_.empty() && !options_.keepEnding) path.replace_extension(ending_);
  return path.string();
}

std::string BatchOutputs::Problem(const std::vector<BatchFile>& files) const {
  Inputs inputs;
  for (const BatchFile& file : files) inputs.Add(file.path);
  std::map<std::string, const BatchFile*> names;
  for (const BatchFile& file : files) {
    if (!file.problem.empty()) continue;
    const std::string name = NameOf(file);
    const auto [other, isNew] = names.emplace(name, &file);
    if (!isNew)
      return "two files would be written to " + name + ": " + other->second->path + " and " + file.path +
             (ending_.empty() || options_.keepEnding ? "" : "; --keep-ending may tell them apart");
    if (inputs.Hold(name)) return "an output is an input: " + name;
  }
  return "";
}

int BatchOutputs::Run(const std::string& command, const std::vector<BatchFile>& files,
                      const std::function<int(const BatchFile&, const std::string&)>& work) const {
  if (const std::string problem = Problem(files); !problem.empty()) return Refuse(command, problem);
  SyncTogether together(folder_);
  const int code = RunBatch(command, options_, files, {}, [&](const BatchFile& file, std::FILE*) {
    const std::string output = NameOf(file);
    std::error_code error;
    fs::create_directories(fs::path(output).parent_path(), error);
    return work(file, output);
  });
  if (together.Finish()) return code;
  std::fprintf(stderr, "orbntf: %s: %s: %s\n", command.c_str(), Printable(folder_).c_str(),
               WordsOfErrno(errno).c_str());
  return std::max(code, kExitStatus);
}

}  // namespace tool
