// The tagged records of a document's headers.
#include "tools/orbntf/inspect/document_json.h"
#include "tools/orbntf/inspect/show_records.h"

namespace tool {
namespace {

PartKind PartOf(SegmentKind kind) {
  switch (kind) {
    case SegmentKind::Image:
      return PartKind::Image;
    case SegmentKind::Graphic:
      return PartKind::Graphic;
    case SegmentKind::Text:
      return PartKind::Text;
    default:
      return PartKind::DataExtension;
  }
}

}  // namespace

std::vector<TaggedRecord> RecordLists::Of(PartKind kind, uint32_t index) const {
  const SurveyedPart* part = survey_.Find(kind, index);
  return part != nullptr ? RecordsOf(*part, definitions_) : std::vector<TaggedRecord>();
}

void RecordLists::Write(JsonText& json, PartKind kind, uint32_t index) const {
  const std::vector<TaggedRecord> list = Of(kind, index);
  if (list.empty()) return;
  json.Key("records");
  WriteRecords(json, list);
}

void RecordLists::Write(JsonText& json, SegmentKind kind, uint32_t index) const {
  Write(json, PartOf(kind), index);
}

}  // namespace tool
