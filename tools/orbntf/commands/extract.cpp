// orbntf extract: what a file holds, as it is stored.
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>

#include "Common/Bounds.h"
#include "core/check/rule.h"
#include "core/format/band_words.h"
#include "core/format/records.h"
#include "core/format/words.h"
#include "core/pictures/sample_files.h"
#include "core/place/georeference.h"
#include "core/place/placed.h"
#include "hostkit/hostkit.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/output/beside.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct ExtractOptions {
  std::string file, part, output, folder, format;
  uint32_t reduce = 0;
  std::vector<uint64_t> region;
  std::vector<uint32_t> bands;
  bool all = false, cloud = false, world = false;
};

// What a part is written as.
struct Extraction {
  const SurveyedPart* image = nullptr;  // samples, or
  std::string bytes;
  std::string form;
  std::string output;
  const SurveyedPart* whole = nullptr;  // or all of a segment's data
};

int Fail(const ExtractOptions& options, int32_t status, const std::string& words) {
  return Report("extract", options.file, status, words);
}

bool Write(std::FILE* stream, const std::string& form, const SampleImage& image,
           const TiffOptions& options) {
  if (form == "png") return WritePng(stream, image);
  if (form == "npy") return WriteNpy(stream, image);
  return form == "raw" ? WriteRaw(stream, image) : WriteTiff(stream, image, options);
}

bool Write(std::FILE* stream, const std::string& bytes) {
  return std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size();
}

// A segment's data, as much of it as the file has, piece by piece.
bool WriteData(std::FILE* stream, const Survey& survey, const SurveyedPart& part) {
  constexpr uint64_t kPiece = 1 << 20;
  const PartBytes data(survey.file, part.dataOffset, part.dataLength);
  for (uint64_t at = 0; at < data.Size(); at += kPiece) {
    if (!Write(stream, data.Piece(at, kPiece))) return false;
  }
  return true;
}

SampleRequest RequestOf(const ExtractOptions& options) {
  SampleRequest request;
  request.reduce = options.reduce;
  request.bands = options.bands;
  if (!options.region.empty()) {
    request.row = options.region[0];
    request.column = options.region[1];
    request.rows = options.region[2];
    request.columns = options.region[3];
  }
  return request;
}

const RecordDefinitions& Definitions() {
  static const RecordDefinitions definitions;
  return definitions;
}

// What is said of the bands that are asked for, a line each; empty where nothing is.
std::string DescriptionOf(const ExtractOptions& options, const SurveyedPart& image, uint32_t bands) {
  const std::vector<std::string> words = WordsOfBands(image, Definitions());
  std::string lines;
  bool isSaid = false;
  for (uint32_t i = 0; i < bands; ++i) {
    const size_t band = options.bands.empty() ? i : options.bands[i];
    const std::string said = band < words.size() ? words[band] : "";
    isSaid = isSaid || !said.empty();
    lines += "band " + std::to_string(i) + ": " + Printable(said) + "\n";
  }
  return isSaid ? lines.substr(0, lines.size() - 1) : "";
}

// Where the samples of an extraction lie on earth; none where nothing tells it.
std::optional<Georeference> ReferenceOf(const ExtractOptions& options, const Survey& survey,
                                        const SurveyedPart& image, const SampleImage& samples) {
  const Placed placed = PlaceOf(image, survey.Header(), Definitions());
  if (placed.model == nullptr || samples.width == 0 || samples.height == 0) return std::nullopt;
  const SampleRequest request = RequestOf(options);
  PlacedPiece piece;
  piece.row = static_cast<double>(request.row);
  piece.column = static_cast<double>(request.column);
  piece.rows = samples.height;
  piece.columns = samples.width;
  piece.rowSize = piece.columnSize = std::exp2(request.reduce);
  return GeoreferenceOf(*placed.model, piece);
}

