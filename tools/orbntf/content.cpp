// orbntf text and graphic: segment content.
#include <cstdio>

#include "host/fileformat.h"
#include "hostkit/hostkit.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct ContentOptions {
  std::string file, output;
  uint32_t index = 0;
  int32_t size = 0;
};

// Writes bytes to a file that appears when complete, or to standard output for "-" and "".
int32_t WriteOut(const std::string& output, const void* bytes, size_t count) {
  if (output.empty() || output == "-") {
    return std::fwrite(bytes, 1, count, stdout) == count && std::fflush(stdout) == 0 ? ORB_SUCCESS
                                                                                     : ORB_SHORT_WRITE;
  }
  OutputFile file(output);
  std::FILE* stream =
      file.TemporaryPath().empty() ? nullptr : std::fopen(file.TemporaryPath().c_str(), "wb");
  if (stream == nullptr) return ORB_SHORT_WRITE;
  const bool written = std::fwrite(bytes, 1, count, stream) == count;
  return std::fclose(stream) == 0 && written && file.Commit() ? ORB_SUCCESS : ORB_SHORT_WRITE;
}

int RunText(const ContentOptions& options) {
  Document document;
  if (const int code = OpenDocument("text", document, options.file); code != kExitOk) return code;
  uint32_t length = 0;
  int32_t status = Orb_NITFGetTextSegment(document.get(), options.index, nullptr, &length);
  std::string text(size_t{length} + 1, '\0');
  if (status == ORB_SUCCESS)
    status = Orb_NITFGetTextSegment(document.get(), options.index, text.data(), nullptr);
  if (const int code = Report("text", options.file, status); code != kExitOk) return code;
  if (IsSameFile(options.file, options.output)) return Refuse("text", "the output is the input");
  return Report("text", options.output, WriteOut(options.output, text.data(), length));
}

// ---------------------------------------------------------------- graphics

int32_t SaveCgm(const VectorHandle& drawing, const std::string& output) {
  HostSaveOptions saveOptions;
  FileFormatDefaultSaveOptions(&saveOptions, kSaveOptionsSize);
  saveOptions.flags |= kSaveToMemory;
  HGLOBAL memory = nullptr;
  uint32_t count = 0;
  int32_t status = FileFormatSaveDrawingMemory(&memory, &drawing, kFormatCgm, &count, &saveOptions);
  if (status == ORB_SUCCESS) {
    status = WriteOut(output, GlobalLock(memory), count);
    GlobalUnlock(memory);
  }
  if (memory != nullptr) KernelFreeGlobal(memory, __LINE__, u"content");
  return status;
}

int32_t SavePicture(const VectorHandle& drawing, const std::string& output, int32_t form,
                    int32_t longerSide) {
  OutputFile file(output);
  if (file.TemporaryPath().empty()) return ORB_SHORT_WRITE;
  const int32_t status = HostkitSaveDrawing(&drawing, file.TemporaryPath().c_str(), form, longerSide);
  if (status != ORB_SUCCESS) return status;
  return file.Commit() ? ORB_SUCCESS : ORB_SHORT_WRITE;
}

int RunGraphic(const ContentOptions& options) {
  const size_t dot = options.output.rfind('.');
  const std::string end = dot == std::string::npos ? "" : options.output.substr(dot);
  if (end != ".cgm" && end != ".svg" && end != ".png") {
    return Refuse("graphic", "the output's name ends in .cgm, .svg or .png");
  }
  if (IsSameFile(options.file, options.output)) return Refuse("graphic", "the output is the input");
  Document document;
  if (const int code = OpenDocument("graphic", document, options.file); code != kExitOk) return code;
  if (options.index >= Orb_NITFGetGraphicHeaderCount(document.get())) {
    return Report("graphic", options.file, ORB_NO_SUCH_RECORD);
  }
  const VectorHandle* drawing = Orb_NITFGetVectorHandle(document.get(), options.index);
  if (drawing == nullptr || VectorIsEmpty(drawing) != 0) {
    return Report("graphic", options.file, ORB_EMPTY_DRAWING);
  }
  const int32_t status = end == ".cgm"
                             ? SaveCgm(*drawing, options.output)
                             : SavePicture(*drawing, options.output,
                                           end == ".svg" ? kDrawingSvg : kDrawingPng, options.size);
  return Report("graphic", options.output, status);
}

}  // namespace

void AddContent(CLI::App& app, Work& work) {
  auto text = std::make_shared<ContentOptions>();
  CLI::App* command = app.add_subcommand("text", "Print a text segment");
  command->add_option("FILE", text->file, "file to read")->required();
  command->add_option("INDEX", text->index, "text segment, from 0");
  command->add_option("-o,--output", text->output, "file to write instead");
  command->callback([&work, text] { work = [text] { return RunText(*text); }; });

  auto graphic = std::make_shared<ContentOptions>();
  command = app.add_subcommand("graphic", "Write a graphic segment's drawing");
  command->add_option("FILE", graphic->file, "file to read")->required();
  command->add_option("INDEX", graphic->index, "graphic segment, from 0")->required();
  command->add_option("-o,--output", graphic->output, "OUT.cgm, OUT.svg or OUT.png")->required();
  command->add_option("--size", graphic->size, "pixels of the picture's longer side")
      ->check(CLI::Range(1, 16384));
  command->callback([&work, graphic] { work = [graphic] { return RunGraphic(*graphic); }; });
}

}  // namespace tool
