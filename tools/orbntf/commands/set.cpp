// orbntf set: changing header fields and saving.
#include "tools/orbntf/commands/change.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/output/saving.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct SetOptions {
  std::string file, output;
  bool force = false;
  std::vector<std::string> changes;
};

int RunSet(SetOptions& options) {
  options.file = TakeInput(options.file);
  if (Inputs({options.file}).Hold(options.output)) return Refuse("set", "the output is the input");
  Document document;
  if (const int code = OpenDocument("set", document, options.file); code != kExitOk) return code;
  const ChangeContext context = {"set", options.file, options.force};
  Target target;
  for (const std::string& change : options.changes) {
    if (change.find('=') == std::string::npos && ParseTarget(change, target)) continue;
    if (const int code = ApplyChange(context, document, target, change); code != kExitOk) return code;
  }
  return SaveAs("set", document, options.file, options.output);
}

}  // namespace

void AddSet(const Command& top, CommandLine& line) {
  auto options = std::make_shared<SetOptions>();
  const Command command = top.Add("set", "Change header fields and save under another name");
  command.Take("FILE", options->file, "file to change").Required();
  command.Take("-o,--output", options->output, "file to write").Required();
  command.Flag("--force", options->force, "take values that the format does not allow");
  command
      .Take(
          "CHANGE", options->changes,
          "FIELD=VALUE, of the file header or of the segment named before it: image:N, graphic:N, text:N")
      .Required();
  command.Runs(line.work, [options] { return RunSet(*options); });
}

}  // namespace tool
