// orbntf render: a file's composite, or one image of it, as a picture.
#include "tools/orbntf/commands/render.h"

#include <unistd.h>

#include <sstream>

#include "orbntf/orbntf.h"
#include "tools/orbntf/output/beside.h"

namespace tool {
namespace {

int RenderFile(const RenderOptions& options, const std::string& file, const std::string& name) {
  if (Inputs({file}).Hold(name)) return Refuse("render", "the output is the input; give another name");
  if (const std::string why = options.world ? WhyNotBeside(*options.inputs, name) : ""; !why.empty())
    return Refuse("render", why);
  Output output(name, options.form == PictureForm::Tiff ? Output::Way::ByName : Output::Way::InOrder);
  if (!output.Problem().empty()) return Report("render", name, ORB_SHORT_WRITE, output.Problem());
  return (options.module ? RenderByModule : RenderView)(options, file, output);
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

bool TakeStretch(RenderOptions& options) {
  const std::string& text = options.stretchText;
  if (text == "none") options.stretch.by = Stretch::By::None;
  if (text == "minmax") options.stretch.by = Stretch::By::MinMax;
  if (text.empty() || text == "none" || text == "minmax" || text == "percent") return true;
  uint32_t low = 0, high = 0;
  const size_t comma = text.find(',');
  if (text.rfind("percent:", 0) != 0 || comma == std::string::npos ||
      !ParseUnsigned(text.substr(8, comma - 8), low) || !ParseUnsigned(text.substr(comma + 1), high) ||
      low >= high || high > 100)
    return false;
  options.stretch = {Stretch::By::Percent, static_cast<double>(low), static_cast<double>(high), false};
  return true;
}

// Takes the options apart; what is wrong with them, empty for nothing.
std::string TakeOptions(RenderOptions& options) {
  if (options.scale.rfind("1/", 0) != 0 || !ParseUnsigned(options.scale.substr(2), options.factor) ||
      options.factor == 0 || options.factor > 65536) {
    return "--scale takes 1/N";
  }
  if (options.output.empty() == options.folder.empty()) return "give either -o or -O";
  if (!options.module && (options.fixedCanvas || options.liftDark))
    return "--fixed-canvas and --lift-dark are the module's: add --module";
  if (options.module &&
      (options.size != 0 || options.fast || !options.bands.empty() || !options.stretchText.empty()))
    return "--size, --fast, --bands and --stretch are not the module's";
  if (options.size != 0 && options.factor != 1)
    return "--size and --scale both say how large the picture is: give one; --region is cut out first";
  if (!TakeStretch(options)) return "--stretch takes none, minmax, percent or percent:LOW,HIGH";
  if (options.standard)
    std::fputs("orbntf: render: --standard is what is drawn now; it will go in 0.3.0\n", stderr);
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
  if (options.cloud && options.form != PictureForm::Tiff) return "--cog is for .tif";
  if (options.world && options.output == "-") return "--world is for pictures that get a name";
  if (options.module && (options.cloud || options.world)) return "--cog and --world are not the module's";
  return options.regionText.empty() ? "" : TakeRegion(options);
}

int RunRender(RenderOptions& options) {
  if (const std::string problem = TakeOptions(options); !problem.empty())
    return Refuse("render", problem);
  const std::vector<BatchFile> files = FilesOf(options.batch);
  options.inputs = std::make_shared<Inputs>();
  for (const BatchFile& file : files) options.inputs->Add(file.path);
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

void ShowProgress(uint32_t row, uint32_t rows) {
  if (row % 256 == 0 || row + 1 == rows)
    std::fprintf(stderr, "\rrow %u of %u%s", row + 1, rows, row + 1 == rows ? "\n" : "");
}

void AddRender(const Command& top, CommandLine& line) {
  auto options = std::make_shared<RenderOptions>();
  const Command command = top.Add("render", "Draw the composite, or one image, into a picture");
  AddBatchOptions(command, options->batch);
  AddKeepEnding(command, options->batch);
  command.Take("-o,--output", options->output,
               "OUT.png, OUT.ppm, OUT.jpg, OUT.tif, or - for standard output");
  command.Take("-O,--output-folder", options->folder, "write a picture for each file there");
  command.Take("--format", options->format, "png, ppm, jpeg or tiff, whatever the output's name")
      .OneOf({"png", "ppm", "jpeg", "tiff"});
  command.Take("--region", options->regionText, "ROW,COL,HEIGHT,WIDTH: draw a part");
  command.Take("--scale", options->scale, "1/N: average squares of N x N pixels");
  command.Take("--size", options->size, "N: the longer side has N pixels, means of what they stand for")
      .Within(1, 65535);
  command.Flag("--fast", options->fast, "smaller pictures take the nearest pixels, and read no more");
  command.Take("--segment", options->segment, "image:N: draw one image alone");
  command.Take("--bands", options->bands, "R,G,B or one band, from 0").List();
  command.Take("--stretch", options->stretchText,
               "of samples of more than 8 bits: percent:LOW,HIGH (2,98), minmax or none");
  command.Flag("--stretch-each", options->stretchEach, "stretch each band by itself");
  command.Flag("--cog", options->cloud,
               "with .tif: tiles and smaller pictures, a cloud-optimised GeoTIFF");
  command.Flag("--world", options->world, "write a world file and a .prj file beside it");
  command.Flag("--partial", options->partial, "exit with 0 also where a segment could not be drawn");
  command.Flag("--module", options->module, "draw what the module gives its host");
  command.Flag("--fixed-canvas", options->fixedCanvas, "with --module: draw on 2048 x 2048 pixels");
  command.Flag("--lift-dark", options->liftDark, "with --module: brighten images that are nearly black");
  command.Flag("--standard", options->standard, "what is drawn anyway; goes in 0.3.0");
  command.Runs(line.work, [options] { return RunRender(*options); });
}

}  // namespace tool
