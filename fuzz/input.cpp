#include "core/edit/add.h"
#include "fuzz/prove.h"
#include "fuzz/support.h"

namespace {

constexpr core::StoreOptions::Way kWays[] = {
    core::StoreOptions::Way::Plain, core::StoreOptions::Way::Jpeg, core::StoreOptions::Way::Jpeg2000};

// A picture file, a metafile or a text as the segment of a new file, which is proven.
void Store(const std::string& path, fuzz::Choices choices) {
  const core::Labels labels = {"20261126120000", ""};
  core::Draft draft = core::NewFile(labels);
  std::vector<std::string> notes;
  const uint8_t kind = choices.Byte();
  if (kind % 4 < 2) {
    core::StoreOptions options;
    options.way = kWays[choices.Byte() % 3];
    options.block = choices.Byte() % 2 == 0 ? 0 : 64;
    options.mode = "BPRS"[choices.Byte() % 4];
    options.isAsIs = kind % 16 == 1;
    if (choices.Byte() % 2 == 0) options.background = {255, 255, 255};
    core::AddImages(draft, core::StorePicture(draft, path, "", options, notes), {}, labels);
  } else if (kind % 4 == 2) {
    core::AddGraphic(draft, core::ReadWhole(path), {}, labels);
  } else {
    core::AddText(draft, core::ReadWhole(path), labels);
  }
  fuzz::Prove(draft);
}

}  // namespace

int fuzz::Input(const uint8_t* data, size_t size) {
  static MemoryFile file;
  Begin(size);
  size_t fileSize = size;
  const Choices choices(data, fileSize);
  file.Fill(data, size);
  try {
    Store(file.Path(), choices);
  } catch (const core::PictureError&) {
  } catch (const core::EditError&) {
  }
  RequireNothingHeld();
  return 0;
}
