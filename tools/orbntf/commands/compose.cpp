// orbntf new and append: files from pictures, metafiles, texts and data.
#include "core/edit/add.h"
#include "core/edit/fields.h"
#include "core/format/words.h"
#include "core/pictures/raster.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/commands/edit_file.h"
#include "tools/orbntf/commands/store_options.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/verdict.h"

namespace tool {
namespace {

struct ComposeOptions {
  std::string file, output, level;
  std::string station, title, classification;
  std::map<std::string, std::vector<std::string>> values;  // of options that are given several times
  std::map<std::string, int64_t> switches;
  EditOptions edit;
};

/// One segment to add, in the order of the command line.
struct Item {
  std::string option, path;
  std::string name;  // of a data extension
  uint32_t version = 1;
  StoreOptions store;
  bool isStored = false;  // a way of storing is given
  std::string on;
  int64_t row = 0, column = 0;
};

bool IsItem(const std::string& option) {
  return option == "--image" || option == "--graphic" || option == "--text" || option == "--data";
}

std::string TakePlace(const std::string& text, Item& item) {
  const size_t comma = text.find(',');
  int32_t row = 0, column = 0;
  const bool isPlace = comma != std::string::npos && ParseNumber(text.substr(0, comma), row) &&
                       ParseNumber(text.substr(comma + 1), column);
  item.row = row;
  item.column = column;
  return isPlace ? "" : "--at takes ROW,COL";
}

// "DESID:VERSION=@FILE".
std::string TakeData(const std::string& text, Item& item) {
  const size_t equals = text.find("=@"), colon = text.rfind(':', equals);
  int64_t version = 1;
  if (equals == std::string::npos) return "--data takes DESID:VERSION=@FILE";
  if (colon != std::string::npos) version = DigitsOf(text.substr(colon + 1, equals - colon - 1));
  if (version < 0 || version > 99) return "--data: a version is a number of up to two digits";
  item.name = text.substr(0, std::min(colon, equals));
  item.version = static_cast<uint32_t>(version);
  item.path = text.substr(equals + 2);
  return "";
}

// What belongs to the segment in front of it.
std::string TakeOfItem(const std::string& option, const std::string& value, std::vector<Item>& items) {
  const bool isPlace = option == "--at" || option == "--on";
  const std::string last = items.empty() ? "" : items.back().option;
  if (isPlace && last != "--image" && last != "--graphic")
    return option + " follows the image or graphic that it is for";
  if (!isPlace && last != "--image") return option + " follows the image that it is for";
  Item& item = items.back();
  if (option == "--at") return TakePlace(value, item);
  if (option == "--on") {
    item.on = value;
    return "";
  }
  const bool isWay = option == "--lossless" || option == "--jpeg" || option == "--quality" ||
                     option == "--jpeg2000" || option == "--as-is";
  item.isStored = item.isStored || isWay;
  return TakeStoreOption(option, value, item.store);
}

std::string CollectItems(const Command& command, const ComposeOptions& options,
                         std::vector<Item>& items) {
  std::map<std::string, size_t> taken;
  for (const std::string& option : command.Given()) {
    const auto values = options.values.find(option);
    if (values == options.values.end() && options.switches.count(option) == 0) continue;
    const std::string value = values != options.values.end() ? values->second[taken[option]++] : "";
    std::string problem;
    if (IsItem(option)) {
      items.emplace_back();
      items.back().option = option;
      items.back().path = value;
      items.back().store.way = StoreOptions::Way::Jpeg;
      if (option == "--data") problem = TakeData(value, items.back());
    } else if (option != "--field") {
      problem = TakeOfItem(option, value, items);
    }
    if (!problem.empty()) return problem;
  }
  return "";
}

void AddPicture(const std::string& command, Draft& draft, const Item& item, const std::string& folder,
                const Placing& placing, const Labels& labels) {
  std::vector<std::string> notes;
  std::vector<StoredImage> images = StorePicture(draft, item.path, folder, item.store, notes);
  for (const std::string& note : notes)
    std::fprintf(stderr, "orbntf: %s: %s: %s\n", command.c_str(), Printable(InputName(item.path)).c_str(),
                 note.c_str());
  AddImages(draft, std::move(images), placing, labels);
}

void AddItem(const std::string& command, Draft& draft, const Item& item, const std::string& folder,
             const Labels& labels) {
  const Placing placing = {item.on.empty() ? nullptr : &NamedPart(draft, item.on), item.row, item.column};
  const WorkAccount account(item.path);
  if (item.option == "--image") return AddPicture(command, draft, item, folder, placing, labels);
  const std::string bytes = ReadWhole(item.path);
  if (item.option == "--graphic") AddGraphic(draft, bytes, placing, labels);
  if (item.option == "--text") AddText(draft, bytes, labels);
  if (item.option == "--data") AddData(draft, item.name, item.version, bytes, labels);
}

int AddItems(const std::string& command, Draft& draft, const std::vector<Item>& items,
             const std::string& folder, const Labels& labels) {
  for (const Item& item : items) {
    try {
      AddItem(command, draft, item, folder, labels);
    } catch (const PictureError& error) {
      std::fprintf(stderr, "orbntf: %s: %s: %s\n", command.c_str(),
                   Printable(InputName(item.path)).c_str(), Printable(error.what()).c_str());
      return kExitStatus;
    }
  }
  return kExitOk;
}

// --station, --title, --class and --field, which is of the file, or of the segment named before it.
void SetFields(Draft& draft, const ComposeOptions& options) {
  const bool force = options.edit.force;
  if (!options.station.empty()) SetField(draft.file, {"OSTAID", options.station, force});
  if (!options.title.empty()) SetField(draft.file, {"FTITLE", options.title, force});
  DraftPart* part = &draft.file;
  for (const std::string& field : options.values.at("--field")) {
    const size_t equals = field.find('=');
    if (equals == std::string::npos) {
      part = &NamedPart(draft, field);
    } else {
      SetField(*part, {field.substr(0, equals), field.substr(equals + 1), force});
    }
  }
}

// What the module would not draw is said; files of other levels it does not open at all.
std::string TellOfModule(const Draft& draft, const std::string& path) {
  const std::string level(draft.file.Fields().Text("CLEVEL"));
  if (level != "03") return "CLEVEL is " + level + "; the module opens files of level 03";
  const Verdict verdict = AskModule(path);
  const bool isEmpty = verdict.status == ORB_SUCCESS || draft.Count(PartKind::Image) == 0;
  return isEmpty ? "" : "the module does not draw it: " + verdict.words;
}

int RunCompose(const std::string& name, const Command& command, ComposeOptions& options) {
  std::vector<Item> items;
  if (const std::string problem = CollectItems(command, options, items); !problem.empty())
    return Refuse(name, problem);
  Inputs inputs;
  const bool isNew = options.file.empty();
  if (!isNew) inputs.Add(options.file = TakeInput(options.file));
  for (Item& item : items) inputs.Add(item.path = TakeInput(item.path));
  if (inputs.Hold(options.output)) return Refuse(name, "the output is an input; give another name");
  return Edited(name, isNew ? options.output : options.file, [&] {
    const Labels labels = {DateNow(), options.classification};
    std::unique_ptr<Survey> survey;
    if (!isNew) survey = OpenToEdit(name, options.file, options.edit.mend);
    Draft draft = isNew ? NewFile(labels) : DraftOf(*survey, options.edit.mend);
    if (!isNew && !options.classification.empty())
      SetField(draft.file, {"FSCLAS", options.classification, options.edit.force});
    if (const int code = AddItems(name, draft, items, ScratchFolderOf(options.output), labels);
        code != kExitOk)
      return code;
    SetFields(draft, options);
    ApplyLevel(name, draft, isNew && options.level.empty() ? "lowest" : options.level, !isNew);
    return SaveDraft(name, draft, options.output, options.edit,
                     [&](const std::string& path) { return isNew ? TellOfModule(draft, path) : ""; });
  });
}

void AddCompose(const Command& top, CommandLine& line, const std::string& name,
                const std::string& description) {
  auto options = std::make_shared<ComposeOptions>();
  const Command command = top.Add(name, description);
  const bool isNew = name == "new";
  if (!isNew) command.Take("FILE", options->file, "file to extend").Required();
  command.Take("-o,--output", options->output, "file to write").Required();
  const auto repeated = [&](const char* option, const char* text) {
    command.Take(option, options->values[option], text).Repeated();
  };
  repeated("--image", "add a picture: PNG, JPEG, JPEG 2000, TIFF, PBM, PGM, PPM, PAM or .npy");
  for (const StoreOption& option : kStoreOptions) {
    if (option.takesValue) {
      repeated(option.name, option.description);
    } else {
      command.Flag(option.name, options->switches[option.name], option.description);
    }
  }
  repeated("--at", "ROW,COL: place the picture or drawing before");
  repeated("--on", "image:N or graphic:N that the one before is attached to: --at counts from there");
  repeated("--graphic", "add a CGM drawing");
  repeated("--text", "add a text file");
  repeated("--data", "DESID:VERSION=@FILE: add a data extension");
  repeated("--field",
           "FIELD=VALUE, of the file header or of the segment named by a --field before: image:N, ...");
  command.Take("--station", options->station, "the originating station, OSTAID");
  command.Take("--title", options->title, "the file's title, FTITLE");
  command.Take("--class", options->classification,
               "T, S, C, R or U: classification of the file and of what is added");
  AddLevelOption(command, options->level);
  isNew ? AddForce(command, options->edit) : AddEditOptions(command, options->edit);
  command.Runs(line.work, [options, command, name] { return RunCompose(name, command, *options); });
}

}  // namespace

void AddComposing(const Command& top, CommandLine& line) {
  AddCompose(top, line, "new", "Make a file of pictures, drawings, texts and data");
  AddCompose(top, line, "append", "Add pictures, drawings, texts and data to a file");
}

}  // namespace tool
