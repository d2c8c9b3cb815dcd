// orbntf remove and merge: segments that go, and segments of several files in one.
#include "core/edit/segments.h"
#include "core/format/words.h"
#include "tools/orbntf/commands/edit_file.h"
#include "tools/orbntf/inputs.h"

namespace tool {
namespace {

struct RemoveOptions {
  std::string file, output, level;
  std::vector<std::string> parts;
  EditOptions edit;
};

int RunRemove(RemoveOptions& options) {
  options.file = TakeInput(options.file);
  if (Inputs({options.file}).Hold(options.output))
    return Refuse("remove", "the output is the input; give another name");
  return Edited("remove", options.file, [&] {
    const std::unique_ptr<Survey> survey = OpenToEdit("remove", options.file, options.edit.mend);
    Draft draft = DraftOf(*survey, options.edit.mend);
    // Numbers are those of the file as it is: the last ones go first.
    std::set<std::pair<PartKind, size_t>> gone;
    for (const std::string& part : options.parts) {
      const DraftPart& named = NamedPart(draft, part);
      gone.emplace(named.kind, draft.IndexOf(named));
    }
    std::set<const SurveyedPart*> origins;
    for (const auto& [kind, index] : gone) origins.insert(draft.Find(kind, index)->Origin());
    for (const SurveyedPart* origin : origins) {
      // One may have gone with what it belonged to.
      for (const DraftPart& part : draft.segments) {
        if (part.Origin() != origin) continue;
        RemoveSegment(draft, part.kind, draft.IndexOf(part));
        break;
      }
    }
    ApplyLevel("remove", draft, options.level, false);
    return SaveDraft("remove", draft, options.output, options.edit);
  });
}

struct MergeOptions {
  std::vector<std::string> files;
  std::string output, level;
  EditOptions edit;
};

int RunMerge(MergeOptions& options) {
  if (options.files.size() < 2) return Refuse("merge", "takes two files or more");
  Inputs inputs;
  for (std::string& file : options.files) inputs.Add(file = TakeInput(file));
  if (inputs.Hold(options.output)) return Refuse("merge", "the output is an input; give another name");
  std::string current = options.files[0];
  return Edited("merge", current, [&] {
    std::vector<std::unique_ptr<Survey>> surveys;
    for (const std::string& file : options.files) {
      current = file;
      surveys.push_back(OpenToEdit("merge", file, options.edit.mend));
    }
    Draft draft = DraftOf(*surveys[0], options.edit.mend);
    for (size_t i = 1; i < surveys.size(); ++i) {
      for (const std::string& left : Merge(draft, *surveys[i]))
        std::fprintf(stderr, "orbntf: merge: %s: left behind: %s\n",
                     Printable(InputName(options.files[i])).c_str(), Printable(left).c_str());
    }
    ApplyLevel("merge", draft, options.level, true);
    return SaveDraft("merge", draft, options.output, options.edit);
  });
}

}  // namespace

void AddRemoving(const Command& top, CommandLine& line) {
  auto options = std::make_shared<RemoveOptions>();
  const Command remove = top.Add("remove", "Take segments out of a file");
  remove.Take("FILE", options->file, "file to change").Required();
  remove
      .Take("PART", options->parts,
            "image:N, graphic:N, text:N or data:N, as they are numbered in the file")
      .Required();
  remove.Take("-o,--output", options->output, "file to write").Required();
  AddLevelOption(remove, options->level);
  AddEditOptions(remove, options->edit);
  remove.Runs(line.work, [options] { return RunRemove(*options); });
  auto merging = std::make_shared<MergeOptions>();
  const Command merge = top.Add("merge", "Put the segments of several files into one");
  merge.Take("FILE", merging->files, "files, the first of which gives the file header").Required();
  merge.Take("-o,--output", merging->output, "file to write").Required();
  AddLevelOption(merge, merging->level);
  AddEditOptions(merge, merging->edit);
  merge.Runs(line.work, [merging] { return RunMerge(*merging); });
}

}  // namespace tool
