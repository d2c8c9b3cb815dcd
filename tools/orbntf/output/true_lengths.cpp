#include "tools/orbntf/output/true_lengths.h"

#include <algorithm>
#include <vector>

#include "Common/ImgVq.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/output/segment_data.h"

namespace tool {
namespace {

template <class R>
uint32_t BytesOf(const R& record) {
  uint32_t bytes = 0;
  return Ok(MeasureRows<R>(R::Table(), record, bytes)) ? bytes : 0;
}

uint32_t SubheaderBytes(const NitfFile& document, SegmentKind kind, uint32_t index) {
  switch (kind) {
    case SegmentKind::Image:
      return BytesOf(*document.images.At(index));
    case SegmentKind::Graphic:
      return BytesOf(*document.graphics.At(index));
    case SegmentKind::Text:
      return BytesOf(*document.texts.At(index));
    case SegmentKind::DataExtension:
    case SegmentKind::Reserved:
      break;
  }
  return BytesOf(*document.dataExtensions.At(index));
}

uint32_t DataBytes(NitfFile& document, SegmentKind kind, uint32_t index) {
  if (const AppendedData* given = DataGiven(document, kind, index))
    return static_cast<uint32_t>(given->bytes.size());
  if (IsVectorQuantised(document, kind, index)) {
    VqDataExtent extent;
    const ImageSource source = ImageSource::Of(document, index, nullptr);
    if (Ok(FindVqDataExtent(source, extent)))
      return static_cast<uint32_t>(static_cast<uint64_t>(extent.start) + extent.bytes);
  }
  return document.DataLength(kind, index);
}

// The lengths of one kind's segments as a save writes them.
std::vector<SegmentLengths> MeasureSegments(NitfFile& document, SegmentKind kind) {
  std::vector<SegmentLengths> lengths;
  for (uint32_t i = 0; i < document.header.Lengths(kind).Count(); ++i)
    lengths.push_back({SubheaderBytes(document, kind, i), DataBytes(document, kind, i)});
  return lengths;
}

}  // namespace

bool SetTrueLengths(NitfHandle document) {
  FileHeader& header = document->header;
  const uint32_t headerBytes = BytesOf(header);
  int64_t total = headerBytes;
  bool changed = headerBytes != header.currentHeaderLength;
  std::vector<SegmentLengths> measured[std::size(kSavedKinds)];
  for (size_t i = 0; i < std::size(kSavedKinds); ++i) {
    measured[i] = MeasureSegments(*document, kSavedKinds[i]);
    const KernelBuffer<SegmentLengths>& current = header.Lengths(kSavedKinds[i]).current;
    changed = changed || !std::equal(current.begin(), current.end(), measured[i].begin());
    for (const SegmentLengths& lengths : measured[i]) total += int64_t{lengths.subheader} + lengths.data;
  }
  changed = changed || total != static_cast<int64_t>(header.fileLength);
  if (!changed || total > INT32_MAX || !Ok(header.SetFileLength(static_cast<uint64_t>(total))))
    return false;
  header.currentHeaderLength = headerBytes;
  for (size_t i = 0; i < std::size(kSavedKinds); ++i)
    std::copy(measured[i].begin(), measured[i].end(), header.Lengths(kSavedKinds[i]).current.begin());
  return true;
}

}  // namespace tool
