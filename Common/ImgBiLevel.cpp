#include "Common/ImgBiLevel.h"

#include <algorithm>

#include "Common/ImgBitmap.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImgBiLevel";

// Reads bits of a block, most significant first, across rows without realigning.
class BitRows {
 public:
  explicit BitRows(std::span<const uint8_t> data) : data_(data) {}

  /// -9 when the bits run beyond the data or the row.
  Status Take(std::span<uint8_t> row, uint32_t bits) {
    if (bits > 8 * static_cast<uint64_t>(row.size()) || bit_ + bits > 8 * uint64_t{data_.size()}) {
      return Status::BadStructure;
    }
    const auto shift = static_cast<uint32_t>(bit_ % 8);
    const uint8_t* in = data_.data() + bit_ / 8;
    const uint32_t bytes = (bits + 7) / 8;
    for (uint32_t i = 0; i < bytes; ++i) {
      const bool more = shift != 0 && 8 * uint64_t{i} + 8 - shift < bits;
      row[i] = static_cast<uint8_t>(in[i] << shift | (more ? in[i + 1] >> (8 - shift) : 0));
    }
    if (bits % 8 != 0) row[bytes - 1] &= static_cast<uint8_t>(0xFF << (8 - bits % 8));
    bit_ += bits;
    return Status::Success;
  }
  uint64_t BytesUsed() const { return (bit_ + 7) / 8; }

 private:
  std::span<const uint8_t> data_;
  uint64_t bit_ = 0;
};

Status UnpackBiLevelBlock(const ImageSubheader& header, BitRows& bits, std::span<uint8_t> row,
                          ScratchBlock& scratch) {
  RowAccess rows(scratch.Record());
  for (uint32_t y = 0; y < header.NPPBV.value; ++y) {
    std::fill(row.begin(), row.end(), uint8_t{0});
    if (Status s = bits.Take(row, header.NPPBH.value); !Ok(s)) return s;
    if (Status s = rows.Put(row.data(), y); !Ok(s)) return s;
  }
  return Status::Success;
}

}  // namespace

Status ReadBiLevel(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  const MaskTable& mask = header.mask;
  if (mask.IMDATOFF > source.length) return Status::ShortRead;
  const uint32_t stored = source.length - mask.IMDATOFF;
  if (Status s = source.Require(mask.IMDATOFF, stored); !Ok(s)) return s;
  KernelBuffer<uint8_t> data, row;
  if (Status s = data.Allocate(source.length, ORB_HERE); !Ok(s)) return s;
  if (Status s = source.ReadAt(mask.IMDATOFF, data.data(), stored); !Ok(s)) return s;
  if (Status s = row.Allocate(segment.bytesPerLine, ORB_HERE); !Ok(s)) return s;
  ScratchBlock scratch;
  if (Status s = scratch.Allocate(header, header.NPPBV.value, segment.bitsPerPixel, kOrderBgr); !Ok(s))
    return s;
  uint64_t behindPrevious = 0;
  for (uint64_t n = 0; n < header.BlockCount(); ++n) {
    uint64_t start = behindPrevious;
    if (mask.HasBlockRecords()) {
      if (!source.IsStored(n)) continue;
      start = mask.BlockRecord(n);
    } else if (mask.PadRecord(n) != MaskTable::kNoBlock) {
      start = mask.PadRecord(n);
    }
    if (start > data.size()) return Status::BadStructure;
    scratch.Prepare();
    BitRows bits(data.Span().subspan(static_cast<size_t>(start)));
    if (Status s = UnpackBiLevelBlock(header, bits, row.Span(), scratch); !Ok(s)) return s;
    behindPrevious = start + bits.BytesUsed();
    if (Status s = PlaceBlock(source, segment, scratch.Record(), PlaceOfBlock(header, n)); !Ok(s))
      return s;
  }
  return Status::Success;
}
