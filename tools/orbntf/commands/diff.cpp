// orbntf diff: what differs between two files.
#include "core/check/rule.h"
#include "core/compare/compare.h"
#include "core/format/json_text.h"
#include "core/format/words.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/compare_pixels.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/inspect/show_records.h"

namespace tool {
namespace {

struct DiffOptions {
  std::string a, b;
  bool json = false;
  std::unique_ptr<RecordDefinitions> definitions;  // made when the command runs
};

std::string Shown(const std::optional<std::string>& text) {
  return text ? Quoted(TrimmedText(*text)) : "(none)";
}
std::string Shown(const std::optional<uint64_t>& length) {
  return length ? std::to_string(*length) + " bytes" : "(none)";
}

void PrintTexts(const std::vector<TextDifference>& differences, const char* what) {
  for (const TextDifference& difference : differences)
    std::printf("%s%s, %s: %s | %s\n", what, difference.part.c_str(),
                Printable(ToUtf8(difference.name)).c_str(), Shown(difference.a).c_str(),
                Shown(difference.b).c_str());
}

void PrintPixels(const PixelDifference& pixels) {
  if (!pixels.Differs()) return;
  if (!pixels.BothDraw()) {
    std::printf("drawing: status %d | %d\n", pixels.statusA, pixels.statusB);
  } else if (!pixels.SameSize()) {
    std::printf("pixels: %u x %u | %u x %u\n", pixels.widthA, pixels.heightA, pixels.widthB,
                pixels.heightB);
  } else {
    std::printf("pixels: %llu differ, by up to %d, in rows %u to %u, columns %u to %u\n",
                static_cast<unsigned long long>(pixels.count), pixels.largest, pixels.top, pixels.bottom,
                pixels.left, pixels.right);
  }
}

void Print(const Comparison& comparison, const PixelDifference& pixels) {
  PrintTexts(comparison.fields, "");
  PrintTexts(comparison.records, "record of ");
  for (const DataDifference& difference : comparison.segments) {
    const std::string from =
        difference.firstOffset ? ", from byte " + std::to_string(*difference.firstOffset) + " of its data"
                               : "";
    std::printf("%s: %s | %s%s\n", difference.part.c_str(), Shown(difference.a).c_str(),
                Shown(difference.b).c_str(), from.c_str());
  }
  PrintPixels(pixels);
}

// ---------------------------------------------------------------- JSON

void WriteNumber(JsonText& json, const char* key, const std::optional<uint64_t>& number) {
  json.Key(key);
  if (number)
    json.Number(static_cast<int64_t>(*number));
  else
    json.Null();
}

void WriteTexts(JsonText& json, const char* key, const std::vector<TextDifference>& differences,
                bool asBytes) {
  json.Key(key);
  json.BeginArray();
  for (const TextDifference& difference : differences) {
    json.BeginObject();
    json.Key("part");
    json.String(difference.part);
    json.Key("name");
    json.FieldText(difference.name);
    for (const auto& [side, text] : {std::pair{"a", &difference.a}, {"b", &difference.b}}) {
      json.Key(side);
      if (!*text)
        json.Null();
      else if (asBytes)
        json.String(HexOf(**text));
      else
        json.FieldText(**text);
    }
    json.EndObject();
  }
  json.EndArray();
}

void WritePixels(JsonText& json, const PixelDifference& pixels) {
  json.Key("pixels");
  json.BeginObject();
  json.Key("statusA");
  json.Number(pixels.statusA);
  json.Key("statusB");
  json.Number(pixels.statusB);
  if (pixels.BothDraw()) {
    for (const auto& [key, number] : {std::pair{"widthA", pixels.widthA},
                                      {"heightA", pixels.heightA},
                                      {"widthB", pixels.widthB},
                                      {"heightB", pixels.heightB}})
      WriteNumber(json, key, number);
  }
  if (pixels.BothDraw() && pixels.SameSize()) {
    WriteNumber(json, "count", pixels.count);
    json.Key("largest");
    json.Number(pixels.largest);
    json.Key("box");
    if (pixels.count == 0) {
      json.Null();
    } else {
      json.BeginObject();
      for (const auto& [key, number] : {std::pair{"left", pixels.left},
                                        {"top", pixels.top},
                                        {"right", pixels.right},
                                        {"bottom", pixels.bottom}})
        WriteNumber(json, key, number);
      json.EndObject();
    }
  }
  json.EndObject();
}

void PrintJson(const DiffOptions& options, const Comparison& comparison, const PixelDifference& pixels) {
  JsonText json(true);
  json.BeginObject();
  json.Key("a");
  json.String(options.a);
  json.Key("b");
  json.String(options.b);
  WriteTexts(json, "fields", comparison.fields, false);
  WriteTexts(json, "records", comparison.records, true);
  json.Key("segments");
  json.BeginArray();
  for (const DataDifference& difference : comparison.segments) {
    json.BeginObject();
    json.Key("part");
    json.String(difference.part);
    WriteNumber(json, "a", difference.a);
    WriteNumber(json, "b", difference.b);
    WriteNumber(json, "firstOffset", difference.firstOffset);
    json.EndObject();
  }
  json.EndArray();
  WritePixels(json, pixels);
  json.EndObject();
  std::printf("%s\n", json.Text().c_str());
}

// 0 for files that are the same to all of this, 1 for others, as `diff` has it.
int RunDiff(DiffOptions& options, const std::string& folder) {
  if (const std::string problem = TakeDefinitions(folder, options.definitions); !problem.empty())
    return Refuse("diff", problem);
  const Survey a(TakeInput(options.a)), b(TakeInput(options.b));
  for (const Survey* survey : {&a, &b}) {
    if (!survey->file.IsOpen()) return ReportFile("diff", survey->path, ORB_SHORT_READ);
  }
  const Comparison comparison = Compare(a, b, *options.definitions);
  const PixelDifference pixels = ComparePixels(a.path, b.path);
  if (options.json)
    PrintJson(options, comparison, pixels);
  else
    Print(comparison, pixels);
  return comparison.Differs() || pixels.Differs() ? kExitStatus : kExitOk;
}

}  // namespace

void AddDiff(const Command& top, CommandLine& line) {
  auto options = std::make_shared<DiffOptions>();
  const Command command = top.Add("diff", "Tell what differs between two files");
  command.Take("A", options->a, "a file").Required();
  command.Take("B", options->b, "another one").Required();
  command.Flag("--json", options->json, "print JSON");
  command.Runs(line.work, [options, &line] { return RunDiff(*options, line.records); });
}

}  // namespace tool
