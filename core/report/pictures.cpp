#include "core/report/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "core/check/rule.h"
#include "core/format/words.h"
#include "core/pictures/load.h"
#include "core/pictures/picture.h"
#include "core/report/html.h"
#include "core/view/view.h"
#include "media/work.h"

namespace core {
namespace {

// An open file in memory.
class MemoryFile {
 public:
  MemoryFile() : file_(open_memstream(&bytes_, &size_)) {}
  ~MemoryFile() {
    if (file_ != nullptr) std::fclose(file_);
    std::free(bytes_);
  }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  std::FILE* Stream() { return file_; }
  std::string Take() {
    std::fflush(file_);
    return {bytes_, size_};
  }

 private:
  char* bytes_ = nullptr;
  size_t size_ = 0;
  std::FILE* file_;
};

std::string Encode(const Pixels& pixels, PictureForm form) {
  MemoryFile memory;
  if (memory.Stream() == nullptr) return "";
  const auto writer = StartPicture(form, memory.Stream(), pixels.width, pixels.height);
  for (uint32_t y = 0; y < pixels.height; ++y) {
    if (!writer->PutRow(&pixels.rgb[size_t{y} * pixels.width * 3])) return "";
  }
  return writer->Finish() ? memory.Take() : "";
}

// Small pictures of very large ones take nearest pixels.
Pixels Draw(const Survey& survey, ViewRequest& request, Composite& composite) {
  constexpr uint64_t kMostPixels = 16 << 20;
  const auto start = [&](FileView& view) {
    const SampleFault fault = view.Start();
    composite.width = static_cast<uint32_t>(view.FullWidth());
    composite.height = static_cast<uint32_t>(view.FullHeight());
    composite.problem = fault.words;
    return !fault.Met();
  };
  {
    request.fast = true;
    FileView view(survey, request);
    if (!start(view)) return {};
    request.fast = view.FullWidth() * view.FullHeight() > kMostPixels;
  }
  FileView view(survey, request);
  if (!start(view)) return {};
  media::AllowPixels(view.PixelsToMake());
  Pixels pixels = {view.Width(), view.Height(), {}};
  const SampleFault fault = view.Draw([&](uint32_t, const uint8_t* rgb) {
    pixels.rgb.insert(pixels.rgb.end(), rgb, rgb + size_t{3} * pixels.width);
    return true;
  });
  composite.problem = fault.words;
  for (const LeftOut& missing : view.Missing())
    composite.missing.push_back(missing.segment + " is left out: " + missing.words);
  return fault.Met() ? Pixels() : pixels;
}

std::string LabelOf(const SurveyedPart& part) {
  const bool isImage = part.kind == PartKind::Image;
  const std::string name(part.Trimmed(isImage ? "IID1" : "SNAME"));
  return part.Title() + (name.empty() ? "" : " " + ToUtf8(name)) + ", level " +
         std::string(part.Text(isImage ? "IDLVL" : "SDLVL"));
}

void AddOutlines(const Survey& survey, Composite& composite) {
  const Places places(survey);
  std::vector<const PlacedSegment*> shown;
  for (const PlacedSegment& place : places.All()) {
    if (!place.readable) continue;
    shown.push_back(&place);
    composite.outlines.push_back({place.part->Title(), LabelOf(*place.part),
                                  static_cast<double>(place.left), static_cast<double>(place.top),
                                  static_cast<double>(place.right - place.left),
                                  static_cast<double>(place.bottom - place.top), std::nullopt});
  }
  for (size_t i = 0; i < shown.size(); ++i) {
    const auto found = std::find(shown.begin(), shown.end(), shown[i]->parent);
    if (found != shown.end()) composite.outlines[i].parent = static_cast<size_t>(found - shown.begin());
  }
}

}  // namespace

std::string DataUri(const Pixels& pixels, size_t mostPng) {
  if (pixels.width == 0 || pixels.height == 0) return "";
  // Few colours are smaller without loss, photographs with some.
  const std::string png = Encode(pixels, PictureForm::Png);
  if (!png.empty() && png.size() <= mostPng) return "data:image/png;base64," + Base64(png);
  const std::string jpeg = Encode(pixels, PictureForm::Jpeg);
  return jpeg.empty() ? "" : "data:image/jpeg;base64," + Base64(jpeg);
}

Composite DrawComposite(const Survey& survey) {
  constexpr uint32_t kSide = 900;
  Composite composite;
  ViewRequest request;
  request.size = kSide;
  composite.pixels = Draw(survey, request, composite);
  AddOutlines(survey, composite);
  return composite;
}

Composite DrawImage(const Survey& survey, uint32_t index, uint32_t side) {
  Composite composite;
  ViewRequest request;
  request.size = side;
  request.image = index;
  composite.pixels = Draw(survey, request, composite);
  return composite;
}

std::string DrawingUri(const Survey& survey, const SurveyedPart& part) {
  constexpr int32_t kSide = 480;
  MemoryFile memory;
  media::Drawing drawing;
  if (memory.Stream() == nullptr || LoadDrawing(survey.Data(part), drawing) != media::Outcome::Ok ||
      PaintPng(drawing, kSide, memory.Stream()) != media::Outcome::Ok)
    return "";
  return "data:image/png;base64," + Base64(memory.Take());
}

uint32_t ReduceFor(const SurveyedPart& part, uint32_t side) {
  const std::string_view compression = part.Text("IC");
  const uint32_t most = IsOneOf(compression, "C3|M3|C5|M5|I1") ? 3
                        : IsOneOf(compression, "C8|M8")        ? 5
                                                               : 15;
  const int64_t longer = std::max(part.Number("NROWS"), part.Number("NCOLS"));
  uint32_t reduce = 0;
  while (longer >> (reduce + 1) >= static_cast<int64_t>(side) && reduce < most) ++reduce;
  return reduce;
}

}  // namespace core
