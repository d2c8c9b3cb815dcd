// orbntf graphic: a graphic segment's drawing.
#include <algorithm>

#include "core/format/survey.h"
#include "core/pictures/load.h"
#include "core/pictures/picture.h"
#include "media/drawing/metafile.h"
#include "media/drawing/picture.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/explain.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct GraphicOptions {
  std::string file, output, format;
  uint32_t index = 0;
  int32_t size = 0;
};

media::Outcome Save(const media::Drawing& drawing, const GraphicOptions& options, Output& output) {
  if (options.format == "svg")
    return output.Path().empty() ? media::Outcome::NotTaken
                                 : media::SaveSvg(drawing, output.Path().c_str(), options.size);
  std::FILE* stream = output.Stream();
  if (stream == nullptr) return media::Outcome::NotTaken;
  if (options.format == "png") return PaintPng(drawing, options.size, stream);
  const std::string bytes = media::EncodeCgm(drawing);
  return std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size() ? media::Outcome::Ok
                                                                            : media::Outcome::NotTaken;
}

// The drawing of a graphic segment; a status of the module where there is none.
int32_t ReadDrawing(const GraphicOptions& options, media::Drawing& drawing) {
  const Survey survey(options.file);
  const SurveyedPart* part = survey.Find(PartKind::Graphic, options.index);
  if (part == nullptr) return ORB_NO_SUCH_RECORD;
  const media::Outcome outcome = LoadDrawing(survey.Data(*part), drawing);
  const bool isEmpty = std::all_of(drawing.layers.begin(), drawing.layers.end(),
                                   [](const media::Layer& layer) { return layer.objects.empty(); });
  return outcome != media::Outcome::Ok || isEmpty ? ORB_EMPTY_DRAWING : ORB_SUCCESS;
}

int RunGraphic(GraphicOptions& options) {
  const size_t dot = options.output.rfind('.');
  if (options.format.empty() && dot != std::string::npos) options.format = options.output.substr(dot + 1);
  if (options.format != "cgm" && options.format != "svg" && options.format != "png") {
    return Refuse("graphic", "the output's name ends in .cgm, .svg or .png, or --format says which");
  }
  options.file = TakeInput(options.file);
  if (Inputs({options.file}).Hold(options.output))
    return Refuse("graphic", "the output is the input; give another name");
  const WorkAccount account(options.file);
  media::Drawing drawing;
  if (const int32_t status = ReadDrawing(options, drawing); status != ORB_SUCCESS) {
    const std::string why = WhyUnreadable(options.file);
    return Report("graphic", options.file, why.empty() ? status : ORB_SHORT_READ, why);
  }
  Output output(options.output, options.format == "svg" ? Output::Way::ByName : Output::Way::InOrder);
  if (!output.Problem().empty())
    return Report("graphic", options.output, ORB_SHORT_WRITE, output.Problem());
  auto status = static_cast<int32_t>(Save(drawing, options, output));
  if (status == ORB_SUCCESS && !output.Commit()) status = ORB_SHORT_WRITE;
  return Report("graphic", options.output, status, output.Problem());
}

}  // namespace

void AddGraphic(const Command& top, CommandLine& line) {
  auto options = std::make_shared<GraphicOptions>();
  const Command command = top.Add("graphic", "Write a graphic segment's drawing");
  command.Take("FILE", options->file, "file to read").Required();
  command.Take("INDEX", options->index, "graphic segment, from 0").Required();
  command.Take("-o,--output", options->output, "OUT.cgm, OUT.svg, OUT.png or -").Required();
  command.Take("--format", options->format, "cgm, svg or png, whatever the output's name")
      .OneOf({"cgm", "svg", "png"});
  command.Take("--size", options->size, "pixels of the picture's longer side").Within(1, 16384);
  command.Runs(line.work, [options] { return RunGraphic(*options); });
}

}  // namespace tool
