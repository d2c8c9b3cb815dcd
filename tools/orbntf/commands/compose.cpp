// orbntf new and append: documents from pictures, metafiles and texts.
#include "tools/orbntf/commands/compose.h"

#include "core/format/words.h"
#include "tools/orbntf/commands/change.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/output/saving.h"

namespace tool {
namespace {

struct ComposeOptions {
  std::string file, output;
  std::string station, title, classification;
  std::vector<std::string> images, graphics, texts, places, fields;
  std::vector<int32_t> qualities;
  int64_t lossless = 0;
  bool force = false;
};

bool ParsePlace(const std::string& text, Item& item) {
  const size_t comma = text.find(',');
  item.placed = true;
  return comma != std::string::npos && ParseNumber(text.substr(0, comma), item.row) &&
         ParseNumber(text.substr(comma + 1), item.column);
}

// --quality and --at belong to the segment in front of them.
bool CollectItems(const Command& command, const ComposeOptions& options, std::vector<Item>& items,
                  std::string& problem) {
  size_t image = 0, graphic = 0, text = 0, place = 0, quality = 0;
  for (const std::string& name : command.Given()) {
    if (name == "--image") items.push_back({name, options.images[image++]});
    if (name == "--graphic") items.push_back({name, options.graphics[graphic++]});
    if (name == "--text") items.push_back({name, options.texts[text++]});
    const bool ofImage = name == "--quality" || name == "--lossless";
    const std::string last = items.empty() ? "" : items.back().option;
    if ((ofImage && last != "--image") || (name == "--at" && last != "--image" && last != "--graphic")) {
      problem = name + " follows the " + (ofImage ? "image" : "image or graphic") + " that it is for";
      return false;
    }
    if (name == "--lossless") items.back().lossless = true;
    if (name == "--quality") items.back().quality = options.qualities[quality++];
    if (name == "--at" && !ParsePlace(options.places[place++], items.back())) {
      problem = "--at takes ROW,COL";
      return false;
    }
  }
  return true;
}

// Dates, names and classes of a file and of the segments from an index on.
class Labels {
 public:
  Labels(const std::string& command, const ComposeOptions& options, Document& document)
      : context_{command, options.file, options.force},
        options_(options),
        document_(document),
        first_{Orb_NITFGetImageHeaderCount(document.get()), Orb_NITFGetGraphicHeaderCount(document.get()),
               Orb_NITFGetTextHeaderCount(document.get())} {}

  /// Before segments are added.
  int ApplyToFile(bool isNew) {
    if (isNew && !Change({}, "FDT=" + DateNow())) return code_;
    if (!options_.station.empty() && !Change({}, "OSTAID=" + options_.station)) return code_;
    if (!options_.title.empty() && !Change({}, "FTITLE=" + options_.title)) return code_;
    if (!options_.classification.empty() && !Change({}, "FSCLAS=" + options_.classification))
      return code_;
    return code_;
  }
  /// To the segments that were added; --field is for the file, or for the segment named before it.
  int ApplyToSegments() {
    const std::string date = DateNow();
    const uint32_t counts[] = {Orb_NITFGetImageHeaderCount(document_.get()),
                               Orb_NITFGetGraphicHeaderCount(document_.get()),
                               Orb_NITFGetTextHeaderCount(document_.get())};
    constexpr const char* kKinds[] = {"image", "graphic", "text"};
    constexpr const char* kClasses[] = {"ISCLAS=", "SSCLAS=", "TSCLAS="};
    constexpr const char* kDates[] = {"IDATIM=", nullptr, "TXTDT="};
    for (size_t kind = 0; kind < std::size(kKinds); ++kind) {
      for (uint32_t i = first_[kind]; i < counts[kind]; ++i) {
        const Target target = {kKinds[kind], i};
        // A magnification that is left blank would come to be 0.
        if (kind == 0 && !Change(target, "IMAG=1.0 ")) return code_;
        if (kDates[kind] != nullptr && !Change(target, kDates[kind] + date)) return code_;
        if (!options_.classification.empty() && !Change(target, kClasses[kind] + options_.classification))
          return code_;
      }
    }
    Target target;
    for (const std::string& field : options_.fields) {
      if (field.find('=') == std::string::npos && ParseTarget(field, target)) continue;
      if (!Change(target, field)) return code_;
    }
    return code_;
  }

