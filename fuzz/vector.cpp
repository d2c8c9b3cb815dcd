#include "fuzz/support.h"
#include "tests/support/vq.h"

namespace {

using fuzz::Choices;
using fuzz::MemoryFile;
using test::Big;

test::VqForm Form(uint8_t form, Choices& choices) {
  constexpr int kDepths[] = {8, 12, 16, 8};
  return {.blockWidth = choices.Byte() * 2u + 1,
          .blockHeight = choices.Byte() * 2u + 1,
          .codeRows = choices.Byte(),
          .codesPerRow = choices.Byte(),
          .tables = choices.Byte() % 8u,
          .entries = choices.Byte(),
          .codeBits = choices.Byte() % 34,
          .bits = kDepths[form % 4],
          .bands = form % 4 == 3 ? 3 : 1};
}

// The header says what was chosen; tables and codes are the input's.
std::string Header(const test::VqForm& vectors) {
  std::string bytes = Big(vectors.codeRows, 4) + Big(vectors.codesPerRow, 4) +
                      Big(static_cast<uint64_t>(vectors.codeBits), 1) + Big(1, 2) +
                      Big(vectors.tables, 2) + Big(0, 2) + Big(6, 4) + Big(14, 2);
  for (uint32_t table = 0; table < vectors.tables; ++table)
    bytes += Big(table, 2) + Big(vectors.entries, 4) + Big(4, 2) + Big(8, 2) + Big(0, 4);
  return bytes;
}

void DrawAndSave(const std::string& whole) {
  static MemoryFile file, copy;
  file.Fill(whole.data(), whole.size());
  NitfHandle document = nullptr;
  if (Orb_NITFCreate(&document, file.Wide()) == ORB_SUCCESS) {
    (void)fuzz::Draw(document);
    const int32_t saved = Orb_NITFSaveFileA(document, copy.Path().c_str());
    fuzz::Require(saved != ORB_SUCCESS || copy.Contents().size() <= whole.size() + 1, "a copy no larger");
    Orb_NITFDestroy(&document);
  }
}

}  // namespace

int fuzz::Vector(const uint8_t* data, size_t size) {
  Begin(size);
  Choices choices(data, size);
  const uint8_t form = choices.Byte();
  const test::VqForm vectors = Form(form, choices);
  const bool masked = (form & 4) != 0;
  const int across = 1 + (form >> 3) % 4;
  test::ImageForm image = test::VqImage(vectors, masked ? "M4" : "C4", across, 1 + (form >> 5) % 2);
  std::string bytes;
  if (masked) {
    test::MaskForm mask;
    for (int i = 0; i < across * image.blocksDown * image.bands; ++i)
      mask.blocks.push_back(choices.Byte() % 4 == 0 ? 0xFFFFFFFF : 0);
    bytes = test::MaskBytes(mask);
  }
  bytes += Header(vectors);
  bytes.append(reinterpret_cast<const char*>(data), size);
  DrawAndSave(test::NitfBuilder().Image(image, bytes).Bytes());
  RequireNothingHeld();
  return 0;
}
