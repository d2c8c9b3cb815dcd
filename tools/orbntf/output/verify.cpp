#include "tools/orbntf/output/verify.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "Common/Exchange.h"
#include "Common/HandlImg.h"
#include "Common/ImgVq.h"
#include "hostkit/hostkit.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/output/segment_data.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

const char* NameOf(SegmentKind kind) {
  switch (kind) {
    case SegmentKind::Image:
      return "image";
    case SegmentKind::Graphic:
      return "graphic";
    case SegmentKind::Text:
      return "text";
    case SegmentKind::DataExtension:
    case SegmentKind::Reserved:
      break;
  }
  return "data extension";
}

// ---------------------------------------------------------------- comparing data

// Whether the first `count` bytes of a segment's data are the same in two files.
bool SameBytes(NitfFile& a, NitfFile& b, SegmentKind kind, uint32_t index, uint64_t count) {
  constexpr uint64_t kPiece = 256 << 10;  // both pieces stay in the processor's cache
  std::vector<uint8_t> first(static_cast<size_t>(std::min(kPiece, count))), second(first.size());
  for (uint64_t done = 0; done < count;) {
    const auto bytes = static_cast<uint32_t>(std::min(kPiece, count - done));
    const auto read = [&](NitfFile& document, std::vector<uint8_t>& piece) {
      document.SeekToData(kind, index);
      KernelSeek(document.FileHandle(), static_cast<int64_t>(done), kSeekCurrent);
      return KernelRead(document.FileHandle(), piece.data(), bytes) == bytes;
    };
    if (!read(a, first) || !read(b, second) ||
        !std::equal(first.begin(), first.begin() + bytes, second.begin()))
      return false;
    done += bytes;
  }
  return true;
}

bool HoldsBytes(NitfFile& written, SegmentKind kind, uint32_t index, std::span<const uint8_t> bytes) {
  std::vector<uint8_t> held(bytes.size());
  written.SeekToData(kind, index);
  const auto count = static_cast<uint32_t>(held.size());
  return KernelRead(written.FileHandle(), held.data(), count) == count &&
         std::equal(held.begin(), held.end(), bytes.begin());
}

// Vector-quantised data may lose what no block needs; then the image must still decode.
bool SameVectors(NitfFile& document, NitfFile& written, uint32_t index, uint64_t count) {
  if (!SameBytes(document, written, SegmentKind::Image, index, count)) return false;
  OwnedBitmap before, after;
  const Status expected = LoadImageSegment(nullptr, document, index, before);
  if (LoadImageSegment(nullptr, written, index, after) != expected) return false;
  const auto pixels = [](const OwnedBitmap& bitmap) {
    return std::span<const uint8_t>(
        reinterpret_cast<const uint8_t*>(static_cast<uintptr_t>(bitmap.record.pixels)),
        static_cast<size_t>(bitmap.record.byteCount));
  };
  return std::equal(pixels(before).begin(), pixels(before).end(), pixels(after).begin(),
                    pixels(after).end());
}

// The lookup tables of an image's bands as the file has them, one after the other.
std::string LookupTablesOf(NitfFile& document, uint32_t index) {
  const ImageSubheader& image = *document.images.At(index);
  const FieldTable<ImageSubheader> table = ImageSubheader::Table();
  const auto bands = static_cast<size_t>(FindRow<ImageSubheader>(table, "NBANDS") - table.data());
  uint32_t at = 0;
  (void)MeasureRows<ImageSubheader>(table.first(bands), image, at);
  const size_t counts = sizeof image.NBANDS.text - 1;
  at += static_cast<uint32_t>(image.NBANDS.value != 0 ? counts : counts + sizeof image.XBANDS.text - 1);
  std::string subheader(document.header.images.InFile(index).subheader, 0);
  document.SeekToSubheader(SegmentKind::Image, index);
  subheader.resize(
      KernelRead(document.FileHandle(), subheader.data(), static_cast<uint32_t>(subheader.size())));
  std::string tables;
  for (const BandFields& band : image.bands) {
    at += BandFields::Bytes();
    if (band.NLUTS.value == 0) continue;
    at += static_cast<uint32_t>(sizeof band.NELUT.text - 1);
    const uint32_t bytes = band.NLUTS.value * band.NELUT.value;
    if (at < subheader.size()) tables += subheader.substr(at, bytes);
    at += bytes;
  }
  return tables;
}

// ---------------------------------------------------------------- the written file

std::string FindSegmentFault(NitfFile& document, NitfFile& written, SegmentKind kind, uint32_t index) {
  const std::string name = std::string(NameOf(kind)) + ' ' + std::to_string(index);
  const uint32_t length = written.header.Lengths(kind).InFile(index).data;
  if (const AppendedData* given = DataGiven(document, kind, index)) {
    if (length != given->bytes.size()) return name + " has another length than its data";
    return HoldsBytes(written, kind, index, given->bytes.Span()) ? "" : name + " has other data";
  }
  if (IsVectorQuantised(document, kind, index)) {
    return SameVectors(document, written, index, length) ? "" : name + " has other codes";
  }
  if (length != document.DataLength(kind, index)) return name + " has another length";
  if (!SameBytes(document, written, kind, index, length)) return name + " has other data";
  if (kind == SegmentKind::Image && LookupTablesOf(document, index) != LookupTablesOf(written, index)) {
    return name + " has other lookup tables";
  }
  return "";
}

std::string FindSegmentFaults(NitfFile& document, NitfFile& written, uint64_t size) {
  if (document.header.reservedExtensions.Count() != 0) return "reserved extension segments would be lost";
  uint64_t end = written.header.headerLength;
  for (SegmentKind kind : kSavedKinds) {
    const LengthTable& table = written.header.Lengths(kind);
    if (table.Count() != document.header.Lengths(kind).Count())
      return std::string("the number of ") + NameOf(kind) + " segments is another";
    for (uint32_t i = 0; i < table.Count(); ++i) {
      end += uint64_t{table.InFile(i).subheader} + table.InFile(i).data;
      if (end > size)
        return std::string(NameOf(kind)) + " " + std::to_string(i) + " ends behind the file";
      if (std::string fault = FindSegmentFault(document, written, kind, i); !fault.empty()) return fault;
    }
  }
  return end == size ? "" : "bytes behind the last segment belong to none";
}

}  // namespace

std::string FindFault(NitfHandle document, const std::string& path) {
  std::error_code error;
  const uint64_t size = std::filesystem::file_size(path, error);
  Document written;
  if (const int32_t status = written.Open(path); error || status != ORB_SUCCESS)
    return "it would not open (status " + std::to_string(status) + ": " + MeaningOf(status) + ")";
  if (written.get()->header.fileLength != size) {
    return "FL would be " + std::to_string(written.get()->header.fileLength) + " in a file of " +
           std::to_string(size) + " bytes";
  }
  uint64_t pixels = 0;
  for (const ImageSubheader& image : written.get()->images)
    pixels = std::max(pixels, image.FullWidth().Value() * image.FullHeight().Value());
  const WorkAccount account(path);
  WorkAccount::AllowPixels(pixels);
  const HostWork work;
  return FindSegmentFaults(*document, *written.get(), size);
}

}  // namespace tool