 private:
  bool Change(const Target& target, const std::string& assignment) {
    code_ = ApplyChange(context_, document_, target, assignment);
    return code_ == kExitOk;
  }

  ChangeContext context_;
  const ComposeOptions& options_;
  Document& document_;
  uint32_t first_[3];
  int code_ = kExitOk;
};

int AddItems(const std::string& name, const std::vector<Item>& items, Document& document) {
  for (const Item& item : items) {
    std::string words, warning;
    const int32_t status = AppendItem(document, item, words, warning);
    if (status != ORB_SUCCESS) return Report(name, item.path, status, words);
    if (!warning.empty())
      std::fprintf(stderr, "orbntf: %s: %s: %s\n", name.c_str(), Printable(item.path).c_str(),
                   warning.c_str());
  }
  return kExitOk;
}

int RunCompose(const std::string& name, const Command& command, ComposeOptions& options) {
  std::vector<Item> items;
  std::string problem;
  if (!CollectItems(command, options, items, problem)) return Refuse(name, problem);
  Inputs inputs;
  if (!options.file.empty()) inputs.Add(options.file = TakeInput(options.file));
  for (Item& item : items) inputs.Add(item.path = TakeInput(item.path));
  if (inputs.Hold(options.output)) return Refuse(name, "the output is an input");
  Document document;
  const bool isNew = options.file.empty();
  const int opened = isNew ? Report(name, options.file, document.StartEmpty())
                           : OpenDocument(name, document, options.file);
  if (opened != kExitOk) return opened;
  Labels labels(name, options, document);
  if (const int code = labels.ApplyToFile(isNew); code != kExitOk) return code;
  if (const int code = AddItems(name, items, document); code != kExitOk) return code;
  if (const int code = labels.ApplyToSegments(); code != kExitOk) return code;
  return SaveAs(name, document, options.file, options.output);
}

void AddCompose(const Command& top, CommandLine& line, const std::string& name,
                const std::string& description) {
  auto options = std::make_shared<ComposeOptions>();
  const Command command = top.Add(name, description);
  if (name == "append") command.Take("FILE", options->file, "file to extend").Required();
  command.Take("-o,--output", options->output, "file to write").Required();
  const auto repeated = [&](const char* option, auto& values, const char* text) {
    command.Take(option, values, text).Repeated();
  };
  repeated("--image", options->images, "add a PNG, JPEG, TIFF, PPM or PGM picture");
  repeated("--quality", options->qualities, "of the picture before: 2 (best) to 255");
  repeated("--at", options->places, "ROW,COL: place the picture or drawing before");
  repeated("--graphic", options->graphics, "add a CGM drawing");
  repeated("--text", options->texts, "add a text file");
  repeated("--field", options->fields,
           "FIELD=VALUE, of the file header or of the segment named by a --field before: image:N, ...");
  command.Flag("--lossless", options->lossless, "store the picture before as it is, uncompressed");
  command.Take("--station", options->station, "the originating station, OSTAID");
  command.Take("--title", options->title, "the file's title, FTITLE");
  command.Take("--class", options->classification,
               "T, S, C, R or U: classification of the file and of what is added");
  command.Flag("--force", options->force, "take values that the format does not allow");
  command.Runs(line.work, [options, command, name] { return RunCompose(name, command, *options); });
}

}  // namespace

void AddComposing(const Command& top, CommandLine& line) {
  AddCompose(top, line, "new", "Make a file of pictures, drawings and texts");
  AddCompose(top, line, "append", "Add pictures, drawings and texts to a file");
}

}  // namespace tool
