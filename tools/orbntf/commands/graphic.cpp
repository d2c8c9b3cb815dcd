// orbntf graphic: a graphic segment's drawing.
#include <CLI/CLI.hpp>

#include "host/fileformat.h"
#include "hostkit/hostkit.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/output/output.h"
#include "tools/orbntf/output/picture.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct GraphicOptions {
  std::string file, output, format;
  uint32_t index = 0;
  int32_t size = 0;
};

bool WriteBytes(Output& output, const void* bytes, size_t count) {
  std::FILE* stream = output.Stream();
  return stream != nullptr && std::fwrite(bytes, 1, count, stream) == count;
}

int32_t SaveCgm(const VectorHandle& drawing, Output& output) {
  HostSaveOptions saveOptions;
  FileFormatDefaultSaveOptions(&saveOptions, kSaveOptionsSize);
  saveOptions.flags |= kSaveToMemory;
  HGLOBAL memory = nullptr;
  uint32_t count = 0;
  int32_t status = FileFormatSaveDrawingMemory(&memory, &drawing, kFormatCgm, &count, &saveOptions);
  if (status == ORB_SUCCESS) {
    if (!WriteBytes(output, GlobalLock(memory), count)) status = ORB_SHORT_WRITE;
    GlobalUnlock(memory);
  }
  if (memory != nullptr) KernelFreeGlobal(memory, __LINE__, u"graphic");
  return status;
}

int32_t Save(const VectorHandle& drawing, const GraphicOptions& options, Output& output) {
  if (options.format == "cgm") return SaveCgm(drawing, output);
  if (options.format == "png") {
    std::FILE* stream = output.Stream();
    return stream != nullptr ? PaintPng(drawing, options.size, stream) : ORB_SHORT_WRITE;
  }
  if (output.Path().empty()) return ORB_SHORT_WRITE;
  return HostkitSaveDrawing(&drawing, output.Path().c_str(), options.size);
}

int RunGraphic(GraphicOptions& options) {
  const size_t dot = options.output.rfind('.');
  if (options.format.empty() && dot != std::string::npos) options.format = options.output.substr(dot + 1);
  if (options.format != "cgm" && options.format != "svg" && options.format != "png") {
    return Refuse("graphic", "the output's name ends in .cgm, .svg or .png, or --format says which");
  }
  options.file = TakeInput(options.file);
  if (Inputs({options.file}).Hold(options.output)) return Refuse("graphic", "the output is the input");
  const WorkAccount account(options.file);
  const HostWork work;
  Document document;
  const int code = OpenEveryVersion("graphic", document, options.file);
  if (options.index >= Orb_NITFGetGraphicHeaderCount(document.get()))
    return code != kExitOk ? code : Report("graphic", options.file, ORB_NO_SUCH_RECORD);
  const VectorHandle* drawing = Orb_NITFGetVectorHandle(document.get(), options.index);
  if (drawing == nullptr || VectorIsEmpty(drawing) != 0) {
    return Report("graphic", options.file, ORB_EMPTY_DRAWING);
  }
  Output output(options.output, options.format == "svg" ? Output::Way::ByName : Output::Way::InOrder);
  if (!output.Problem().empty())
    return Report("graphic", options.output, ORB_SHORT_WRITE, output.Problem());
  int32_t status = Save(*drawing, options, output);
  if (status == ORB_SUCCESS && !output.Commit()) status = ORB_SHORT_WRITE;
  return Report("graphic", options.output, status, output.Problem());
}

}  // namespace

void AddGraphic(CLI::App& app, Work& work) {
  auto options = std::make_shared<GraphicOptions>();
  CLI::App* command = app.add_subcommand("graphic", "Write a graphic segment's drawing");
  command->add_option("FILE", options->file, "file to read")->required();
  command->add_option("INDEX", options->index, "graphic segment, from 0")->required();
  command->add_option("-o,--output", options->output, "OUT.cgm, OUT.svg, OUT.png or -")->required();
  command->add_option("--format", options->format, "cgm, svg or png, whatever the output's name")
      ->check(CLI::IsMember({"cgm", "svg", "png"}));
  command->add_option("--size", options->size, "pixels of the picture's longer side")
      ->check(CLI::Range(1, 16384));
  command->callback([&work, options] { work = [options] { return RunGraphic(*options); }; });
}

}  // namespace tool
