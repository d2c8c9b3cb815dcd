// The lengths in a file header as a save writes them.
#include <algorithm>
#include <vector>

#include "Common/Exchange.h"
#include "Common/HandlImg.h"
#include "Common/ImgVq.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/output/segment_data.h"
#include "tools/orbntf/output/verify.h"

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

// The lengths of one kind's segments, as the public record holds them.
struct TrueLengths {
  std::vector<int32_t> subheaders, data;
};

TrueLengths MeasureSegments(NitfFile& document, SegmentKind kind, int64_t& total, bool& changed) {
  TrueLengths lengths;
  const LengthTable& table = document.header.Lengths(kind);
  for (uint32_t i = 0; i < table.Count(); ++i) {
    const SegmentLengths is = {SubheaderBytes(document, kind, i), DataBytes(document, kind, i)};
    changed = changed || is.subheader != table.Current(i).subheader || is.data != table.Current(i).data;
    total += int64_t{is.subheader} + is.data;
    lengths.subheaders.push_back(static_cast<int32_t>(std::min<uint32_t>(is.subheader, INT32_MAX)));
    lengths.data.push_back(static_cast<int32_t>(std::min<uint32_t>(is.data, INT32_MAX)));
  }
  return lengths;
}

}  // namespace

void FillSetOnlyFields(const FileHeader& header, NITFHeader& record) {
  record.NUMX = DecimalOf(header.NUMX.text);
  record.NUMDES = header.dataExtensions.Count();
  record.NUMRES = header.reservedExtensions.Count();
  record.UDHDL = header.userDefined.length.Signed();
  record.UDHOFL = DecimalOf(header.userDefined.overflow.text);
  record.XHDL = header.extended.length.Signed();
  record.XHDLOFL = DecimalOf(header.extended.overflow.text);
  record.FBKGC = header.background;
}

bool SetTrueLengths(NitfHandle document) {
  FileHeader& header = document->header;
  const uint32_t headerBytes = BytesOf(header);
  int64_t total = headerBytes;
  bool changed = headerBytes != header.currentHeaderLength;
  TrueLengths lengths[std::size(kSavedKinds)];
  for (size_t i = 0; i < std::size(kSavedKinds); ++i)
    lengths[i] = MeasureSegments(*document, kSavedKinds[i], total, changed);
  changed = changed || total != static_cast<int64_t>(header.fileLength);
  if (!changed || total > INT32_MAX) return false;
  NITFHeader taken = {};
  if (Orb_NITFGetNITFHeader(document, &taken) == ORB_SUCCESS) {
    NITFHeader record = taken;
    FillSetOnlyFields(header, record);
    for (size_t i = 0; i < std::size(kSavedKinds); ++i) {
      const SegmentLengthFields& names = LengthFieldsOf(kSavedKinds[i]);
      const auto place = [&](const char* name) {
        return FindPlace(PublicFileFields(), &record, name).bytes;
      };
      StoreTo(place(names.countName), static_cast<uint32_t>(lengths[i].data.size()));
      StoreTo(place(names.subheaderName), lengths[i].subheaders.data());
      StoreTo(place(names.dataName), lengths[i].data.data());
    }
    record.FL = static_cast<int32_t>(total);
    // A header length that the text has already is not taken as a new one.
    for (const int32_t headerLength :
         {static_cast<int32_t>(headerBytes) + 1, static_cast<int32_t>(headerBytes)}) {
      record.HL = headerLength;
      Orb_NITFSetNITFHeader(document, &record);
    }
  }
  Orb_NITFFreeNITFHeader(&taken);
  return true;
}

}  // namespace tool
