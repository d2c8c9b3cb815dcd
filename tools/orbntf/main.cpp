// orbntf: shows, renders and edits NITF files.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <new>

#include "hostkit/hostkit.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/tool.h"

namespace {

int Run(int argc, char** argv) {
  CLI::App app;
  tool::CommandLine line;
  tool::DescribeCommandLine(app, line);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? tool::kExitOk : tool::kExitUsage;
  }
  HostkitSetMaxPixels(line.maxPixels);
  media::SetMaxPixels(line.maxPixels);
  try {
    return line.work();
  } catch (const tool::ReadError& error) {
    return tool::ReportUnread(app.get_subcommands().front()->get_name(), error);
  }
}

}  // namespace

int main(int argc, char** argv) {
  tool::HoldStandardDescriptors();
  tool::CatchSignals();
  tool::CollectMessages();
  int code = tool::kExitStatus;
  try {
    code = Run(argc, argv);
  } catch (const std::bad_alloc&) {
    // Nothing is left to make a sentence with.
    std::fputs("orbntf: status -1: out of memory\n", stderr);
  }
  std::cout.flush();
  if (!std::cout || !tool::CloseStandardOutput()) {
    std::fputs("orbntf: standard output: not all of it was written\n", stderr);
    if (code == tool::kExitOk) code = tool::kExitStatus;
  }
  return code;
}
