// Facsimile through libtiff, which is shown a TIFF file with the data in it.
#include "media/codecs/facsimile.h"

#include <string>

#include "media/codecs/tiff_source.h"

namespace media {
namespace {

void PutLittle(std::string& bytes, uint32_t value, size_t count) {
  for (size_t i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i));
}

// What stands in front of the data in a TIFF file of one strip: 8 bytes and the directory.
std::string FrontOf(uint64_t dataBytes, const FacsimileForm& form) {
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
                     {TIFFTAG_FILLORDER, TIFF_SHORT, FILLORDER_MSB2LSB},
                     {TIFFTAG_STRIPOFFSETS, TIFF_LONG, 0},
                     {TIFFTAG_SAMPLESPERPIXEL, TIFF_SHORT, 1},
                     {TIFFTAG_ROWSPERSTRIP, TIFF_LONG, form.height},
                     {TIFFTAG_STRIPBYTECOUNTS, TIFF_LONG, static_cast<uint32_t>(dataBytes)},
                     {TIFFTAG_GROUP3OPTIONS, TIFF_LONG, options}};
  for (Entry& entry : entries) {
    if (entry.tag == TIFFTAG_STRIPOFFSETS)
      entry.value = kHead + 2 + static_cast<uint32_t>(std::size(entries)) * kEntryBytes + 4;
  }
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
  return bytes;
}

}  // namespace

struct FacsimileRows::File {
  File(const Source& from, const FacsimileForm& form)
      : data(from), source{FrontOf(data.Size(), form), data}, tiff(OpenTiff(source)) {}

  const Source data;
  TiffSource source;
  TiffPtr tiff;
  std::vector<uint8_t> row;
};

FacsimileRows::FacsimileRows(std::unique_ptr<File> file, uint32_t height)
    : file_(std::move(file)), height_(height) {}
FacsimileRows::~FacsimileRows() = default;

Outcome FacsimileRows::Open(const Source& data, const FacsimileForm& form,
                            std::unique_ptr<FacsimileRows>& rows) {
  constexpr uint32_t kMaxWidth = 1 << 20;  // the decoder keeps tables of a row's runs
  if (form.width == 0 || form.height == 0 || form.width > kMaxWidth ||
      data.Size() > uint64_t{kMostOfTiffAtOnce})
    return Outcome::Unsupported;
  auto file = std::make_unique<File>(data, form);
  if (file->tiff == nullptr) return Outcome::BadData;
  file->row.resize(static_cast<size_t>(TIFFScanlineSize(file->tiff.get())));
  rows.reset(new FacsimileRows(std::move(file), form.height));
  return Outcome::Ok;
}

bool FacsimileRows::Next(std::span<const uint8_t>& row) {
  if (isBroken_ || next_ == height_) return false;
  std::vector<uint8_t>& bytes = file_->row;
  isBroken_ = TIFFReadScanline(file_->tiff.get(), bytes.data(), next_, 0) != 1;
  if (isBroken_) return false;
  ++next_;
  for (uint8_t& eight : bytes) eight = static_cast<uint8_t>(~eight);
  row = bytes;
  return true;
}

Outcome DecodeFacsimile(const Source& data, const FacsimileForm& form,
                        const std::function<Outcome(uint32_t, std::span<const uint8_t>)>& take) {
  std::unique_ptr<FacsimileRows> rows;
  if (const Outcome opened = FacsimileRows::Open(data, form, rows); opened != Outcome::Ok) return opened;
  std::span<const uint8_t> row;
  while (rows->Next(row)) {
    if (const Outcome taken = take(rows->Position() - 1, row); taken != Outcome::Ok) return taken;
  }
  return rows->Position() != 0 ? Outcome::Ok : Outcome::BadData;
}

}  // namespace media
