// orbntf render: the composite display as a picture, through the filter exports as a host calls them.
#include <unistd.h>

#include <optional>

#include "host/fileformat.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/picture.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct RenderOptions {
  std::string file;
  std::string output;
  bool fixedCanvas = false;
  bool liftDark = false;
  std::string scale = "1/1";
  std::string format;
};

uint32_t LoadFlags(const RenderOptions& options) {
  return (options.fixedCanvas ? kLoadFixedCanvas : 0) | (options.liftDark ? kLoadLiftDarkImages : 0);
}

// The N of "1/N"; 0 when the text is something else.
uint32_t ScaleFactor(const std::string& text) {
  if (text.rfind("1/", 0) != 0) return 0;
  uint32_t factor = 0;
  const std::string digits = text.substr(2);
  return CLI::detail::lexical_cast(digits, factor) && factor <= 65536 ? factor : 0;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// The form that --format or else the output's name asks for; PNG on standard output.
std::optional<PictureForm> FormOf(const RenderOptions& options) {
  if (options.format == "ppm") return PictureForm::Ppm;
  if (options.format == "png" || options.output == "-") return PictureForm::Png;
  if (EndsWith(options.output, ".ppm")) return PictureForm::Ppm;
  if (EndsWith(options.output, ".png")) return PictureForm::Png;
  return std::nullopt;
}

// Receives the canvas rows from the filter.
struct RowSink {
  PictureWriter& writer;
  BoxScaler& scaler;
  uint32_t height;
  bool showProgress;

  static int32_t ORB_CALL Take(void*, KernelBitmap*, uint8_t* row, uint32_t flags, int32_t number,
                               int32_t, void* userData) {
    auto& sink = *static_cast<RowSink*>(userData);
    const uint8_t* rgb = sink.scaler.Take(row);
    if (rgb != nullptr && !sink.writer.PutRow(rgb)) return ORB_SHORT_WRITE;
    if (sink.showProgress && (number % 256 == 0 || (flags & kRowLast) != 0)) {
      std::fprintf(stderr, "\rrow %d of %u%s", number + 1, sink.height,
                   (flags & kRowLast) != 0 ? "\n" : "");
    }
    return ORB_SUCCESS;
  }
};

int32_t AskSize(const RenderOptions& options, const std::u16string& path, HostFileInfo& info) {
  HostLoadOptions loadOptions = {};
  loadOptions.size = kLoadOptionsSize;
  loadOptions.flags = LoadFlags(options);
  HostInformationRecord record = {};
  record.fileName = path.c_str();
  record.file = kNoFile;
  record.info = &info;
  record.options = &loadOptions;
  return fltInfo(&record);
}

int32_t LoadRows(const RenderOptions& options, const std::u16string& path, RowSink& sink) {
  HostLoadOptions loadOptions = {};
  loadOptions.size = kLoadOptionsSize;
  loadOptions.flags = LoadFlags(options);
  KernelBitmap bitmap;
  KernelInitialiseBitmap(&bitmap, kBitmapRecordSize, 0, 0, 24);
  HostLoadRecord record = {};
  record.fileName = path.c_str();
  record.bitmap = &bitmap;
  record.rowCallback = &RowSink::Take;
  record.userData = &sink;
  record.options = &loadOptions;
  record.loadMemory = &FileFormatLoadMemory;
  record.setLoadCallback = &FileFormatSetLoadInfoCallback;
  record.required2224 = 1;
  return fltLoad(&record);
}

int32_t RenderInto(const RenderOptions& options, std::FILE* file, PictureForm form) {
  const std::u16string path = Widen(options.file);
  HostFileInfo info = {};
  LimitWork(options.file, 0);
  if (const int32_t status = AskSize(options, path, info); status != ORB_SUCCESS) return status;
  LimitWork(options.file, uint64_t{info.width} * info.height);
  BoxScaler scaler(info.width, info.height, ScaleFactor(options.scale));
  const auto writer = PictureWriter::Start(form, file, scaler.Width(), scaler.Height());
  RowSink sink{*writer, scaler, info.height, isatty(STDERR_FILENO) != 0};
  const int32_t status = LoadRows(options, path, sink);
  if (status != ORB_SUCCESS) return status;
  return writer->Finish() ? ORB_SUCCESS : ORB_SHORT_WRITE;
}

int RunRender(const RenderOptions& options) {
  if (ScaleFactor(options.scale) == 0) return Refuse("render", "--scale takes 1/N");
  const std::optional<PictureForm> form = FormOf(options);
  if (!form) return Refuse("render", "the output's name ends in .png or .ppm, or --format says which");
  if (options.output == "-")
    return ReportFile("render", options.file, RenderInto(options, stdout, *form));
  if (IsSameFile(options.file, options.output)) return Refuse("render", "the output is the input");
  OutputFile output(options.output);
  std::FILE* file =
      output.TemporaryPath().empty() ? nullptr : std::fopen(output.TemporaryPath().c_str(), "wb");
  if (file == nullptr) return Report("render", options.output, ORB_SHORT_WRITE);
  int32_t status = RenderInto(options, file, *form);
  if (std::fclose(file) != 0 && status == ORB_SUCCESS) status = ORB_SHORT_WRITE;
  if (status == ORB_SUCCESS && !output.Commit()) status = ORB_SHORT_WRITE;
  return ReportFile("render", options.file, status);
}

}  // namespace

void AddRender(CLI::App& app, Work& work) {
  auto options = std::make_shared<RenderOptions>();
  CLI::App* command = app.add_subcommand("render", "Draw the composite display into a picture");
  command->add_option("FILE", options->file, "file to draw")->required();
  command->add_option("-o,--output", options->output, "OUT.png, OUT.ppm, or - for standard output")
      ->required();
  command->add_flag("--fixed-canvas", options->fixedCanvas, "draw on 2048 x 2048 pixels");
  command->add_flag("--lift-dark", options->liftDark, "brighten images that are nearly black");
  command->add_option("--scale", options->scale, "1/N: average squares of N x N pixels");
  command->add_option("--format", options->format, "png or ppm, whatever the output's name")
      ->check(CLI::IsMember({"png", "ppm"}));
  command->callback([&work, options] { work = [options] { return RunRender(*options); }; });
}

}  // namespace tool
