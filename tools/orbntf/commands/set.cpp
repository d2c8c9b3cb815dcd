// orbntf set: changing header fields and saving.
#include <CLI/CLI.hpp>

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

void AddSet(CLI::App& app, Work& work) {
  auto options = std::make_shared<SetOptions>();
  CLI::App* command = app.add_subcommand("set", "Change header fields and save under another name");
  command->add_option("FILE", options->file, "file to change")->required();
  command->add_option("-o,--output", options->output, "file to write")->required();
  command->add_flag("--force", options->force, "take values that the format does not allow");
  command
      ->add_option(
          "CHANGE", options->changes,
          "FIELD=VALUE, of the file header or of the segment named before it: image:N, graphic:N, text:N")
      ->required();
  command->callback([&work, options] { work = [options] { return RunSet(*options); }; });
}

}  // namespace tool
