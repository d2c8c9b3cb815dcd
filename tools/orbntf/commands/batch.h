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
  bool recursive = false;
  unsigned jobs = 1;
};
/// Adds FILE…, -r and --jobs to a command.
void AddBatchOptions(CLI::App& command, BatchOptions& options);

/// A file to work on and its name below the folder it was found in.
struct BatchFile {
  std::string path, name;
};
/// The files named, and with -r the NITF and NSIF files of the folders named, by name.
std::vector<BatchFile> FilesOf(const BatchOptions& options);

/// Texts around what the files print.
struct BatchFrame {
  std::string before, between, after;
};
/// Does `work` for one file and prints what it has to say to `out`; the exit code.
using FileWork = std::function<int(const BatchFile& file, std::FILE* out)>;

/// Does the work for every file, in several processes where that is asked for, and goes on after one that
/// fails. What they print comes in the order of the files. With several files a last line on standard
/// error counts them; on a terminal a line shows how far it is. The exit code is the greatest of all.
int RunBatch(const std::string& command, const BatchOptions& options, const std::vector<BatchFile>& files,
             const BatchFrame& frame, const FileWork& work);

/// A file's name in an output folder with another ending, or its own; folders on the way are made.
std::string OutputNameIn(const std::string& folder, const BatchFile& file, const std::string& ending);
/// A name that two files would be written to; empty when there is none.
std::string DoubledName(const std::string& folder, const std::vector<BatchFile>& files,
                        const std::string& ending);

}  // namespace tool
