// orbntf new and append: documents from pictures, metafiles and texts.
#include <cmath>

#include "tools/orbntf/document.h"
#include "tools/orbntf/load.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

// One segment to add, in the order of the command line.
struct Item {
  std::string option;  // --image, --graphic or --text
  std::string path;
  int32_t quality = 40;
  bool placed = false;
  int32_t row = 0, column = 0;
};

struct ComposeOptions {
  std::string file, output;
  std::vector<std::string> images, graphics, texts, places;
  std::vector<int32_t> qualities;
};

bool ParsePlace(const std::string& text, Item& item) {
  const size_t comma = text.find(',');
  item.placed = true;
  return comma != std::string::npos && CLI::detail::lexical_cast(text.substr(0, comma), item.row) &&
         CLI::detail::lexical_cast(text.substr(comma + 1), item.column);
}

// --quality and --at belong to the segment in front of them.
bool CollectItems(const CLI::App& command, const ComposeOptions& options, std::vector<Item>& items,
                  std::string& problem) {
  size_t image = 0, graphic = 0, text = 0, place = 0, quality = 0;
  for (const CLI::Option* option : command.parse_order()) {
    const std::string name = option->get_name();
    if (name == "--image") items.push_back({name, options.images[image++]});
    if (name == "--graphic") items.push_back({name, options.graphics[graphic++]});
    if (name == "--text") items.push_back({name, options.texts[text++]});
    const bool modifier = name == "--at" || name == "--quality";
    if (modifier && (items.empty() || items.back().option == "--text")) {
      problem = name + " follows the image or graphic that it is for";
      return false;
    }
    if (name == "--quality") items.back().quality = options.qualities[quality++];
    if (name == "--at" && !ParsePlace(options.places[place++], items.back())) {
      problem = "--at takes ROW,COL";
      return false;
    }
  }
  return true;
}

int32_t AppendPicture(Document& document, const Item& item) {
  constexpr uint32_t kRgb = kFormatJpegRgb;
  Bitmap bitmap;
  if (const int32_t status = bitmap.Load(item.path); status != ORB_SUCCESS) return status;
  const uint32_t depth = bitmap.record.bitsPerPixel == 8 ? 8 : 24;
  const int32_t status =
      Orb_NITFAppendImageSegment(document.get(), &bitmap.record, kRgb, depth, item.quality);
  if (status != ORB_SUCCESS || !item.placed) return status;
  const uint32_t index = Orb_NITFGetImageHeaderCount(document.get()) - 1;
  ImageHeader header = {};
  int32_t placed = Orb_NITFGetImageHeader(document.get(), index, &header);
  if (placed == ORB_SUCCESS) {
    header.ILOCrow = item.row;
    header.ILOCcolumn = item.column;
    placed = Orb_NITFSetImageHeader(document.get(), index, &header);
  }
  Orb_NITFFreeImageHeader(&header);
  return placed;
}

int32_t AppendDrawing(Document& document, const Item& item) {
  constexpr int32_t kMargin = 2;  // for the width of lines at the edge
  DrawingHolder drawing;
  if (const int32_t status = drawing.Load(item.path); status != ORB_SUCCESS) return status;
  VectorPoint least, greatest;
  if (const int32_t status = VectorGetExtent(&drawing.handle, &least, &greatest); status != ORB_SUCCESS) {
    return status;
  }
  // The drawing begins at the left edge of its rectangle: bounds cannot be negative.
  VectorTranslation translation = {};
  translation.x = kMargin - least.x;
  VectorSetTranslation(&drawing.handle, &translation, nullptr, 0);
  VectorApplyTranslation(&drawing.handle);
  const auto side = [](double span) { return static_cast<int32_t>(std::ceil(span)) + 2 * kMargin; };
  const RECT rectangle = {0, 0, side(greatest.x - least.x), side(greatest.y - least.y)};
  const int32_t status = Orb_NITFAppendGraphicSegment(document.get(), &drawing.handle, &rectangle);
  if (status != ORB_SUCCESS) return status;
  const uint32_t index = Orb_NITFGetGraphicHeaderCount(document.get()) - 1;
  GraphicHeader header = {};
  int32_t placed = Orb_NITFGetGraphicHeader(document.get(), index, &header);
  if (placed == ORB_SUCCESS) {
    header.SLOCrow = item.row;
    header.SLOCcolumn = item.column;
    header.SALVL = 0;  // places are of the canvas
    placed = Orb_NITFSetGraphicHeader(document.get(), index, &header);
  }
  Orb_NITFFreeGraphicHeader(&header);
  return placed;
}

int32_t AppendItem(Document& document, const Item& item) {
  if (item.option == "--image") return AppendPicture(document, item);
  if (item.option == "--graphic") return AppendDrawing(document, item);
  return Orb_NITFAppendTextSegmentA(document.get(), item.path.c_str());
}

int RunCompose(const std::string& name, const CLI::App& command, const ComposeOptions& options) {
  std::vector<Item> items;
  std::string problem;
  if (!CollectItems(command, options, items, problem)) return Refuse(name, problem);
  Document document;
  const int opened = options.file.empty() ? Report(name, options.file, document.StartEmpty())
                                          : OpenDocument(name, document, options.file);
  if (opened != kExitOk) return opened;
  for (const Item& item : items) {
    if (const int code = Report(name, item.path, AppendItem(document, item)); code != kExitOk)
      return code;
  }
  return SaveAs(name, document, options.file, options.output);
}

void AddCompose(CLI::App& app, Work& work, const std::string& name, const std::string& description) {
  auto options = std::make_shared<ComposeOptions>();
  CLI::App* command = app.add_subcommand(name, description);
  if (name == "append") command->add_option("FILE", options->file, "file to extend")->required();
  command->add_option("-o,--output", options->output, "file to write")->required();
  const auto repeated = [&](const char* option, auto& values, const char* text) {
    command->add_option(option, values, text)->expected(1)->take_all();
  };
  repeated("--image", options->images, "add a PNG or JPEG picture");
  repeated("--quality", options->qualities, "of the picture before: 2 (best) to 255");
  repeated("--at", options->places, "ROW,COL: place the picture or drawing before");
  repeated("--graphic", options->graphics, "add a CGM drawing");
  repeated("--text", options->texts, "add a text file");
  command->callback([&work, options, command, name] {
    work = [options, command, name] { return RunCompose(name, *command, *options); };
  });
}

}  // namespace

void AddComposing(CLI::App& app, Work& work) {
  AddCompose(app, work, "new", "Make a file of pictures, drawings and texts");
  AddCompose(app, work, "append", "Add pictures, drawings and texts to a file");
}

}  // namespace tool
