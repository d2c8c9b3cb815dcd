#include "core/edit/overflow.h"

namespace core {

std::vector<const AreaLayout*> AreasOf(PartKind kind) {
  switch (kind) {
    case PartKind::File:
      return {&kFileUserArea, &kFileArea};
    case PartKind::Image:
      return {&kImageUserArea, &kImageArea};
    case PartKind::Graphic:
      return {&kGraphicArea};
    case PartKind::Text:
      return {&kTextArea};
    default:
      return {};
  }
}

PartKind KindOfArea(std::string_view area) {
  for (const PartKind kind : {PartKind::Image, PartKind::Graphic, PartKind::Text}) {
    for (const AreaLayout* own : AreasOf(kind)) {
      if (area == own->records.name) return kind;
    }
  }
  return PartKind::File;
}

int64_t OverflowNumber(const DraftPart& part, const AreaLayout& area) {
  return std::max<int64_t>(0, part.Fields().Number(area.overflow.name));
}

DraftPart* OverflowOf(Draft& draft, const DraftPart& part, const AreaLayout& area) {
  const int64_t number = OverflowNumber(part, area);
  DraftPart* extension =
      number > 0 ? draft.Find(PartKind::DataExtension, static_cast<size_t>(number - 1)) : nullptr;
  return extension != nullptr && extension->Fields().Trimmed("DESID") == "TRE_OVERFLOW" ? extension
                                                                                        : nullptr;
}

void Renumber(DraftPart& part, const std::function<int64_t(int64_t)>& next) {
  for (const AreaLayout* area : AreasOf(part.kind)) {
    const int64_t number = part.Fields().Number(area->overflow.name);
    if (number <= 0) continue;
    if (const int64_t other = next(number); other != number) {
      part.named.insert(area->overflow.name);
      part.PutNumber(area->overflow.name, static_cast<uint64_t>(other));
    }
  }
}

namespace {

void RenumberAll(Draft& draft, const std::function<int64_t(int64_t)>& next) {
  Renumber(draft.file, next);
  for (DraftPart& part : draft.segments) Renumber(part, next);
}

}  // namespace

void EraseExtension(Draft& draft, size_t index) {
  const auto gone = static_cast<int64_t>(index) + 1;
  draft.Erase(PartKind::DataExtension, index);
  RenumberAll(draft, [gone](int64_t number) {
    return number == gone ? 0 : number > gone ? number - 1 : number;
  });
}

}  // namespace core
