// Commands that take many files.
#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "tools/orbntf/tool.h"

namespace tool {

struct BatchOptions {
  std::vector<std::string> paths;
  bool recursive = false, keepEnding = false;
  unsigned jobs = 1;
};
/// Adds -r and --jobs to a command.
void AddBatchSwitches(const Command& command, BatchOptions& options);
/// Adds FILE… and these to a command.
void AddBatchOptions(const Command& command, BatchOptions& options);
/// Adds --keep-ending to one that writes a file for each.
void AddKeepEnding(const Command& command, BatchOptions& options);

/// A file to work on and its name below the folder it was found in; or why it cannot be worked on.
struct BatchFile {
  std::string path, name;
  std::string problem = {};
};
/// The files named, and with -r the NITF and NSIF files of the folders named, by name. Folders that
/// cannot be read, and files with an ending of the format that are none, are there with their problem.
std::vector<BatchFile> FilesOf(const BatchOptions& options);

/// Texts around what the files print, and what stands for a file that printed nothing whole.
struct BatchFrame {
  std::string before = {}, between = {}, after = {};
  std::function<std::string(const BatchFile& file, const std::string& words)> failure = {};
};
/// Does `work` for one file and prints what it has to say to `out`; the exit code.
using FileWork = std::function<int(const BatchFile& file, std::FILE* out)>;

/// What came of a file.
struct BatchResult {
  const BatchFile& file;
  int code = 0;                  ///< the exit code
  std::FILE* printed = nullptr;  ///< what it printed, from its start; null for nothing
  std::string problem = {};      ///< why it printed nothing whole; empty when it did

  /// All that it printed.
  std::string Text() const;
};
/// Does the work for every file, in several processes where that is asked for, goes on after one that
/// fails and gives the results in the order of the files. With several files a last line on standard
/// error counts them; on a terminal a line shows how far it is. The exit code is the greatest of all, and
/// a failure without any file.
int CollectBatch(const std::string& command, const BatchOptions& options,
                 const std::vector<BatchFile>& files, const FileWork& work,
                 const std::function<void(const BatchResult&)>& take);
/// The path of the one file that there is. ReadError for its problem.
const std::string& OnlyPath(const std::vector<BatchFile>& files);

/// The same, and prints the texts within their frame.
int RunBatch(const std::string& command, const BatchOptions& options, const std::vector<BatchFile>& files,
             const BatchFrame& frame, const FileWork& work);

/// A batch that writes a file for each into a folder: their names, which are held against one another and
/// against every input before the first is written.
class BatchOutputs {
 public:
  /// `ending` is that of the outputs, "" for the inputs' own.
  BatchOutputs(const BatchOptions& options, const std::string& folder, const std::string& ending)
      : options_(options), folder_(folder), ending_(ending) {}
  /// What speaks against writing; empty for nothing.
  std::string Problem(const std::vector<BatchFile>& files) const;
  /// A file's name in the folder.
  std::string NameOf(const BatchFile& file) const;
  /// RunBatch with the name of each output, whose folders are made; the files reach the disk together.
  int Run(const std::string& command, const std::vector<BatchFile>& files,
          const std::function<int(const BatchFile& file, const std::string& output)>& work) const;

 private:
  const BatchOptions& options_;
  std::string folder_, ending_;
};

}  // namespace tool
