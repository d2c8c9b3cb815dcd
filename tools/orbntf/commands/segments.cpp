// New segments: pictures, drawings and texts.
#include <cmath>
#include <cstdlib>
#include <ctime>

#include "tools/orbntf/commands/compose.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/explain.h"

namespace tool {
namespace {

int32_t PlaceImage(Document& document, const Item& item) {
  const uint32_t index = Orb_NITFGetImageHeaderCount(document.get()) - 1;
  ImageHeader header = {};
  int32_t status = Orb_NITFGetImageHeader(document.get(), index, &header);
  if (status == ORB_SUCCESS) {
    header.ILOCrow = item.row;
    header.ILOCcolumn = item.column;
    status = Orb_NITFSetImageHeader(document.get(), index, &header);
  }
  Orb_NITFFreeImageHeader(&header);
  return status;
}

int32_t AppendPicture(Document& document, const Item& item, std::string& words, std::string& warning) {
  Picture picture;
  if (const int32_t status = LoadInput(item.path, picture); status != ORB_SUCCESS) {
    words = picture.refusal.empty() ? picture.whyNotLossless : picture.refusal;
    return status;
  }
  int32_t status = ORB_SUCCESS;
  if (item.lossless && !picture.whyNotLossless.empty()) {
    words = "--lossless would lose some of it: " + picture.whyNotLossless;
    return ORB_UNSUPPORTED;
  }
  if (item.lossless) {
    if (picture.bits == 16 && picture.channels == 3) {
      words = "colour of 16 bits: the reader shows one band of 16 bits, no more";
      return ORB_BAD_SAMPLE_DEPTH;
    }
    status = AppendUncompressed(document.get(), picture);
  } else if (picture.bits == 16) {
    words = "16 bits a sample; --lossless stores them as they are";
    return ORB_BAD_BITMAP_DEPTH;
  } else {
    Bitmap bitmap;
    status = bitmap.Take(picture);
    if (status == ORB_SUCCESS)
      status = Orb_NITFAppendImageSegment(document.get(), &bitmap.record, kFormatJpegRgb,
                                          picture.channels * 8, item.quality);
  }
  if (status != ORB_SUCCESS) {
    const bool large = picture.width > 9998 || picture.height > 9998;
    if (status == ORB_INVALID_PARAMETER && large) words = "a side of more than 9998; --lossless takes it";
    return status;
  }
  if (picture.lostAlpha) warning = "its transparency is dropped";
  return item.placed ? PlaceImage(document, item) : status;
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

}  // namespace

int32_t AppendItem(Document& document, const Item& item, std::string& words, std::string& warning) {
  if ((words = WhyUnreadable(item.path)); !words.empty())
    return item.option == "--text" ? ORB_TEXT_NOT_OPENED : ORB_SHORT_READ;
  if (item.option == "--image") return AppendPicture(document, item, words, warning);
  const int32_t status = item.option == "--graphic"
                             ? AppendDrawing(document, item)
                             : Orb_NITFAppendTextSegmentA(document.get(), item.path.c_str());
  RequireHostReads(item.path);
  return status;
}

std::string DateNow() {
  std::time_t now = std::time(nullptr);
  if (const char* epoch = std::getenv("SOURCE_DATE_EPOCH"); epoch != nullptr && *epoch != 0)
    now = static_cast<std::time_t>(std::strtoll(epoch, nullptr, 10));
  std::tm parts = {};
  if (gmtime_r(&now, &parts) == nullptr) return "19700101000000";
  char text[16] = {};
  (void)std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &parts);
  return text;
}

}  // namespace tool
