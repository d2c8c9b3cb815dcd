// orbntf copy: opening and saving.
#include "tools/orbntf/commands/batch.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/output/saving.h"

namespace tool {
namespace {

struct CopyOptions {
  BatchOptions batch;
  std::string output, folder;
};

int CopyFile(const std::string& file, const std::string& output) {
  Document document;
  if (const int code = OpenDocument("copy", document, file); code != kExitOk) return code;
  return SaveAs("copy", document, file, output);
}

int RunCopy(const CopyOptions& options) {
  if (options.output.empty() == options.folder.empty()) return Refuse("copy", "give either -o or -O");
  const std::vector<BatchFile> files = FilesOf(options.batch);
  if (options.folder.empty()) {
    if (files.size() != 1) return Refuse("copy", "several files go into a folder: -O");
    return CopyFile(OnlyPath(files), options.output);
  }
  return BatchOutputs(options.batch, options.folder, "")
      .Run("copy", files,
           [](const BatchFile& file, const std::string& output) { return CopyFile(file.path, output); });
}

}  // namespace

void AddCopy(const Command& top, CommandLine& line) {
  auto options = std::make_shared<CopyOptions>();
  const Command command = top.Add("copy", "Open a file and save it under another name");
  AddBatchOptions(command, options->batch);
  command.Take("-o,--output", options->output, "file to write, or - for standard output");
  command.Take("-O,--output-folder", options->folder, "write a copy of each file there");
  command.Runs(line.work, [options] { return RunCopy(*options); });
}

}  // namespace tool
