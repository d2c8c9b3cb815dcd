#include "core/edit/add.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>

#include "core/edit/fields.h"
#include "core/edit/record_edits.h"
#include "core/format/words.h"
#include "core/pictures/load.h"
#include "media/drawing/outline.h"

namespace core {
namespace {

void SetClass(DraftPart& part, const Labels& labels) {
  if (labels.classification.empty()) return;
  const char* prefix = part.kind == PartKind::DataExtension ? "DE" : part.Fields().SecurityPrefix();
  SetField(part, {std::string(prefix) + "CLAS", labels.classification});
}

// The least and greatest row and column that a drawing reaches from its origin, with room for its lines.
struct DrawnArea {
  int64_t top = 0, left = 0, bottom = 0, right = 0;
};
DrawnArea AreaOf(const std::string& metafile) {
  constexpr double kMargin = 2, kFarthest = 50000;
  media::Drawing drawing;
  if (LoadDrawing(metafile, drawing) != media::Outcome::Ok)
    RefuseArgument("is no metafile (CGM, binary encoding)");
  media::Point least, greatest;
  if (!media::FindExtent(drawing, media::TextBox::Full, least, greatest)) return {};
  const auto side = [=](double value) {
    return static_cast<int64_t>(std::clamp(value, -kFarthest, kFarthest));
  };
  return {side(-std::ceil(greatest.y) - kMargin), side(std::floor(least.x) - kMargin),
          side(-std::floor(least.y) + kMargin), side(std::ceil(greatest.x) + kMargin)};
}

bool HasOnly(std::string_view text, bool (*isFine)(uint8_t)) {
  return std::all_of(text.begin(), text.end(), [&](char c) { return isFine(static_cast<uint8_t>(c)); });
}
bool IsBasic(uint8_t c) { return c == '\n' || c == '\r' || c == '\f' || (c >= 0x20 && c < 0x7F); }
bool IsExtended(uint8_t c) { return IsBasic(c) || c >= 0xA0; }

bool IsUtf8(std::string_view text) {
  for (size_t bytes = 0; !text.empty(); text.remove_prefix(bytes)) {
    bytes = static_cast<uint8_t>(text[0]) < 0x80 ? 1 : Utf8Bytes(text);
    if (bytes == 0) return false;
  }
  return true;
}

// The fields that XML data has of its own (its code is not computed).
std::string XmlFields(const std::string& date) {
  std::string fields = "99999XML     ";
  fields += date.substr(0, 4) + "-" + date.substr(4, 2) + "-" + date.substr(6, 2) + "T" +
            date.substr(8, 2) + ":" + date.substr(10, 2) + ":" + date.substr(12, 2) + "Z";
  fields.resize(283, ' ');
  return fields;
}

void SetLayers(Draft& draft, const DraftPart& image, const std::string& layers) {
  if (layers.empty()) return;
  PutRecord(draft, {PartKind::Image, draft.IndexOf(image), "J2KLRA", 1}, layers);
}

void SetCorners(DraftPart& part, const CornerFields& corners) {
  if (corners.igeolo.empty()) return;
  SetField(part, {"ICORDS", corners.icords});
  SetField(part, {"IGEOLO", corners.igeolo});
}

}  // namespace

std::string DateNow() {
  std::time_t now = std::time(nullptr);
  if (const char* epoch = std::getenv("SOURCE_DATE_EPOCH"); epoch != nullptr && *epoch != 0)
    now = static_cast<std::time_t>(std::strtoll(epoch, nullptr, 10));
  std::tm parts = {};
  char text[16] = "19700101000000";
  if (gmtime_r(&now, &parts) != nullptr) (void)std::strftime(text, sizeof text, "%Y%m%d%H%M%S", &parts);
  return text;
}

Draft NewFile(const Labels& labels) {
  Draft draft(NewFileHeader());
  draft.file.Put("FDT", labels.date);
  SetClass(draft.file, labels);
  return draft;
}

DraftPart& AddImages(Draft& draft, std::vector<StoredImage> images, const Placing& placing,
                     const Labels& labels) {
  size_t first = 0;
  for (size_t i = 0; i < images.size(); ++i) {
    DraftPart part(PartKind::Image, NewImageHeader(images[i].form), std::move(images[i].data));
    part.Put("IDATIM", labels.date);
    SetClass(part, labels);
    SetCorners(part, images[i].corners);
    Placing place = placing;
    if (i > 0)
      place = {draft.Find(PartKind::Image, draft.Count(PartKind::Image) - 1),
               images[i].top - images[i - 1].top, 0};
    const DraftPart& added = AddPlaced(draft, std::move(part), place);
    if (i == 0) first = draft.IndexOf(added);
    SetLayers(draft, added, images[i].layers);
  }
  return *draft.Find(PartKind::Image, first);
}

DraftPart& AddGraphic(Draft& draft, const std::string& metafile, const Placing& placing,
                      const Labels& labels) {
  constexpr size_t kMost = 999999;
  if (metafile.size() > kMost) RefuseArgument("a graphic has at most 999999 bytes");
  const DrawnArea area = AreaOf(metafile);
  DraftPart part(PartKind::Graphic, NewGraphicHeader(), {PieceOf(metafile)});
  SetClass(part, labels);
  const int64_t row = -area.top, column = -area.left;
  part.Put("SLOC", PlaceDigits(row, column, "SLOC"));
  part.Put("SBND1", PlaceDigits(0, 0, "SBND1"));
  part.Put("SBND2", PlaceDigits(area.bottom - area.top, area.right - area.left, "SBND2"));
  return AddPlaced(draft, std::move(part), placing);
}

DraftPart& AddText(Draft& draft, const std::string& text, const Labels& labels) {
  constexpr size_t kMost = 99999;
  if (text.empty() || text.size() > kMost) RefuseArgument("a text has 1 to 99999 bytes");
  DraftPart part(PartKind::Text, NewTextHeader(), {PieceOf(text)});
  const bool isOther = !HasOnly(text, IsBasic);
  if (isOther && IsUtf8(text) && !HasOnly(text, [](uint8_t c) { return c < 0x80; }))
    part.Put("TXTFMT", "U8S");
  if (isOther && !IsUtf8(text) && HasOnly(text, IsExtended)) part.Put("TXTFMT", "UT1");
  part.Put("TXTDT", labels.date);
  SetClass(part, labels);
  return draft.Insert(std::move(part));
}

DraftPart& AddData(Draft& draft, const std::string& name, uint32_t version, std::string data,
                   const Labels& labels) {
  if (name == "TRE_OVERFLOW" || name == "STREAMING_FILE_HEADER")
    RefuseArgument(name + ": comes about with what it belongs to");
  std::string header = NewExtensionHeader(name, version);
  if (name == "XML_DATA_CONTENT") {
    const std::string fields = XmlFields(labels.date);
    header.replace(header.size() - kExtensionLengthLayout.width, kExtensionLengthLayout.width,
                   NumberDigits(fields.size(), kExtensionLengthLayout.width, "DESSHL") + fields);
  }
  DraftPart part(PartKind::DataExtension, header, {PieceOf(std::move(data))});
  SetClass(part, labels);
  return draft.Insert(std::move(part));
}

void ReplaceImage(Draft& draft, size_t index, StoredImage image, bool isAnother) {
  DraftPart& part = *draft.Find(PartKind::Image, index);
  DescribePixels(part, image.form, isAnother);
  part.data = std::move(image.data);
  part.otherData = true;
  const RecordName layers = {PartKind::Image, index, "J2KLRA", 1};
  try {
    RemoveRecord(draft, layers);
  } catch (const EditError&) {
    // There was none.
  }
  SetLayers(draft, *draft.Find(PartKind::Image, index), image.layers);
}

void ReplaceData(DraftPart& part, const std::string& data) {
  part.data = {PieceOf(data)};
  part.otherData = true;
}

}  // namespace core
