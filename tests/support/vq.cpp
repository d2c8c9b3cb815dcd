#include "tests/support/vq.h"

namespace test {
namespace {

// Values that fill a table's part of an entry.
std::string TableValues(const VqForm& form, uint32_t table, uint32_t entry) {
  std::string bytes;
  for (uint32_t i = 0; i < form.VectorHeight() * form.ValueBytes(); ++i) {
    const uint32_t value = entry * 13 + (table * form.VectorHeight() * form.ValueBytes() + i) * 5;
    // Two-byte values stay within their bits.
    const bool high = form.ValueBytes() == 2 && form.bits == 12 && i % 2 == 0;
    bytes += static_cast<char>(high ? value & 0x0F : value & 0xFF);
  }
  return bytes;
}

}  // namespace

uint32_t VqCode(uint32_t n) { return (n * 7 + 3) % 16; }

std::string VqEntry(const VqForm& form, uint32_t entry) {
  std::string bytes;
  for (uint32_t table = 0; table < form.tables; ++table) bytes += TableValues(form, table, entry);
  bytes.resize(form.VectorWidth() * form.VectorHeight() * form.ValueBytes());
  return bytes;
}

std::string VqData(const VqForm& form) {
  std::string data = Big(form.codeRows, 4) + Big(form.codesPerRow, 4) +
                     Big(static_cast<uint64_t>(form.codeBits), 1) + Big(1, 2) + Big(form.tables, 2) +
                     Big(0, 2) + Big(6, 4) + Big(14, 2);
  for (uint32_t table = 0; table < form.tables; ++table)
    data += Big(table, 2) + Big(form.entries, 4) + Big(4, 2) + Big(8, 2) + Big(0, 4);
  for (uint32_t table = 0; form.codeRows != 0 && table < form.tables; ++table) {
    for (uint32_t entry = 0; entry < form.entries; ++entry) data += TableValues(form, table, entry);
  }
  uint64_t bits = 0;
  int held = 0;
  uint32_t n = 0;
  for (const bool stored : form.stored) {
    for (uint32_t i = 0; stored && i < form.CodedRows() * form.codesPerRow; ++i) {
      bits = bits << form.codeBits | VqCode(n++) % form.codes;
      for (held += form.codeBits; held >= 8; held -= 8) data += static_cast<char>(bits >> (held - 8));
    }
  }
  if (held != 0) data += static_cast<char>(bits << (8 - held));
  return data;
}

ImageForm VqImage(const VqForm& form, const std::string& compression, int across, int down) {
  ImageForm image{.width = static_cast<int>(form.blockWidth),
                  .height = static_cast<int>(form.blockHeight),
                  .blocksAcross = across,
                  .blocksDown = down,
                  .bands = form.bands,
                  .bits = form.bits,
                  .compression = compression,
                  .representation = form.bands == 3 ? "RGB" : "MONO"};
  return image;
}

}  // namespace test
