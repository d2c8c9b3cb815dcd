// orbntf set: changing header fields and tagged records, and no other byte.
#include "core/edit/fields.h"
#include "tools/orbntf/commands/batch.h"
#include "tools/orbntf/commands/edit_file.h"
#include "tools/orbntf/inputs.h"

namespace tool {
namespace {

struct SetOptions {
  BatchOptions batch;
  std::string output, folder, classification;
  EditOptions edit;
  std::vector<std::string> words;  // files, and what changes in them
  std::unique_ptr<RecordDefinitions> definitions;
};

// Goes through the changes of a command line: what they name is where those behind them are.
class Changes {
 public:
  Changes(Draft& draft, const SetOptions& options) : draft_(draft), options_(options) {}

  void Make(const std::string& word) {
    if (word.rfind("all:", 0) == 0) return MakeAll(word.substr(4));
    if (word.rfind("record:", 0) == 0) return MakeRecord(word.substr(7));
    const size_t equals = word.find('=');
    if (equals == std::string::npos) return Name(word);
    const FieldChange change = {word.substr(0, equals), word.substr(equals + 1), options_.edit.force};
    if (!record_.tag.empty())
      return SetRecordField(draft_, record_, *options_.definitions, change.name, change.value);
    if (isAll_) return SetEverywhere(draft_, change);
    SetField(*draft_.Find(record_.kind, record_.index), change);
  }

 private:
  void Name(const std::string& word) {
    (void)NamedPart(draft_, word);
    record_ = {};
    isAll_ = false;
    (void)ParsePart(word, record_.kind, record_.index);
  }

  // "all:FIELD=VALUE", or "all:" for those behind it.
  void MakeAll(const std::string& rest) {
    record_ = {};
    isAll_ = true;
    if (!rest.empty()) Make(rest);
    isAll_ = rest.empty();
  }

  // "record:TAG=@FILE", "record:TAG=", or "record:TAG" for the fields behind it; TAG:2 is the second one.
  void MakeRecord(const std::string& rest) {
    const size_t equals = rest.find('=');
    const std::string name = rest.substr(0, equals);
    const size_t colon = name.find(':');
    RecordName record = record_;
    record.tag = name.substr(0, colon);
    record.number = colon == std::string::npos ? 1 : DigitsOf(name.substr(colon + 1));
    if (record.number < 1) RefuseArgument("records of a tag are counted from 1: record:TAG:2");
    isAll_ = false;
    record_.tag = equals == std::string::npos ? record.tag : "";
    record_.number = record.number;
    if (equals == std::string::npos) return;
    const std::string value = rest.substr(equals + 1);
    if (value.empty()) return RemoveRecord(draft_, record);
    if (value[0] != '@') RefuseArgument("record:" + name + "=@FILE takes a file with the record's data");
    PutRecord(draft_, record, ReadWhole(TakeInput(value.substr(1))));
  }

  Draft& draft_;
  const SetOptions& options_;
  RecordName record_;  // the part that changes are of, and the record in it
  bool isAll_ = false;
};

bool IsChange(const std::string& word) {
  PartKind kind = PartKind::File;
  size_t index = 0;
  return word.find('=') != std::string::npos || word == "all:" || word.rfind("record:", 0) == 0 ||
         ParsePart(word, kind, index);
}

// A classification above U names its system.
void RequireSystem(const Draft& draft) {
  const auto isBlank = [](const SurveyedPart& part) {
    const std::string name = part.SecurityPrefix() + std::string("CLSY");
    return part.Has(name) && part.Trimmed(name).empty();
  };
  bool any = isBlank(draft.file.Fields());
  for (const DraftPart& part : draft.segments) any = any || isBlank(part.Fields());
  if (any)
    RefuseArgument(
        "--class above U wants the classification system, too: all:CLSY=US, or that of your country");
}

int SetIn(const SetOptions& options, const std::vector<std::string>& changes, const std::string& file,
          const std::string& output) {
  return Edited("set", file, [&] {
    const std::unique_ptr<Survey> survey = OpenToEdit("set", file, options.edit.mend);
    Draft draft = DraftOf(*survey, options.edit.mend);
    if (!options.classification.empty())
      SetEverywhere(draft, {"CLAS", options.classification, options.edit.force});
    Changes made(draft, options);
    for (const std::string& change : changes) made.Make(change);
    if (!options.classification.empty() && options.classification != "U" && !options.edit.force)
      RequireSystem(draft);
    return SaveDraft("set", draft, output, options.edit);
  });
}

int RunSet(SetOptions& options, const std::string& records) {
  if (const std::string problem = TakeDefinitions(records, options.definitions); !problem.empty())
    return Refuse("set", problem);
  std::vector<std::string> changes;
  for (std::string& word : options.words) {
    // The first word is a file, whatever it is called.
    const bool isFile = options.batch.paths.empty() || !IsChange(word);
    (isFile ? options.batch.paths : changes).push_back(std::move(word));
  }
  if (changes.empty() && options.classification.empty() && !options.edit.mend)
    return Refuse("set",
                  "nothing to change: FIELD=VALUE, all:FIELD=VALUE, record:TAG FIELD=VALUE or --class");
  if (options.output.empty() == options.folder.empty()) return Refuse("set", "give either -o or -O");
  const std::vector<BatchFile> files = FilesOf(options.batch);
  if (options.folder.empty()) {
    if (files.size() != 1) return Refuse("set", "several files go into a folder: -O");
    const std::string file = OnlyPath(files);
    Inputs inputs({file});
    for (const std::string& change : changes) {
      if (const size_t at = change.find("=@"); at != std::string::npos) inputs.Add(change.substr(at + 2));
    }
    if (inputs.Hold(options.output)) return Refuse("set", "the output is the input; give another name");
    return SetIn(options, changes, file, options.output);
  }
  return BatchOutputs(options.batch, options.folder, "")
      .Run("set", files, [&](const BatchFile& file, const std::string& output) {
        return SetIn(options, changes, file.path, output);
      });
}

}  // namespace

void AddSet(const Command& top, CommandLine& line) {
  auto options = std::make_shared<SetOptions>();
  const Command command = top.Add("set", "Change header fields and tagged records, and no other byte");
  command
      .Take("FILE", options->words,
            "files, then changes: FIELD=VALUE of the file header or of image:N, graphic:N, text:N, "
            "data:N named "
            "before it; all:FIELD=VALUE; record:TAG FIELD=VALUE, record:TAG=@DATA, record:TAG=")
      .Required();
  AddBatchSwitches(command, options->batch);
  command.Take("-o,--output", options->output, "file to write");
  command.Take("-O,--output-folder", options->folder, "write the changed files there");
  command.Take("--class", options->classification, "T, S, C, R or U: classification of file and segments")
      .OneOf({"T", "S", "C", "R", "U"});
  AddEditOptions(command, options->edit);
  command.Runs(line.work, [options, &line] { return RunSet(*options, line.records); });
}

}  // namespace tool
