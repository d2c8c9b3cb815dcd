// orbntf render: the composite display as a picture, through the filter exports as a host calls them, or
// one image by itself.
#include <unistd.h>

#include <cerrno>
#include <sstream>

#include "tools/orbntf/commands/render_rows.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/drawing.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/inspect/segment_picture.h"
#include "tools/orbntf/output/output.h"

namespace tool {
namespace {

uint32_t LoadFlags(const RenderOptions& options) {
  return (options.fixedCanvas ? kLoadFixedCanvas : 0) | (options.liftDark ? kLoadLiftDarkImages : 0);
}

// The region must lie on the canvas: there is nothing to show elsewhere.
bool IsOnCanvas(const RenderOptions& options, uint32_t width, uint32_t height) {
  if (!options.region) return true;
  const Region& part = *options.region;
  return part.row < height && part.height <= height - part.row && part.column < width &&
         part.width <= width - part.column;
}

int32_t DrawComposite(const RenderOptions& options, const std::string& file, Output& output) {
  HostFileInfo info = {};
  if (const int32_t status = AskFilterSize(file, LoadFlags(options), info); status != ORB_SUCCESS)
    return status;
  if (!IsOnCanvas(options, info.width, info.height)) return ORB_INVALID_PARAMETER;
  WorkAccount::AllowPixels(uint64_t{info.width} * info.height);
  std::FILE* stream = output.Stream();
  if (stream == nullptr) return ORB_SHORT_WRITE;
  RowSink sink(options, info.width, info.height, stream);
  const int32_t status = LoadThroughFilter(file, LoadFlags(options), &RowSink::Take, &sink);
  return status == ORB_SUCCESS ? sink.Finish() : status;
}

// Gives a bitmap's rows to the output, the top one first.
int32_t PutBitmap(const RenderOptions& options, const KernelBitmap& bitmap, bool isBottomFirst,
                  Output& output) {
  if (!IsOnCanvas(options, bitmap.width, bitmap.height)) return ORB_INVALID_PARAMETER;
  std::FILE* stream = output.Stream();
  if (stream == nullptr) return ORB_SHORT_WRITE;
  RowSink sink(options, bitmap.width, bitmap.height, stream);
  const auto* rows = reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(bitmap.pixels));
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    const size_t row = isBottomFirst ? bitmap.height - 1 - y : y;
    if (const int32_t put = sink.Put(rows + row * bitmap.bytesPerLine, y); put != ORB_SUCCESS) return put;
  }
  return sink.Finish();
}

int32_t DrawByStandard(const RenderOptions& options, const std::string& file, Output& output) {
  Document document;
  OwnedBitmap canvas;
  uint32_t width = 0, height = 0;
  if (const int32_t status = document.OpenByStandard(file); status != ORB_SUCCESS) return status;
  document.get()->TakeOptions(LoadFlags(options));
  const int32_t status = DrawDocument(file, document, canvas, width, height);
  return status == ORB_SUCCESS ? PutBitmap(options, canvas.record, true, output) : status;
}

int32_t DrawImage(const RenderOptions& options, const std::string& file, Output& output) {
  Document document;
  const int32_t opened = options.standard ? document.OpenByStandard(file) : document.Open(file);
  if (opened != ORB_SUCCESS) return opened;
  document.get()->liftDarkImages = options.liftDark;
  OwnedBitmap canvas;
  if (const ImageSubheader* image = document.get()->images.At(options.image); image != nullptr)
    WorkAccount::AllowPixels(image->FullWidth().Value() * image->FullHeight().Value());
  const int32_t status = DrawImageAlone(*document.get(), options.image, canvas);
  return status == ORB_SUCCESS ? PutBitmap(options, canvas.record, false, output) : status;
}

int RenderFile(const RenderOptions& options, const std::string& file, const std::string& name) {
  if (Inputs({file}).Hold(name)) return Refuse("render", "the output is the input");
  Output output(name, options.form == PictureForm::Tiff ? Output::Way::ByName : Output::Way::InOrder);
  if (!output.Problem().empty()) return Report("render", name, ORB_SHORT_WRITE, output.Problem());
  errno = 0;
  const WorkAccount account(file);
  const auto draw = !options.segment.empty() ? &DrawImage
                    : options.standard       ? &DrawByStandard
                                             : &DrawComposite;
  const int32_t status = draw(options, file, output);
  if (status == ORB_SHORT_WRITE && errno != 0) output.NoteFailure();
  if (status == ORB_INVALID_PARAMETER && options.region)
    return Report("render", file, status, "--region is not on the picture");
  if (status == ORB_SHORT_WRITE || (status == ORB_SUCCESS && !output.Commit()))
    return Report("render", name, ORB_SHORT_WRITE, output.Problem());
  return ReportFile("render", file, status);
}

