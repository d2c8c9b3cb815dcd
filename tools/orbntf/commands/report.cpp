// orbntf report: pages that tell about files.
#include <CLI/CLI.hpp>

#include <cerrno>

#include "orbntf/orbntf.h"
#include "tools/orbntf/commands/batch.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/inspect/words.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/report/report.h"

namespace tool {
namespace {

struct ReportOptions {
  BatchOptions batch;
  std::string output, folder;
  std::unique_ptr<RecordDefinitions> definitions;  // made when the command runs
};

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

std::string NameOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

// One page about all files.
int WriteOne(const ReportOptions& options, const std::vector<BatchFile>& files) {
  std::vector<std::string> reports, names;
  for (const BatchFile& file : files) {
    if (IsSameFile(file.path, options.output)) return Refuse("report", "the output is the input");
    ReportedFile reported(file.path, "f" + std::to_string(reports.size() + 1), *options.definitions);
    if (!reported.survey.file.IsOpen()) return ReportFile("report", file.path, ORB_SHORT_READ);
    reports.push_back(ReportOf(reported));
    names.push_back(NameOf(file.path));
  }
  const std::string title = names.size() == 1 ? names[0] : std::to_string(names.size()) + " files";
  return WritePage(options.output, PageOf(title, reports, names));
}

int RunReport(ReportOptions& options, const std::string& folder) {
  if (const std::string problem = TakeDefinitions(folder, options.definitions); !problem.empty())
    return Refuse("report", problem);
  if (options.output.empty() == options.folder.empty()) return Refuse("report", "give either -o or -O");
  const std::vector<BatchFile> files = FilesOf(options.batch);
  if (files.empty()) return Refuse("report", "there is no file to report of");
  if (options.folder.empty()) return WriteOne(options, files);
  if (const std::string doubled = DoubledName(options.folder, files, ".html"); !doubled.empty())
    return Refuse("report", "two files would be written to " + doubled);
  return RunBatch("report", options.batch, files, {}, [&](const BatchFile& file, std::FILE*) {
    ReportedFile reported(file.path, "f1", *options.definitions);
    if (!reported.survey.file.IsOpen()) return ReportFile("report", file.path, ORB_SHORT_READ);
    const std::string report = ReportOf(reported), name = NameOf(file.path);
    return WritePage(OutputNameIn(options.folder, file, ".html"), PageOf(name, {report}, {name}));
  });
}

}  // namespace

void AddReport(CLI::App& app, Work& work) {
  auto options = std::make_shared<ReportOptions>();
  CLI::App* command =
      app.add_subcommand("report", "Write a page that tells what is in files, where, and what is wrong");
  AddBatchOptions(*command, options->batch);
  command->add_option("-o,--output", options->output, "REPORT.html, or - for standard output");
  command->add_option("-O,--output-folder", options->folder, "write a page for each file there");
  command->callback([&app, &work, options] {
    work = [&app, options] { return RunReport(*options, RecordFolder(app)); };
  });
}

}  // namespace tool
