// orbntf copy: a file under another name, as it is or as the module writes it.
#include "tools/orbntf/commands/batch.h"
#include "tools/orbntf/commands/edit_file.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/output/saving.h"

namespace tool {
namespace {

struct CopyOptions {
  BatchOptions batch;
  std::string output, folder;
  bool isModule = false, mend = false;
};

int CopyFile(const CopyOptions& options, const std::string& file, const std::string& output) {
  if (!options.isModule) {
    return Edited("copy", file, [&] {
      if (Inputs({file}).Hold(output))
        return Refuse("copy", "the output is the input; give another name");
      const std::unique_ptr<Survey> survey = OpenToEdit("copy", file, options.mend);
      Draft draft = DraftOf(*survey, options.mend);
      return SaveDraft("copy", draft, output, {});
    });
  }
  Document document;
  if (const int code = OpenDocument("copy", document, file); code != kExitOk) return code;
  return SaveAs("copy", document, file, output);
}

int RunCopy(const CopyOptions& options) {
  if (options.output.empty() == options.folder.empty()) return Refuse("copy", "give either -o or -O");
  const std::vector<BatchFile> files = FilesOf(options.batch);
  if (options.folder.empty()) {
    if (files.size() != 1) return Refuse("copy", "several files go into a folder: -O");
    return CopyFile(options, OnlyPath(files), options.output);
  }
  return BatchOutputs(options.batch, options.folder, "")
      .Run("copy", files, [&](const BatchFile& file, const std::string& output) {
        return CopyFile(options, file.path, output);
      });
}

}  // namespace

void AddCopy(const Command& top, CommandLine& line) {
  auto options = std::make_shared<CopyOptions>();
  const Command command = top.Add("copy", "Save a file under another name, byte by byte");
  AddBatchOptions(command, options->batch);
  command.Take("-o,--output", options->output, "file to write, or - for standard output");
  command.Take("-O,--output-folder", options->folder, "write a copy of each file there");
  command.Flag("--module", options->isModule, "open and save it as the module does");
  command.Flag("--mend", options->mend, "set lengths of the file header that are wrong, and say which");
  command.Runs(line.work, [options] { return RunCopy(*options); });
}

}  // namespace tool