int WriteExtraction(const ExtractOptions& options, const Survey& survey, const Extraction& wanted) {
  SampleImage image;
  TiffOptions tiff;
  if (wanted.image != nullptr) {
    const SampleFault fault = ReadSamples(survey, *wanted.image, RequestOf(options), image);
    if (fault.Met()) return Fail(options, fault.Code(), wanted.image->Title() + ": " + fault.words);
    const std::string problem = WhyNotAs(wanted.form, image);
    if (!problem.empty())
      return Refuse("extract", wanted.image->Title() + ": " + problem + "; write .tif");
    tiff.isCloud = options.cloud;
    if (wanted.form == "tif") tiff.description = DescriptionOf(options, *wanted.image, image.bands);
    if (wanted.form == "tif" || options.world)
      tiff.reference = ReferenceOf(options, survey, *wanted.image, image);
    const std::string why = options.world ? WhyNoWorld(tiff.reference) : "";
    if (!why.empty()) return Refuse("extract", wanted.image->Title() + ": " + why);
  }
  Output output(wanted.output, wanted.form == "tif" ? Output::Way::ByName : Output::Way::InOrder);
  errno = 0;
  std::FILE* stream = output.Problem().empty() ? output.Stream() : nullptr;
  const bool written =
      stream != nullptr && (wanted.image != nullptr   ? Write(stream, wanted.form, image, tiff)
                            : wanted.whole != nullptr ? WriteData(stream, survey, *wanted.whole)
                                                      : Write(stream, wanted.bytes));
  if (stream != nullptr && !written && errno != 0) output.NoteFailure();
  const bool isDone = written && output.Commit();
  if (isDone && options.world && wanted.image != nullptr)
    return WriteBeside("extract", wanted.output, *tiff.reference);
  return Report("extract", wanted.output, isDone ? ORB_SUCCESS : ORB_SHORT_WRITE, output.Problem());
}

// ---------------------------------------------------------------- parts

struct KindWord {
  const char* word;
  PartKind kind;
  const char* ending;
};
constexpr KindWord kKinds[] = {{"image", PartKind::Image, "tif"},
                               {"graphic", PartKind::Graphic, "cgm"},
                               {"text", PartKind::Text, "txt"},
                               {"data", PartKind::DataExtension, "bin"}};

// The n-th record of a tag in the whole file; -1 for what is not there.
bool FindRecord(const Survey& survey, const std::string& tag, int64_t number, std::string& bytes) {
  const RecordDefinitions none;
  for (const SurveyedPart& part : survey.parts) {
    for (TaggedRecord& record : RecordsOf(part, none)) {
      if (TrimmedText(record.tag) != tag || --number > 0) continue;
      bytes = std::move(record.bytes);
      return true;
    }
  }
  return false;
}

// Finds what "image:0" or "record:TAG" names. An exit code.
int FindPart(const ExtractOptions& options, const Survey& survey, Extraction& wanted) {
  const size_t colon = options.part.find(':');
  const std::string kind = options.part.substr(0, colon);
  const std::string name = colon == std::string::npos ? "" : options.part.substr(colon + 1);
  if (kind == "record" && !name.empty()) {
    const size_t second = name.find(':');
    const int64_t number = second == std::string::npos ? 1 : DigitsOf(name.substr(second + 1));
    if (number < 1) return Refuse("extract", "records of a tag are counted from 1: record:TAG:2");
    if (!FindRecord(survey, name.substr(0, second), number, wanted.bytes))
      return Fail(options, ORB_NO_SUCH_RECORD,
                  "no record " + Printable(name) + "; info --records lists them");
    return kExitOk;
  }
  for (const KindWord& word : kKinds) {
    const int64_t index = DigitsOf(name);
    if (kind != word.word || index < 0) continue;
    const SurveyedPart* part = survey.Find(word.kind, static_cast<uint32_t>(index));
    if (part == nullptr)
      return Fail(options, ORB_NO_SUCH_RECORD, "no " + options.part + "; info lists what is there");
    (part->kind == PartKind::Image ? wanted.image : wanted.whole) = part;
    if (part->kind != PartKind::Image && !survey.HoldsData(*part))
      return Fail(options, ORB_SHORT_READ, part->Title() + " ends behind the file");
    return kExitOk;
  }
  return Refuse("extract", "a part is image:N, graphic:N, text:N, data:N or record:TAG");
}

std::string FormOf(const ExtractOptions& options) {
  if (!options.format.empty()) return options.format;
  const size_t dot = options.output.rfind('.');
  const std::string ending = dot == std::string::npos ? "" : options.output.substr(dot + 1);
  return ending == "tiff" ? "tif" : ending;
}

