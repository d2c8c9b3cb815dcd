// Files changed by splicing: the last bytes choose what is changed.
#include "core/edit/fields.h"
#include "core/edit/mend.h"
#include "core/edit/record_edits.h"
#include "core/edit/segments.h"
#include "fuzz/prove.h"
#include "fuzz/support.h"

namespace {

constexpr core::PartKind kKinds[] = {core::PartKind::File, core::PartKind::Image, core::PartKind::Graphic,
                                     core::PartKind::Text, core::PartKind::DataExtension};

void Change(core::Draft& draft, const core::Survey& survey, fuzz::Choices& choices) {
  const core::PartKind kind = kKinds[choices.Byte() % 5];
  const size_t index = choices.Byte() % 3u;
  const core::RecordName record = {kind, index, choices.Byte() % 2 == 0 ? "MADEUP" : "BLOCKA", 1};
  core::DraftPart* part = draft.Find(kind, index);
  switch (choices.Byte() % 8) {
    case 0:
      return core::PutRecord(draft, record, std::string(1 + choices.Number() % 60000u, 'x'));
    case 1:
      return core::RemoveRecord(draft, record);
    case 2:
      return core::RemoveSegment(draft, kind, index);
    case 3:
      return (void)core::Merge(draft, survey);
    case 4:
      return core::SetEverywhere(draft, {"CLAS", "S"});
    case 5:
      if (part != nullptr) core::SetField(*part, {"ICORDS", choices.Byte() % 2 == 0 ? "" : "G"});
      return;
    case 6:
      if (part != nullptr) core::SetField(*part, {"NICOM", std::to_string(choices.Byte() % 10)});
      return;
    default:
      return core::SetField(draft.file, {"FTITLE", "Another"});
  }
}

void EditFile(const core::Survey& survey, bool mended, fuzz::Choices& choices) {
  core::Draft draft(survey);
  draft.mended = mended;
  for (int i = 0; i < 3 && choices.Any(); ++i) Change(draft, survey, choices);
  fuzz::Prove(draft);
}

}  // namespace

int fuzz::Edit(const uint8_t* data, size_t size) {
  static MemoryFile file;
  Begin(size);
  size_t fileSize = size;
  Choices choices(data, fileSize);
  file.Fill(data, size);
  try {
    const core::Survey survey(file.Path());
    if (choices.Byte() % 4 != 0) {
      EditFile(survey, false, choices);
    } else {
      std::vector<core::MendedLength> lengths;
      const core::Survey mended(file.Path(), core::MendedFront(survey, lengths));
      EditFile(mended, true, choices);
    }
  } catch (const core::EditError&) {
  } catch (const core::ReadError&) {
  }
  return 0;
}
