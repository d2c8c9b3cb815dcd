// orbntf: shows, renders and edits NITF files.
#include <cstdio>
#include <iostream>
#include <new>

#include "hostkit/hostkit.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/output/limits.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/tool.h"

namespace {

int Run(int argc, char** argv) {
  tool::CommandLine line;
  tool::Parser parser(line, &tool::DescribeCommandLine, &tool::VersionText);
  if (const std::optional<int> code = parser.Parse(argc, argv)) return *code;
  if (const std::string problem = tool::TakeLimits(line.seconds, line.memory); !problem.empty())
    return tool::Refuse(parser.Given(), problem);
  HostkitSetMaxPixels(line.maxPixels);
  media::SetMaxPixels(line.maxPixels);
  try {
    return line.work();
  } catch (const tool::ReadError& error) {
    return tool::ReportUnread(parser.Given(), error);
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
