// orbntf replace and recompress: other data in the place of a segment's.
#include "core/edit/add.h"
#include "core/edit/recompress.h"
#include "core/format/words.h"
#include "tools/orbntf/commands/edit_file.h"
#include "tools/orbntf/commands/store_options.h"
#include "tools/orbntf/inputs.h"

namespace tool {
namespace {

struct ReplaceOptions {
  std::string file, part, output, level;
  StoreWords store;
  EditOptions edit;
};

void Tell(const std::string& command, const std::string& file, const std::vector<std::string>& notes) {
  for (const std::string& note : notes)
    std::fprintf(stderr, "orbntf: %s: %s: %s\n", command.c_str(), Printable(InputName(file)).c_str(),
                 note.c_str());
}

int RunReplace(const Command& command, ReplaceOptions& options) {
  StoreOptions store;
  store.way = StoreOptions::Way::Jpeg;
  if (const std::string problem = StoreOptionsOf(command, options.store, store); !problem.empty())
    return Refuse("replace", problem);
  const size_t equals = options.part.find("=@");
  if (equals == std::string::npos)
    return Refuse("replace", "takes PART=@FILE: image:0=@a.png, text:1=@b.txt");
  const std::string part = options.part.substr(0, equals),
                    path = TakeInput(options.part.substr(equals + 2));
  options.file = TakeInput(options.file);
  if (Inputs({options.file, path}).Hold(options.output))
    return Refuse("replace", "the output is an input; give another name");
  return Edited("replace", options.file, [&] {
    const std::unique_ptr<Survey> survey = OpenToEdit("replace", options.file, options.edit.mend);
    Draft draft = DraftOf(*survey, options.edit.mend);
    DraftPart& named = NamedPart(draft, part);
    const WorkAccount account(path);
    if (named.kind == PartKind::Image) {
      std::vector<std::string> notes;
      std::vector<StoredImage> images =
          StorePicture(draft, path, ScratchFolderOf(options.output), store, notes);
      Tell("replace", path, notes);
      if (images.size() != 1)
        RefuseArgument("the picture is larger than one segment: remove and append it");
      ReplaceImage(draft, draft.IndexOf(named), std::move(images[0]), true);
    } else if (named.kind == PartKind::File) {
      RefuseArgument("file: not image:N, graphic:N, text:N or data:N");
    } else {
      ReplaceData(named, ReadWhole(path));
    }
    ApplyLevel("replace", draft, options.level, true);
    return SaveDraft("replace", draft, options.output, options.edit);
  });
}

int RunRecompress(const Command& command, ReplaceOptions& options) {
  StoreOptions store;
  if (const std::string problem = StoreOptionsOf(command, options.store, store); !problem.empty())
    return Refuse("recompress", problem);
  if (store.isAsIs) return Refuse("recompress", "--as-is stores a file's stream; here there is none");
  options.file = TakeInput(options.file);
  if (Inputs({options.file}).Hold(options.output))
    return Refuse("recompress", "the output is the input; give another name");
  return Edited("recompress", options.file, [&] {
    const std::unique_ptr<Survey> survey = OpenToEdit("recompress", options.file, options.edit.mend);
    Draft draft = DraftOf(*survey, options.edit.mend);
    const DraftPart& named = NamedPart(draft, options.part);
    if (named.kind != PartKind::Image) RefuseArgument(options.part + ": is no image");
    const WorkAccount account(options.file);
    std::vector<std::string> notes;
    Recompress(draft, draft.IndexOf(named), ScratchFolderOf(options.output), store, notes);
    Tell("recompress", options.file, notes);
    ApplyLevel("recompress", draft, options.level, true);
    return SaveDraft("recompress", draft, options.output, options.edit);
  });
}

using Run = int (*)(const Command& command, ReplaceOptions& options);

void AddOne(const Command& top, CommandLine& line, const char* name, const char* description,
            const char* part, Run run) {
  auto options = std::make_shared<ReplaceOptions>();
  const Command command = top.Add(name, description);
  command.Take("FILE", options->file, "file to change").Required();
  command.Take("PART", options->part, part).Required();
  command.Take("-o,--output", options->output, "file to write").Required();
  AddStoreOptions(command, options->store);
  AddLevelOption(command, options->level);
  AddEditOptions(command, options->edit);
  command.Runs(line.work, [options, command, name, run] {
    try {
      return run(command, *options);
    } catch (const PictureError& error) {
      return Edited(name, options->file, [&]() -> int { RefuseFile(error.what()); });
    }
  });
}

}  // namespace

void AddReplacing(const Command& top, CommandLine& line) {
  AddOne(top, line, "replace", "Put other data in the place of a segment's",
         "PART=@FILE: image:N, graphic:N, text:N or data:N", &RunReplace);
  AddOne(top, line, "recompress", "Store the samples of an image in another way", "image:N",
         &RunRecompress);
}

}  // namespace tool
