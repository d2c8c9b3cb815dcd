// orbntf: shows, renders and edits NITF files.
#include <cstdio>
#include <new>

#include "hostkit/hostkit.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/tool.h"

namespace {

int Run(int argc, char** argv) {
  CLI::App app("Shows, renders and edits NITF 2.1 files");
  app.require_subcommand(1);
  app.set_version_flag("--version", &tool::VersionText);
  uint64_t maxPixels = 0;
  app.add_option("--max-pixels", maxPixels, "refuse bitmaps of more pixels than this");
  tool::Work work;
  tool::AddInfo(app, work);
  tool::AddRender(app, work);
  tool::AddText(app, work);
  tool::AddGraphic(app, work);
  tool::AddCopy(app, work);
  tool::AddSet(app, work);
  tool::AddComposing(app, work);
  tool::AddCompletion(app, work);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? tool::kExitOk : tool::kExitUsage;
  }
  HostkitSetMaxPixels(maxPixels);
  return work();
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
