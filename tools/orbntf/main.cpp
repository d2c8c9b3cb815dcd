// orbntf: shows, renders and edits NITF files.
#include <cstdio>
#include <new>

#include "hostkit/hostkit.h"
#include "tools/orbntf/tool.h"

namespace {

int Run(int argc, char** argv) {
  CLI::App app("Shows, renders and edits NITF 2.1 files");
  app.require_subcommand(1);
  uint64_t maxPixels = 0;
  app.add_option("--max-pixels", maxPixels, "refuse bitmaps of more pixels than this");
  tool::Work work;
  tool::AddInfo(app, work);
  tool::AddRender(app, work);
  tool::AddEdit(app, work);
  tool::AddComposing(app, work);
  tool::AddContent(app, work);
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
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {
    // Nothing is left to make a sentence with.
    std::fputs("orbntf: status -1: out of memory\n", stderr);
    return tool::kExitStatus;
  }
}
