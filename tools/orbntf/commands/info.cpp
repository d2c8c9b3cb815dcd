// orbntf info: what files hold, for people or as JSON.
#include "core/format/words.h"
#include "tools/orbntf/commands/batch.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/document_json.h"
#include "tools/orbntf/inspect/explain.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/inspect/show_records.h"

namespace tool {
namespace {

void Print(std::FILE* out, const ImageSubheader& image) {
  std::fprintf(out,
               "  image %u: \"%s\" %s %s, %u x %u in %u x %u blocks, %u band(s) of %u bits, mode %s, "
               "level %u on %u, at row %d, column %d\n",
               image.index, Shown(image.IID1.text).c_str(), Shown(image.IREP.text).c_str(),
               Shown(image.IC.text).c_str(), image.NCOLS.value, image.NROWS.value, image.NBPR.value,
               image.NBPC.value, image.BandCount(), image.NBPP.value, Shown(image.IMODE.text).c_str(),
               image.IDLVL.value, image.IALVL.value, image.ILOC.Row(), image.ILOC.Column());
}

void PrintFileHeader(std::FILE* out, const std::string& path, const NitfFile& document) {
  const FileHeader& header = document.header;
  std::fprintf(out, "%s: %s %s, complexity %s, \"%s\"\n", Printable(InputName(path)).c_str(),
               Shown(header.FHDR.text).c_str(), Shown(header.FVER.text).c_str(),
               Shown(header.CLEVEL.text).c_str(), Shown(header.FTITLE.text).c_str());
  std::fprintf(out, "  dated %s by %s, class %s, %s bytes, background #%02X%02X%02X\n",
               Shown(header.FDT.text).c_str(), Shown(header.OSTAID.text).c_str(),
               Shown(header.security.CLAS.text).c_str(), Shown(header.FL.text).c_str(),
               header.background & 255, header.background >> 8 & 255, header.background >> 16);
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

class RecordPrinter {
 public:
  RecordPrinter(std::FILE* out, const RecordLists& records, bool decoded)
      : out_(out), records_(records), decoded_(decoded) {}
  void Print(PartKind kind, uint32_t index) const {
    PrintRecords(out_, records_.Of(kind, index), decoded_);
  }

 private:
  std::FILE* out_;
  const RecordLists& records_;
  bool decoded_;
};

void PrintSegments(std::FILE* out, const NitfFile& document, const RecordPrinter& records) {
  for (const ImageSubheader& image : document.images) {
    if (!image.parsed) continue;
    Print(out, image);
    records.Print(PartKind::Image, image.index);
  }
  for (const GraphicSubheader& graphic : document.graphics) {
    if (!graphic.parsed) continue;
    std::fprintf(out, "  graphic %u: \"%s\" %s, level %u on %u, at row %d, column %d, %u bytes\n",
                 graphic.index, Shown(graphic.SNAME.text).c_str(), Shown(graphic.SFMT.text).c_str(),
                 graphic.SDLVL.value, graphic.SALVL.value, graphic.SLOC.Row(), graphic.SLOC.Column(),
                 document.DataLength(SegmentKind::Graphic, graphic.index));
    records.Print(PartKind::Graphic, graphic.index);
  }
  for (const TextSubheader& text : document.texts) {
    if (!text.parsed) continue;
    std::fprintf(out, "  text %u: \"%s\" %s, %u bytes\n", text.index, Shown(text.TXTITL.text).c_str(),
                 Shown(text.TXTFMT.text).c_str(), document.DataLength(SegmentKind::Text, text.index));
    records.Print(PartKind::Text, text.index);
  }
  for (const DataExtensionSubheader& extension : document.dataExtensions) {
    if (!extension.parsed) continue;
    std::fprintf(out, "  data extension %u: %s, %u bytes\n", extension.index,
                 Shown(extension.DESID.text).c_str(),
                 document.DataLength(SegmentKind::DataExtension, extension.index));
    records.Print(PartKind::DataExtension, extension.index);
  }
}

void PrintForPeople(std::FILE* out, const std::string& path, const Inspection& file,
                    const RecordPrinter& records) {
  if (!file.document.headerPresent) return;
  PrintFileHeader(out, path, file.document);
  if (file.status == ORB_SUCCESS) std::fprintf(out, "  composite %u x %u\n", file.width, file.height);
  records.Print(PartKind::File, 0);
  PrintSegments(out, file.document, records);
}

struct InfoOptions {
  BatchOptions batch;
  bool json = false, lines = false, records = false;
  std::unique_ptr<RecordDefinitions> definitions;  // made when the command runs
};

void PrintJson(std::FILE* out, const std::string& path, const Inspection& file,
               const RecordLists& records, bool onOneLine, bool inArray) {
  JsonText json(!onOneLine, inArray ? 1 : 0, out);
  if (inArray) std::fputs("  ", out);
  WriteFile(json, InputName(path), file, records);
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

int ShowFile(const InfoOptions& options, const std::string& path, bool inArray, std::FILE* out) {
  Inspection file;
  file.Read(path);
  RequireHostReads(path);
  const RecordLists records(path, *options.definitions);
  if (options.json || options.lines) {
    PrintJson(out, path, file, records, options.lines, inArray);
  } else {
    PrintForPeople(out, path, file, RecordPrinter(out, records, options.records));
  }
  if (file.status == ORB_SUCCESS) return kExitOk;
  if (const std::string why = WhyUnreadable(path); !why.empty())
    return Report("info", path, file.status, why);
  return ReportDocument("info", path, file.document, file.status);
}

int RunInfo(InfoOptions& options, const std::string& folder) {
  if (const std::string problem = TakeDefinitions(folder, options.definitions); !problem.empty())
    return Refuse("info", problem);
  const std::vector<BatchFile> files = FilesOf(options.batch);
  const bool inArray = options.json && !options.lines && files.size() != 1;
  BatchFrame frame;
  if (inArray) frame = {files.empty() ? "[" : "[\n", ",\n", files.empty() ? "]\n" : "\n]\n"};
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
  command.Runs(line.work, [options, &line] { return RunInfo(*options, line.records); });
}

}  // namespace tool