// ---------------------------------------------------------------- the command line

bool ParseUnsigned(const std::string& text, uint32_t& value) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos &&
         ParseNumber(text, value);
}

std::string TakeRegion(RenderOptions& options) {
  Region region;
  std::istringstream text(options.regionText + ',');
  bool good = true;
  for (uint32_t* number : {&region.row, &region.column, &region.height, &region.width}) {
    std::string part;
    good = good && std::getline(text, part, ',') && ParseUnsigned(part, *number);
  }
  good = good && text.peek() == EOF && region.height != 0 && region.width != 0;
  options.region = region;
  return good ? "" : "--region takes ROW,COL,HEIGHT,WIDTH";
}

// Takes the options apart; what is wrong with them, empty for nothing.
std::string TakeOptions(RenderOptions& options) {
  if (options.scale.rfind("1/", 0) != 0 || !ParseUnsigned(options.scale.substr(2), options.factor) ||
      options.factor == 0 || options.factor > 65536) {
    return "--scale takes 1/N";
  }
  if (options.output.empty() == options.folder.empty()) return "give either -o or -O";
  if (!options.segment.empty() && (options.segment.rfind("image:", 0) != 0 ||
                                   !ParseUnsigned(options.segment.substr(6), options.image))) {
    return "--segment takes image:N";
  }
  const size_t dot = options.output.rfind('.');
  const std::string ending = dot == std::string::npos ? "" : options.output.substr(dot + 1);
  const bool byName = options.format.empty() && options.folder.empty() && options.output != "-";
  const auto form = PictureFormOf(byName ? ending : options.format.empty() ? "png" : options.format);
  if (!form) return "the output's name ends in .png, .ppm, .jpg or .tif, or --format says which";
  options.form = *form;
  return options.regionText.empty() ? "" : TakeRegion(options);
}

int RunRender(RenderOptions& options) {
  if (const std::string problem = TakeOptions(options); !problem.empty())
    return Refuse("render", problem);
  const std::vector<BatchFile> files = FilesOf(options.batch);
  options.progress = files.size() == 1 && isatty(STDERR_FILENO) != 0;
  if (options.folder.empty()) {
    if (files.size() != 1) return Refuse("render", "several files go into a folder: -O");
    return RenderFile(options, OnlyPath(files), options.output);
  }
  return BatchOutputs(options.batch, options.folder, EndingOf(options.form))
      .Run("render", files, [&](const BatchFile& file, const std::string& output) {
        return RenderFile(options, file.path, output);
      });
}

}  // namespace

void AddRender(const Command& top, CommandLine& line) {
  auto options = std::make_shared<RenderOptions>();
  const Command command = top.Add("render", "Draw the composite display into a picture");
  AddBatchOptions(command, options->batch);
  AddKeepEnding(command, options->batch);
  command.Take("-o,--output", options->output,
               "OUT.png, OUT.ppm, OUT.jpg, OUT.tif, or - for standard output");
  command.Take("-O,--output-folder", options->folder, "write a picture for each file there");
  command.Take("--format", options->format, "png, ppm, jpeg or tiff, whatever the output's name")
      .OneOf({"png", "ppm", "jpeg", "tiff"});
  command.Flag("--fixed-canvas", options->fixedCanvas, "draw on 2048 x 2048 pixels");
  command.Flag("--lift-dark", options->liftDark, "brighten images that are nearly black");
  command.Flag("--standard", options->standard,
               "show what the published standard says where the module differs from it");
  command.Take("--scale", options->scale, "1/N: average squares of N x N pixels");
  command.Take("--segment", options->segment, "image:N: draw one image alone");
  command.Take("--region", options->regionText, "ROW,COL,HEIGHT,WIDTH: draw a part");
  command.Runs(line.work, [options] { return RunRender(*options); });
}

}  // namespace tool
