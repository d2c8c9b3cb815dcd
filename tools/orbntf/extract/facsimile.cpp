#include "tools/orbntf/extract/facsimile.h"

#include "tools/orbntf/inspect/tiff_memory.h"

namespace tool {
namespace {

void PutLittle(std::string& bytes, uint32_t value, size_t count) {
  for (size_t i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i));
}

// A TIFF file of one strip: 8 bytes, the directory, the data.
std::string Wrap(const std::string& data, const FacsimileForm& form) {
  constexpr uint32_t kHead = 8, kEntryBytes = 12;
  struct Entry {
    uint16_t tag, type;
    uint32_t value;
  };
  const uint32_t options = form.twoDimensional ? uint32_t{GROUP3OPT_2DENCODING} : 0;
  Entry entries[] = {{TIFFTAG_IMAGEWIDTH, TIFF_LONG, form.width},
                     {TIFFTAG_IMAGELENGTH, TIFF_LONG, form.height},
                     {TIFFTAG_BITSPERSAMPLE, TIFF_SHORT, 1},
                     {TIFFTAG_COMPRESSION, TIFF_SHORT, COMPRESSION_CCITTFAX3},
                     {TIFFTAG_PHOTOMETRIC, TIFF_SHORT, PHOTOMETRIC_MINISWHITE},
                     {TIFFTAG_STRIPOFFSETS, TIFF_LONG, 0},
                     {TIFFTAG_SAMPLESPERPIXEL, TIFF_SHORT, 1},
                     {TIFFTAG_ROWSPERSTRIP, TIFF_LONG, form.height},
                     {TIFFTAG_STRIPBYTECOUNTS, TIFF_LONG, static_cast<uint32_t>(data.size())},
                     {TIFFTAG_GROUP3OPTIONS, TIFF_LONG, options}};
  entries[5].value = kHead + 2 + static_cast<uint32_t>(std::size(entries)) * kEntryBytes + 4;
  std::string bytes = "II*";
  PutLittle(bytes, 0, 1);
  PutLittle(bytes, kHead, 4);
  PutLittle(bytes, std::size(entries), 2);
  for (const Entry& entry : entries) {
    PutLittle(bytes, entry.tag, 2);
    PutLittle(bytes, entry.type, 2);
    PutLittle(bytes, 1, 4);
    PutLittle(bytes, entry.value, 4);
  }
  PutLittle(bytes, 0, 4);
  return bytes + data;
}

// Gives each row that decodes to `take`.
template <class Take>
void ForRows(const std::string& data, const FacsimileForm& form, Take take) {
  if (data.empty() || data.size() > INT32_MAX || form.width == 0 || form.height == 0) return;
  const std::string bytes = Wrap(data, form);
  TiffSource source{bytes};
  const TiffPtr tiff = OpenTiff(source);
  if (tiff == nullptr) return;
  std::string row(static_cast<size_t>(TIFFScanlineSize(tiff.get())), '\0');
  for (uint32_t y = 0; y < form.height; ++y) {
    if (TIFFReadScanline(tiff.get(), row.data(), y, 0) != 1) return;
    take(row);
  }
}

}  // namespace

std::vector<std::string> DecodeFacsimile(const std::string& data, const FacsimileForm& form) {
  std::vector<std::string> rows;
  ForRows(data, form, [&](std::string row) {
    for (char& byte : row) byte = static_cast<char>(~byte);
    rows.push_back(std::move(row));
  });
  return rows;
}

uint32_t CountFacsimileRows(const std::string& data, const FacsimileForm& form) {
  uint32_t rows = 0;
  ForRows(data, form, [&](const std::string&) { ++rows; });
  return rows;
}

}  // namespace tool