int ExtractOne(const ExtractOptions& options, const Survey& survey) {
  Extraction wanted;
  wanted.output = options.output;
  if (Inputs({options.file}).Hold(wanted.output))
    return Refuse("extract", "the output is the input; give another name");
  if (const int code = FindPart(options, survey, wanted); code != kExitOk) return code;
  if (wanted.image == nullptr && options.reduce != 0) return Refuse("extract", "--reduce is for image:N");
  wanted.form = wanted.image == nullptr ? "" : FormOf(options);
  if (options.cloud && wanted.form != "tif") return Refuse("extract", "--cog is for .tif");
  if (options.world && (wanted.image == nullptr || wanted.output == "-"))
    return Refuse("extract", "--world is for samples that get a name");
  const std::string why = options.world ? WhyNotBeside(Inputs({options.file}), wanted.output) : "";
  if (!why.empty()) return Refuse("extract", why);
  if (wanted.image != nullptr && !IsOneOf(wanted.form, "tif|png|raw|npy"))
    return Refuse("extract",
                  "the output's name ends in .tif, .png, .npy or .raw, or --format says which");
  return WriteExtraction(options, survey, wanted);
}

// A tag as a part of a file's name.
std::string NameOfTag(const std::string& tag) {
  std::string name(TrimmedText(tag));
  for (char& c : name) {
    if (std::isalnum(static_cast<uint8_t>(c)) == 0) c = '_';
  }
  return name.empty() ? "bytes" : name;
}

// Everything that a file holds as jobs, without the bytes of what stands in the file as it is.
std::vector<Extraction> AllJobs(const ExtractOptions& options, const Survey& survey) {
  const RecordDefinitions none;
  std::vector<Extraction> jobs;
  uint32_t records = 0;
  for (const SurveyedPart& part : survey.parts) {
    for (TaggedRecord& record : RecordsOf(part, none)) {
      const std::string name =
          "record-" + std::to_string(++records) + "-" + NameOfTag(record.tag) + ".bin";
      jobs.push_back({nullptr, std::move(record.bytes), "", options.folder + "/" + name});
    }
    for (const KindWord& word : kKinds) {
      if (part.kind != word.kind) continue;
      const bool isImage = part.kind == PartKind::Image;
      const std::string ending = isImage && !options.format.empty() ? options.format : word.ending;
      jobs.push_back({isImage ? &part : nullptr, "", ending,
                      options.folder + "/" + word.word + "-" + std::to_string(part.index) + "." + ending,
                      isImage ? nullptr : &part});
    }
  }
  return jobs;
}

// Bytes that an extraction writes, as far as its header tells.
uint64_t BytesOf(const Extraction& wanted) {
  if (wanted.whole != nullptr) return wanted.whole->dataLength;
  if (wanted.image == nullptr) return wanted.bytes.size();
  const auto side = [&](const char* field) {
    return static_cast<uint64_t>(std::clamp<int64_t>(wanted.image->Number(field), 0, INT32_MAX));
  };
  const auto bands = static_cast<uint64_t>(std::clamp<int64_t>(wanted.image->Bands(), 0, 99999));
  const auto bits = static_cast<uint64_t>(std::clamp<int64_t>(wanted.image->Number("NBPP"), 1, 64));
  const CheckedSize samples = CheckedSize(side("NROWS")) * side("NCOLS") * bands;
  return samples.Within(uint64_t{1} << 56) ? samples.Value() * ((bits + 7) / 8) : uint64_t{1} << 56;
}

// All that is written is weighed against the file: what is more than it is worth is left out, and said
// so.
int ExtractAll(const ExtractOptions& options, const Survey& survey) {
  constexpr uint64_t kBytes = 1 << 30, kBytesPerByte = 256;
  constexpr uint64_t kFiles = 4096, kBytesPerFile = 1024;
  uint64_t bytesLeft = kBytes + kBytesPerByte * survey.file.Size();
  uint64_t filesLeft = kFiles + survey.file.Size() / kBytesPerFile;
  std::vector<Extraction> jobs = AllJobs(options, survey);
  const Inputs inputs({options.file});
  for (const Extraction& wanted : jobs) {
    if (inputs.Hold(wanted.output)) return Refuse("extract", "an output is the input: " + wanted.output);
  }
  std::error_code error;
  std::filesystem::create_directories(options.folder, error);
  SyncTogether together(options.folder);
  int code = kExitOk;
  size_t leftOut = 0;
  for (const Extraction& wanted : jobs) {
    const uint64_t bytes = BytesOf(wanted);
    if (filesLeft == 0 || bytes > bytesLeft) {
      ++leftOut;
      continue;
    }
    --filesLeft;
    bytesLeft -= bytes;
    code = std::max(code, WriteExtraction(options, survey, wanted));
  }
  if (leftOut != 0)
    code = std::max(code, Fail(options, kHostOverBudget,
                               std::to_string(leftOut) + " of " + std::to_string(jobs.size()) +
                                   " parts are left out: together they are more than the file is worth; "
                                   "extract them one by one"));
  if (together.Finish()) return code;
  return std::max(code, Report("extract", options.folder, ORB_SHORT_WRITE, WordsOfErrno(errno)));
}

