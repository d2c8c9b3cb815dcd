#include "tools/orbntf/inspect/draw_small.h"

#include <algorithm>

#include "Common/DisplayList.h"
#include "Common/HandlGfx.h"
#include "core/format/words.h"
#include "core/pictures/box_scaler.h"
#include "media/shuffle.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/drawing.h"
#include "tools/orbntf/inspect/verdict.h"

namespace tool {
namespace {

constexpr uint32_t kSide = 900;

Pixels Scaled(const KernelBitmap& bitmap) {
  const uint32_t longer = std::max(bitmap.width, bitmap.height);
  BoxScaler scaler(bitmap.width, bitmap.height, std::max(1u, (longer + kSide - 1) / kSide));
  Pixels pixels = {scaler.Width(), scaler.Height(), {}};
  const auto* rows = reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(bitmap.pixels));
  for (uint32_t y = 0; y < bitmap.height; ++y) {
    const uint8_t* row = scaler.Take(rows + size_t{bitmap.height - 1 - y} * bitmap.bytesPerLine);
    if (row == nullptr) continue;
    const size_t made = pixels.rgb.size();
    pixels.rgb.resize(made + size_t{pixels.width} * 3);
    media::SwapEnds(row, pixels.width, &pixels.rgb[made]);
  }
  return pixels;
}

// Where the module puts what it draws.
RECT ModuleRectangle(const NitfFile& document, const DisplayItem& item) {
  if (item.kind == SegmentKind::Graphic)
    return GraphicRectangle(*document.graphics.At(item.index), item.rowOffset, item.columnOffset);
  const ImageSubheader& image = *document.images.At(item.index);
  const int32_t left = image.ILOC.Column() + item.columnOffset, top = image.ILOC.Row() + item.rowOffset;
  RECT place;
  (void)SetRect(&place, left, top, left + static_cast<int32_t>(image.NCOLS.value),
                top + static_cast<int32_t>(image.NROWS.value));
  return place;
}

void AddOutlines(const NitfFile& document, const Survey& survey, Composite& composite) {
  DisplayList list;
  const Places places(survey);
  std::vector<const SurveyedPart*> parts;
  if (!Ok(BuildDisplayList(document, list))) return;
  for (const DisplayItem& item : list.Items()) {
    const bool isImage = item.kind == SegmentKind::Image;
    const SurveyedPart* part = survey.Find(isImage ? PartKind::Image : PartKind::Graphic, item.index);
    if (part == nullptr) continue;
    const RECT place = ModuleRectangle(document, item);
    parts.push_back(part);
    composite.outlines.push_back({part->Title(), part->Title(), static_cast<double>(place.left),
                                  static_cast<double>(place.top),
                                  static_cast<double>(place.right - place.left),
                                  static_cast<double>(place.bottom - place.top), std::nullopt});
  }
  for (size_t i = 0; i < parts.size(); ++i) {
    const PlacedSegment* place = places.Of(*parts[i]);
    if (place == nullptr || place->parent == nullptr) continue;
    const auto found = std::find(parts.begin(), parts.end(), place->parent->part);
    if (found != parts.end()) composite.outlines[i].parent = static_cast<size_t>(found - parts.begin());
  }
}

Composite DrawSmall(const std::string& path, const Survey& survey) {
  Composite composite;
  Document document;
  const WorkAccount account(path);
  int32_t status = document.Open(path);
  if (status == ORB_SUCCESS) {
    OwnedBitmap canvas;
    status = DrawDocument(path, document, canvas, composite.width, composite.height);
    if (status == ORB_SUCCESS) composite.pixels = Scaled(canvas.record);
    AddOutlines(*document.get(), survey, composite);
  }
  RequireHostReads(path);
  if (status != ORB_SUCCESS)
    composite.problem = "status " + std::to_string(status) + ", " + MeaningOf(status);
  return composite;
}

}  // namespace

void LookAtFile(ReportedFile& file, bool withPicture) {
  const Verdict verdict = AskModule(file.path);
  file.readerDraws = verdict.status == ORB_SUCCESS;
  file.readerWords = verdict.words;
  if (withPicture) file.module = DrawSmall(file.path, file.survey);
}

}  // namespace tool
