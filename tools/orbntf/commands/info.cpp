// orbntf info: what files hold, for people or as JSON.
#include <algorithm>

#include "core/format/products.h"
#include "core/format/streaming.h"
#include "core/format/words.h"
#include "core/place/extent.h"
#include "core/place/placed.h"
#include "core/view/view.h"
#include "tools/orbntf/commands/batch.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/info_table.h"
#include "tools/orbntf/inspect/show_records.h"
#include "tools/orbntf/inspect/survey_json.h"

namespace tool {
namespace {

// A field as it is shown, without the spaces behind it.
std::string FieldOf(const SurveyedPart& part, const char* name) { return Shown(part.Text(name)); }
std::string NumberOf(const SurveyedPart& part, const char* name) {
  const int64_t number = part.Number(name);
  return number < 0 ? "?" : std::to_string(number);
}
std::string PlaceOf(const SurveyedPart& part, const char* name) {
  int64_t row = 0, column = 0;
  if (!PlaceOfText(part.Text(name), row, column)) return "at \"" + FieldOf(part, name) + "\"";
  return "at row " + std::to_string(row) + ", column " + std::to_string(column);
}

std::string Described(const SurveyedPart& part) {
  switch (part.kind) {
    case PartKind::Image:
      return "\"" + FieldOf(part, "IID1") + "\" " + FieldOf(part, "IREP") + " " + FieldOf(part, "IC") +
             ", " + NumberOf(part, "NCOLS") + " x " + NumberOf(part, "NROWS") + " in " +
             NumberOf(part, "NBPR") + " x " + NumberOf(part, "NBPC") + " blocks, " +
             std::to_string(part.Bands()) + (part.Bands() == 1 ? " band of " : " bands of ") +
             NumberOf(part, "NBPP") + " bits" +
             (part.Trimmed("PVTYPE") == "INT" || part.Trimmed("PVTYPE") == "B"
                  ? ""
                  : ", " + FieldOf(part, "PVTYPE")) +
             ", mode " + FieldOf(part, "IMODE") + ", level " + NumberOf(part, "IDLVL") + " on " +
             NumberOf(part, "IALVL") + ", " + PlaceOf(part, "ILOC");
    case PartKind::Graphic:
      return "\"" + FieldOf(part, "SNAME") + "\" " + FieldOf(part, "SFMT") + ", level " +
             NumberOf(part, "SDLVL") + " on " + NumberOf(part, "SALVL") + ", " + PlaceOf(part, "SLOC") +
             ", " + std::to_string(part.dataLength) + " bytes";
    case PartKind::Text:
      return "\"" + FieldOf(part, "TXTITL") + "\" " + FieldOf(part, "TXTFMT") + ", " +
             std::to_string(part.dataLength) + " bytes";
    default:
      return FieldOf(part, part.kind == PartKind::Reserved ? "RESID" : "DESID") + ", " +
             std::to_string(part.dataLength) + " bytes";
  }
}

void PrintFileHeader(std::FILE* out, const std::string& path, const FileFacts& file) {
  const SurveyedPart& header = file.survey.Header();
  std::fprintf(out, "%s: %s %s, complexity %s, \"%s\"\n", Printable(InputName(path)).c_str(),
               FieldOf(header, "FHDR").c_str(), FieldOf(header, "FVER").c_str(),
               FieldOf(header, "CLEVEL").c_str(), FieldOf(header, "FTITLE").c_str());
  std::fprintf(out, "  dated %s by %s, class %s, %s bytes, background #%s\n",
               FieldOf(header, "FDT").c_str(), FieldOf(header, "OSTAID").c_str(),
               FieldOf(header, "FSCLAS").c_str(), FieldOf(header, "FL").c_str(),
               HexOf(header.Text("FBKGC")).c_str());
  if (file.width != 0)
    std::fprintf(out, "  composite %llu x %llu\n", static_cast<unsigned long long>(file.width),
                 static_cast<unsigned long long>(file.height));
  for (const std::string& product : ProductsOf(file.survey))
    std::fprintf(out, "  product: %s\n", product.c_str());
  if (!file.module.words.empty())
    std::fprintf(out, "  module: refused, status %d: %s\n", file.module.status,
                 Printable(file.module.words).c_str());
}

// A line of tags, or what the records say.
void PrintRecords(std::FILE* out, const std::vector<TaggedRecord>& records, bool decoded) {
  if (records.empty()) return;
  if (!decoded) std::fputs("    records:", out);
  for (const TaggedRecord& record : records) {
    const std::string tag = record.tag.empty() ? "(broken)" : Shown(record.tag);
    std::fputs(decoded ? DescribeRecord(record, "    ").c_str() : (" " + tag).c_str(), out);
  }
  if (!decoded) std::fputc('\n', out);
}

// Where an image lies, by the best model that tells it.
void PrintLocation(std::FILE* out, const FileFacts& file, const SurveyedPart& image) {
  const Placed placed = PlaceOf(image, file.survey.Header(), file.definitions);
  for (const std::string& tag : placed.unused)
    std::fprintf(out, "    %s tells a place and is not used\n", tag.c_str());
  if (placed.model == nullptr) return;
  const auto extent = ExtentOf(*placed.model, image);
  std::fprintf(out, "    place by %s: %s\n", placed.model->Name().c_str(),
               extent ? (PlaceText(extent->middle) + "; " + SizeText(*extent)).c_str()
                      : "not all of the image has one");
  if (!extent) return;
  std::fputs("    corners:", out);
  for (const GeographicPoint& corner : extent->corners)
    std::fprintf(out, " %.6f,%.6f", corner.latitude, corner.longitude);
  std::fputs(placed.model->Height() ? " (at the model's height above the WGS 84 ellipsoid)\n" : "\n",
             out);
}

void PrintForPeople(std::FILE* out, const std::string& path, const FileFacts& file, bool decoded) {
  PrintFileHeader(out, path, file);
  for (const SurveyedPart& part : file.survey.parts) {
    if (part.kind != PartKind::File)
      std::fprintf(out, "  %s: %s\n", part.Title().c_str(),
                   part.FieldCount() != 0 ? Described(part).c_str() : "its subheader is not there");
    if (part.kind == PartKind::Image) PrintLocation(out, file, part);
    for (const DataField& field : StreamingFields(file.survey.file, part))
      std::fprintf(
          out, "    %s: %s (byte %llu)\n", field.name,
          (field.text.empty() ? std::to_string(field.length) + " bytes" : Shown(field.text)).c_str(),
          static_cast<unsigned long long>(field.offset));
    PrintRecords(out, RecordsOf(part, file.definitions), decoded);
  }
}

struct InfoOptions {
  BatchOptions batch;
  bool json = false, lines = false, records = false, csv = false, geojson = false;
  std::unique_ptr<RecordDefinitions> definitions;  // made when the command runs
};

void PrintJson(std::FILE* out, const std::string& path, const FileFacts& file, bool onOneLine,
               bool inArray) {
  JsonText json(!onOneLine, inArray ? 1 : 0, out);
  if (inArray) std::fputs("  ", out);
  WriteFile(json, InputName(path), file);
  std::fwrite(json.Text().data(), 1, json.Text().size(), out);
  if (!inArray) std::fputc('\n', out);
}

// The object of a file that was not worked on.
std::function<std::string(const BatchFile&, const std::string&)> JsonFailure(bool indented,
                                                                             bool inArray) {
  return [=](const BatchFile& file, const std::string& words) {
    JsonText json(indented, inArray ? 1 : 0);
    WriteFailure(json, InputName(file.path), words);
    return (inArray ? "  " : "") + json.Text() + (inArray ? "" : "\n");
  };
}

// Whether the structure of a file could be read: its header is one of NITF 2.1 or NSIF 1.0, and all
// headers are whole.
bool IsRead(const Survey& survey) {
  const SurveyedPart& header = survey.Header();
  const std::string version = std::string(header.Text("FHDR")) + std::string(header.Text("FVER"));
  return IsOneOf(version, "NITF02.10|NSIF01.00") &&
         std::all_of(survey.parts.begin(), survey.parts.end(),
                     [](const SurveyedPart& part) { return part.complete; });
}

int ShowFile(const InfoOptions& options, const std::string& path, bool inArray, std::FILE* out) {
  const WorkAccount account(path);
  const Survey survey(path);
  FileFacts file = {survey, *options.definitions, AskToOpen(path)};
  RequireHostReads(path);
  const bool isRead = IsRead(survey);
  if (isRead) {
    const ViewRequest whole;
    FileView view(survey, whole);
    (void)view.Start();
    file.width = view.FullWidth();
    file.height = view.FullHeight();
  }
  if (options.geojson) {
    JsonText json(false, 0, out);
    WriteFeature(json, path, survey, *options.definitions);
    std::fwrite(json.Text().data(), 1, json.Text().size(), out);
  } else if (options.csv) {
    const std::string lines = options.records ? CsvRecords(path, file) : CsvLine(path, file);
    std::fwrite(lines.data(), 1, lines.size(), out);
  } else if (options.json || options.lines) {
    PrintJson(out, path, file, options.lines, inArray);
  } else if (survey.Header().Has("FVER")) {
    PrintForPeople(out, path, file, options.records);
  }
  return isRead ? kExitOk : Report("info", path, file.module.status, file.module.words);
}

int RunInfo(InfoOptions& options, const std::string& folder) {
  if (const std::string problem = TakeDefinitions(folder, options.definitions); !problem.empty())
    return Refuse("info", problem);
  if (options.csv + options.geojson + (options.json || options.lines) > 1)
    return Refuse("info", "--json, --csv and --geojson are three forms: give one");
  const std::vector<BatchFile> files = FilesOf(options.batch);
  const bool inArray = options.json && !options.lines && files.size() != 1;
  BatchFrame frame;
  if (inArray) frame = {files.empty() ? "[" : "[\n", ",\n", files.empty() ? "]\n" : "\n]\n"};
  if (options.csv) {
    frame.before = CsvHead(options.records);
    frame.failure = [&options](const BatchFile& file, const std::string& words) {
      return CsvFailure(file.path, words, options.records);
    };
  }
  if (options.geojson) {
    frame = {"{\"type\": \"FeatureCollection\", \"features\": [\n", ",\n", "\n]}\n"};
    frame.failure = [](const BatchFile& file, const std::string&) {
      JsonText json(false);
      WriteFeature(json, file.path, Survey(std::string_view()), RecordDefinitions());
      return json.Text();
    };
  }
  if (options.json || options.lines) frame.failure = JsonFailure(!options.lines, inArray);
  return RunBatch("info", options.batch, files, frame, [&](const BatchFile& file, std::FILE* out) {
    return ShowFile(options, file.path, inArray, out);
  });
}

}  // namespace

void AddInfo(const Command& top, CommandLine& line) {
  auto options = std::make_shared<InfoOptions>();
  const Command command = top.Add("info", "Show the file header, the segments and the composite size");
  AddBatchOptions(command, options->batch);
  command.Flag("--json", options->json, "print JSON, an array for several files");
  command.Flag("--json-lines", options->lines, "print one JSON object a line");
  command.Flag("--records", options->records, "decode the tagged records");
  command.Flag("--csv", options->csv, "print a table, a line a file; with --records a line a field");
  command.Flag("--geojson", options->geojson, "print the footprints of images as one GeoJSON collection");
  command.Runs(line.work, [options, &line] { return RunInfo(*options, line.records); });
}

}  // namespace tool