// The account of a command: what its file's bytes are worth, and the largest image that it asks for.
void AllowImages(const ExtractOptions& options, const Survey& survey) {
  uint64_t pixels = 0;
  for (const SurveyedPart& part : survey.parts) {
    if (part.kind != PartKind::Image ||
        (!options.all && options.part != "image:" + std::to_string(part.index)))
      continue;
    pixels = std::max(pixels, SamplesAskedFor(part, RequestOf(options)));
  }
  WorkAccount::AllowPixels(pixels);
}

int RunExtract(ExtractOptions& options) {
  const bool whole =
      options.all && options.part.empty() && options.output.empty() && !options.folder.empty();
  const bool one = !options.all && !options.output.empty() && options.folder.empty();
  if (!whole && !one) return Refuse("extract", "give -o and, of several, a PART; or --all and -O");
  const bool isPiece = !options.region.empty() || !options.bands.empty();
  if (isPiece && (whole || (!options.part.empty() && options.part.rfind("image:", 0) != 0)))
    return Refuse("extract", "--region and --bands are for samples of image:N");
  if (!options.region.empty() && (options.region[2] == 0 || options.region[3] == 0))
    return Refuse("extract", "--region: a height and a width are not 0");
  if (whole && (options.cloud || options.world))
    return Refuse("extract", "--cog and --world are for samples of image:N");
  options.file = TakeInput(options.file);
  const WorkAccount account(options.file);
  const Survey survey(options.file);
  if (!survey.file.IsOpen()) return ReportFile("extract", options.file, ORB_SHORT_READ);
  if (one && options.part.empty()) {
    const uint32_t images = survey.Count(PartKind::Image);
    if (images != 1)
      return Refuse("extract", "the file has " + std::to_string(images) + " images: name a PART, " +
                                   (images == 0 ? "text:0" : "image:0") +
                                   " or its like; info lists them");
    options.part = "image:0";
  }
  AllowImages(options, survey);
  return whole ? ExtractAll(options, survey) : ExtractOne(options, survey);
}

}  // namespace

void AddExtract(const Command& top, CommandLine& line) {
  auto options = std::make_shared<ExtractOptions>();
  const Command command =
      top.Add("extract", "Write samples, texts, drawings, data and records as they are stored");
  command.Take("FILE", options->file, "file to read").Required();
  command.Take("PART", options->part,
               "image:N, graphic:N, text:N, data:N, record:TAG or record:TAG:N; else the only image");
  command.Take("-o,--output", options->output,
               "OUT.tif, OUT.png, OUT.npy or OUT.raw for samples; - for standard output");
  command.Flag("--all", options->all, "write everything");
  command.Take("-O,--output-folder", options->folder, "where to");
  command.Take("--format", options->format, "tif, png, npy or raw, whatever the output's name")
      .OneOf({"tif", "png", "npy", "raw"});
  command.Flag("--cog", options->cloud,
               "with .tif: tiles and smaller pictures, a cloud-optimised GeoTIFF");
  command.Flag("--world", options->world, "write a world file and a .prj file beside it");
  command.Take("--reduce", options->reduce, "N: samples at 1/2^N of the image's size");
  command.Take("--region", options->region, "ROW,COLUMN,HEIGHT,WIDTH of the image that is wanted")
      .List(4);
  command.Take("--bands", options->bands, "bands that are wanted, from 0: 2,1,0").List();
  command.Runs(line.work, [options] { return RunExtract(*options); });
}

}  // namespace tool
