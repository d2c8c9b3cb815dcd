// orbntf report: pages that tell about files.
#include <algorithm>
#include <cerrno>

#include "core/format/words.h"
#include "core/report/html.h"
#include "core/report/report.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/commands/batch.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/draw_small.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/output/output.h"

namespace tool {
namespace {

struct ReportOptions {
  BatchOptions batch;
  std::string output, folder;
  bool module = false;
  std::unique_ptr<RecordDefinitions> definitions;  // made when the command runs
};

// The version alone: what else --version tells is no affair of a page.
std::string Version() {
  const std::string text = VersionText();
  const std::string line = text.substr(0, text.find('\n'));
  return line.substr(line.find(' ') + 1, line.find(' ', line.find(' ') + 1) - line.find(' ') - 1);
}

int WritePage(const std::string& name, const std::string& page) {
  Output output(name, Output::Way::InOrder);
  errno = 0;
  std::FILE* stream = output.Problem().empty() ? output.Stream() : nullptr;
  const bool written =
      stream != nullptr && std::fwrite(page.data(), 1, page.size(), stream) == page.size();
  if (stream != nullptr && !written && errno != 0) output.NoteFailure();
  return Report("report", name, written && output.Commit() ? ORB_SUCCESS : ORB_SHORT_WRITE,
                output.Problem());
}

// Draws and examines a file; its report goes to `out`.
int ReportFileTo(const ReportOptions& options, const BatchFile& file, const std::string& id,
                 size_t mostBytes, std::FILE* out) {
  ReportedFile reported(file.path, id, *options.definitions);
  if (!reported.survey.file.IsOpen()) return ReportFile("report", file.path, ORB_SHORT_READ);
  const WorkAccount account(file.path);
  LookAtFile(reported, options.module);
  const std::string report = ReportOf(reported, mostBytes);
  return std::fwrite(report.data(), 1, report.size(), out) == report.size() ? kExitOk : kExitStatus;
}

// One page about all files. Those that cannot be read, and those that the page has no room for, are told
// there.
int WriteOne(const ReportOptions& options, const std::vector<BatchFile>& files) {
  constexpr size_t kFrame = 64 << 10, kEntry = 512;  // of the page, and of a file's name in it
  Inputs inputs;
  for (const BatchFile& file : files) inputs.Add(file.path);
  if (inputs.Hold(options.output)) return Refuse("report", "the output is the input; give another name");
  const size_t room = (kMostPageBytes - kFrame) / files.size();
  const size_t most = room - std::min(room, kEntry);
  std::vector<std::string> reports, names;
  size_t taken = kFrame, leftOut = 0;
  const auto work = [&](const BatchFile& file, std::FILE* out) {
    const std::string id = "f" + std::to_string(&file - files.data() + 1);
    return ReportFileTo(options, file, id, most, out);
  };
  const int code = CollectBatch("report", options.batch, files, work, [&](const BatchResult& result) {
    const std::string& name = result.file.name;
    std::string text = result.Text();
    if (text.empty()) text = Tag("p", "This file could not be read.", "class=\"soft\"");
    if (taken + text.size() + kEntry > kMostPageBytes) {
      ++leftOut;
      return;
    }
    taken += text.size() + kEntry;
    reports.push_back(text);
    names.push_back(name);
  });
  const std::string title = files.size() == 1 ? files[0].name : std::to_string(files.size()) + " files";
  if (leftOut != 0) {
    reports.push_back(Tag("p", Counted(leftOut, "more file") + " had no room in this page."));
    names.push_back("Left out");
    std::fprintf(stderr, "orbntf: report: %s: no room for %zu files; -O writes a page for each\n",
                 Printable(options.output).c_str(), leftOut);
  }
  if (reports.empty()) return code;
  const int written = WritePage(options.output, PageOf(Version(), title, reports, names));
  return std::max({code, written, leftOut != 0 ? kExitStatus : kExitOk});
}

int RunReport(ReportOptions& options, const std::string& folder) {
  if (const std::string problem = TakeDefinitions(folder, options.definitions); !problem.empty())
    return Refuse("report", problem);
  if (options.output.empty() == options.folder.empty()) return Refuse("report", "give either -o or -O");
  const std::vector<BatchFile> files = FilesOf(options.batch);
  if (files.empty()) return Refuse("report", "there is no file to report of");
  if (options.folder.empty()) {
    // Of one file alone no page is written that says no more than that it cannot be read.
    if (files.size() == 1 && !Survey(OnlyPath(files)).file.IsOpen())
      return ReportFile("report", OnlyPath(files), ORB_SHORT_READ);
    return WriteOne(options, files);
  }
  return BatchOutputs(options.batch, options.folder, ".html")
      .Run("report", files, [&](const BatchFile& file, const std::string& output) {
        ReportedFile reported(file.path, "f1", *options.definitions);
        if (!reported.survey.file.IsOpen()) return ReportFile("report", file.path, ORB_SHORT_READ);
        const WorkAccount account(file.path);
        LookAtFile(reported, options.module);
        return WritePage(output, PageOf(Version(), file.name, {ReportOf(reported)}, {file.name}));
      });
}

}  // namespace

void AddReport(const Command& top, CommandLine& line) {
  auto options = std::make_shared<ReportOptions>();
  const Command command =
      top.Add("report", "Write a page that tells what is in files, where, and what is wrong");
  AddBatchOptions(command, options->batch);
  AddKeepEnding(command, options->batch);
  command.Take("-o,--output", options->output, "REPORT.html, or - for standard output");
  command.Take("-O,--output-folder", options->folder, "write a page for each file there");
  command.Flag("--module", options->module, "show the module's picture beside the standard's");
  command.Runs(line.work, [options, &line] { return RunReport(*options, line.records); });
}

}  // namespace tool
