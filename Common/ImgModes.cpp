#include "Common/ImgModes.h"

#include <algorithm>

#include "Common/BigEndian.h"
#include "Common/ImgBiLevel.h"
#include "Common/ImgBitmap.h"
#include "host/display.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImgModes";

// ---------------------------------------------------------------- one and two bands

// 32- and 64-bit samples of a "MONO" image are shown through an 8-bit bitmap.
bool IsNarrowed(const ImageSubheader& header) {
  return header.IsMono() && (header.NBPP.value == 32 || header.NBPP.value == 64);
}

// 12-bit samples of one band stand two in three bytes.
bool IsTwelveBit(const ImageSubheader& header) {
  return header.BandCount() == 1 && header.NBPP.value == 12;
}

uint32_t SingleBlockRowLength(const ImageSubheader& header, uint32_t width, uint32_t bytesPerLine) {
  if (IsTwelveBit(header)) return std::min(bytesPerLine, width) + (std::min(bytesPerLine, width) + 1) / 2;
  const uint32_t bytesPerSample = header.IsMono() ? std::max(1u, header.NBPP.value / 8) : 1;
  return std::min(bytesPerLine, width) * bytesPerSample;
}

Status ReadSingleBlock(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  const uint32_t nbpp = header.NBPP.value, abpp = header.ABPP.value;
  SampleRange range;
  // The rows are read whatever became of the range: data that ends early has the range of what there is
  // of it, and where memory is out, the values of ABPP bits stand for it.
  if (ScalesByRange(nbpp, abpp)) (void)FindSampleRange(source, range);
  const uint32_t length = SingleBlockRowLength(header, segment.width, segment.bytesPerLine);
  KernelBuffer<uint8_t> row;
  if (Status s = row.Allocate(std::max(length, segment.bytesPerLine), ORB_HERE); !Ok(s)) return s;
  source.blank = false;
  // Samples of 16 significant bits get host order, pairs of 12 bits are repacked.
  const bool convert = nbpp != abpp || nbpp == 16 || IsTwelveBit(header);
  RowAccess rows(segment);
  for (uint32_t y = 0; y < segment.height; ++y) {
    const int64_t offset = int64_t{header.mask.IMDATOFF} + int64_t{y} * length;
    if (Status s = source.ReadAt(offset, row.data(), length); !Ok(s)) return s;
    if (convert) ConvertSamples(row.Span().first(length), nbpp, abpp, range);
    if (Status s = rows.Put(row.data(), y); !Ok(s)) return s;
  }
  return Status::Success;
}

CheckedSize MultiBlockRowLength(const ImageSubheader& header) {
  const uint32_t bits = IsNarrowed(header) ? header.NBPP.value : SegmentBitsPerPixel(header);
  return CheckedSize((uint64_t{bits} * header.NPPBH.value + 7) / 8);
}

Status ReadRowBlock(KernelBitmap& segment, const ImageSource& source, int64_t offset, BlockPlace place,
                    KernelBuffer<uint8_t>& row, uint32_t length, ScratchBlock& scratch) {
  const ImageSubheader& header = source.header;
  for (uint32_t first = 0; first < header.NPPBV.value; first += scratch.Rows()) {
    const uint32_t count = std::min(scratch.Rows(), header.NPPBV.value - first);
    scratch.Prepare();
    RowAccess rows(scratch.Record());
    for (uint32_t y = 0; y < count; ++y, offset += length) {
      if (Status s = source.ReadAt(offset, row.data(), length); !Ok(s)) return s;
      ConvertSamples(row.Span().first(length), header.NBPP.value, header.ABPP.value, {});
      if (Status s = rows.Put(row.data(), y); !Ok(s)) return s;
    }
    const BlockPlace strip = {place.column, place.row + first};
    if (Status s = PlaceRows(source, segment, scratch.Record(), count, strip); !Ok(s)) return s;
  }
  return Status::Success;
}

Status ReadMultiBlock(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  const MaskTable& mask = header.mask;
  ScratchBlock scratch;
  if (Status s = scratch.Allocate(header, RowsOfStrip(header, segment.bitsPerPixel), segment.bitsPerPixel,
                                  header.IsMono() ? kOrderGrey : kOrderBgr);
      !Ok(s)) {
    return s;
  }
  const auto length = static_cast<uint32_t>(MultiBlockRowLength(header).Value());
  KernelBuffer<uint8_t> row;
  if (Status s = row.Allocate(std::max(length, scratch.BytesPerLine()), ORB_HERE); !Ok(s)) return s;
  int64_t next = mask.IMDATOFF;
  for (uint64_t n = 0; n < header.BlockCount(); ++n) {
    if (mask.HasBlockRecords() && !source.IsStored(n)) continue;
    const BlockPlace place = PlaceOfBlock(header, n);
    if (Status s = ReadRowBlock(segment, source, next, place, row, length, scratch); !Ok(s)) return s;
    next += int64_t{length} * header.NPPBV.value;
  }
  return Status::Success;
}

// ---------------------------------------------------------------- three and more bands

// Where the samples of a block lie, in bytes from its offset, and how its mode is read.
struct ModeLayout {
  int64_t blockLength;  // from one block's offset to the next one's
  int64_t bandStride;
  int64_t rowStride;
  uint32_t pixelStride = 1;
  bool segmentDepth = false;      // the scratch has the segment bitmap's depth, else 24 bits
  bool usesPadRecords = true;     // without block records, pad pixel records give offsets
  bool repeatsLastRow = false;    // the last row of a block shows the row above it
  bool marksInterleaved = false;  // the segment bitmap's hint is set
  // Of blue (0), green (1) and red (2): the one that hosts expect of a mode.
  uint8_t readOrder[3] = {2, 1, 0};
};

// Bytes between the bands of a masked band-sequential image: the extent of its stored blocks.
int64_t MaskedPlane(const ImageSource& source) {
  const ImageSubheader& header = source.header;
  const int64_t inner = header.NBPC.value;
  int64_t first = -1, last = -1;
  for (uint64_t n = 0; n < header.BlockCount(); ++n) {
    if (!header.mask.HasBlock(n)) continue;
    if (first < 0) first = static_cast<int64_t>(n);
    last = static_cast<int64_t>(n);
  }
  if (first < 0) return 0;
  const int64_t columns = last % inner - first % inner + 1;
  const int64_t rows = last / inner - first / inner + 1;
  return columns * rows * header.NPPBH.value * header.NPPBV.value;
}

// Planes from one block of IMODE B to the next: the segment bitmap's bytes per pixel unless every band
// counts, so that blocks of bitmaps with less than a byte all lie at the same place.
int64_t PlanesOfBlock(const ImageSubheader& header) {
  const bool multi = header.RepresentationCode() == Representation::Multi;
  return multi ? header.BandCount() : SegmentBitsPerPixel(header) / 8;
}

ModeLayout LayoutOf(const ImageSource& source) {
  const ImageSubheader& header = source.header;
  const int64_t width = header.NPPBH.value;
  const int64_t block = width * header.NPPBV.value;
  const int64_t bands = header.BandCount();
  const bool multi = header.RepresentationCode() == Representation::Multi;
  switch (header.Mode()) {
    case ImageMode::B:
      return {.blockLength = block * PlanesOfBlock(header),
              .bandStride = block,
              .rowStride = width,
              .segmentDepth = true,
              .readOrder = {2, 0, 1}};
    case ImageMode::P:
      return {.blockLength = block * bands,
              .bandStride = 1,
              .rowStride = width * bands,
              .pixelStride = static_cast<uint32_t>(bands),
              .segmentDepth = true,
              .repeatsLastRow = true,
              .marksInterleaved = true,
              .readOrder = {0, 1, 2}};
    case ImageMode::R:
      return {.blockLength = block * (multi ? bands : 3),
              .bandStride = width,
              .rowStride = width * bands,
              .usesPadRecords = false};
    case ImageMode::S:
      break;
  }
  const bool masked = header.mask.HasBlockRecords();
  return {.blockLength = block,
          .bandStride = masked ? MaskedPlane(source) : block * static_cast<int64_t>(header.BlockCount()),
          .rowStride = width,
          .marksInterleaved = true};
}

// Offset of block n from the start of the data; false when it is not stored.
bool OffsetOfBlock(const ImageSource& source, const ModeLayout& layout, uint64_t n, int64_t& offset) {
  const MaskTable& mask = source.header.mask;
  offset = static_cast<int64_t>(n) * layout.blockLength;
  if (mask.HasBlockRecords()) {
    if (!source.IsStored(n)) return false;
    offset = mask.BlockRecord(n);
  } else if (layout.usesPadRecords && mask.PadRecord(n) != MaskTable::kNoBlock) {
    offset = mask.PadRecord(n);
  }
  offset += mask.IMDATOFF;
  return true;
}

// The samples of four pixels of a row, the first in the lowest byte.
template <size_t kStride>
uint32_t FourSamples(const uint8_t* row) {
  if constexpr (kStride == 1) return Little32(row);
  return row[0] | static_cast<uint32_t>(row[kStride]) << 8 |
         static_cast<uint32_t>(row[2 * kStride]) << 16 | static_cast<uint32_t>(row[3 * kStride]) << 24;
}

// Puts the samples of three rows into pixels, four at a step: they are three words.
template <size_t kStride>
void InterleaveRows(const uint8_t* blue, const uint8_t* green, const uint8_t* red, uint32_t count,
                    uint8_t* pixels) {
  constexpr size_t kStep = 4 * kStride;
  for (; count >= 4; count -= 4, blue += kStep, green += kStep, red += kStep, pixels += 12) {
    const uint32_t b = FourSamples<kStride>(blue), g = FourSamples<kStride>(green),
                   r = FourSamples<kStride>(red);
    PutLittle32((b & 0xFF) | (g & 0xFF) << 8 | (r & 0xFF) << 16 | (b & 0xFF00) << 16, pixels);
    PutLittle32((g >> 8 & 0xFF) | (r & 0xFF00) | (b & 0xFF0000) | (g & 0xFF0000) << 8, pixels + 4);
    PutLittle32((r >> 16 & 0xFF) | b >> 24 << 8 | g >> 24 << 16 | (r & 0xFF000000), pixels + 8);
  }
  for (; count > 0; --count, blue += kStride, green += kStride, red += kStride, pixels += 3) {
    pixels[0] = *blue;
    pixels[1] = *green;
    pixels[2] = *red;
  }
}

// Reads the rows of blocks into blue, green, red pixels.
class BandRows {
 public:
  BandRows(const ImageSource& source, const ModeLayout& layout, BandSelection bands)
      : source_(source), layout_(layout), bands_{bands.blue, bands.green, bands.red} {}

  Status Allocate(const ScratchBlock& scratch) {
    width_ = source_.header.NPPBH.value;
    step_ = scratch.BytesPerPixel();
    if (Status s = pixels_.Allocate(uint64_t{scratch.BytesPerLine()} + 3, ORB_HERE); !Ok(s)) return s;
    if (IsSideBySide()) {
      const auto [first, last] = std::minmax_element(std::begin(bands_), std::end(bands_));
      return AllocateRow(samples_[0], static_cast<uint32_t>(*last - *first));
    }
    for (KernelBuffer<uint8_t>& samples : samples_) {
      if (Status s = AllocateRow(samples, 0); !Ok(s)) return s;
    }
    return Status::Success;
  }
  void Clear() { std::fill(pixels_.begin(), pixels_.end(), uint8_t{0}); }
  /// Reads a row whose first sample of band 0 lies at `offset` of the data.
  Status Read(int64_t offset) {
    if (Status s = IsSideBySide() ? ReadOnce(offset) : ReadEach(offset); !Ok(s)) return s;
    SpreadAll();
    return Status::Success;
  }
  const uint8_t* Pixels() const { return pixels_.data(); }

 private:
  // Whether the samples of a pixel stand side by side: one row has those of all bands.
  bool IsSideBySide() const { return layout_.pixelStride != 1; }
  Status AllocateRow(KernelBuffer<uint8_t>& samples, uint32_t more) {
    return samples.Allocate(uint64_t{width_} * layout_.pixelStride + more, ORB_HERE);
  }
  Status ReadOnce(int64_t offset) {
    const int32_t first = *std::min_element(std::begin(bands_), std::end(bands_));
    KernelBuffer<uint8_t>& samples = samples_[0];
    for (int colour = 0; colour < 3; ++colour) rows_[colour] = samples.data() + (bands_[colour] - first);
    return source_.ReadAt(offset + first, samples.data(), static_cast<uint32_t>(samples.size()));
  }
  Status ReadEach(int64_t offset) {
    for (uint8_t colour : layout_.readOrder) {
      KernelBuffer<uint8_t>& samples = samples_[colour];
      rows_[colour] = samples.data();
      const int64_t at = offset + bands_[colour] * layout_.bandStride;
      if (Status s = source_.ReadAt(at, samples.data(), static_cast<uint32_t>(samples.size())); !Ok(s))
        return s;
    }
    return Status::Success;
  }
  void SpreadAll() {
    const auto interleave = layout_.pixelStride == 1   ? &InterleaveRows<1>
                            : layout_.pixelStride == 3 ? &InterleaveRows<3>
                                                       : nullptr;
    if (interleave != nullptr && step_ == 3)
      return interleave(rows_[0], rows_[1], rows_[2], width_, pixels_.data());
    for (uint8_t colour : layout_.readOrder) {
      if (colour < step_) Spread(colour);
    }
  }
  // The samples of one colour, at pixels of any size and distance.
  void Spread(uint8_t colour) {
    const auto fits = static_cast<uint32_t>((pixels_.size() - colour + step_ - 1) / step_);
    const uint8_t* in = rows_[colour];
    uint8_t* out = pixels_.data() + colour;
    const uint32_t count = std::min(width_, fits);
    for (uint32_t i = 0; i < count; ++i, in += layout_.pixelStride, out += step_) *out = *in;
  }

  const ImageSource& source_;
  const ModeLayout& layout_;
  int32_t bands_[3];
  uint32_t width_ = 0;
  uint32_t step_ = 0;
  KernelBuffer<uint8_t> pixels_;
  KernelBuffer<uint8_t> samples_[3];
  const uint8_t* rows_[3] = {};  // the first sample of each colour
};

Status ReadBandBlock(KernelBitmap& segment, const ImageSource& source, const ModeLayout& layout,
                     int64_t offset, BlockPlace place, BandRows& rows, ScratchBlock& scratch) {
  const uint32_t height = source.header.NPPBV.value;
  rows.Clear();
  for (uint32_t first = 0; first < height; first += scratch.Rows()) {
    const uint32_t count = std::min(scratch.Rows(), height - first);
    scratch.Prepare();
    RowAccess target(scratch.Record());
    for (uint32_t y = first; y < first + count; ++y) {
      const bool repeated = layout.repeatsLastRow && y + 1 == height;
      if (!repeated) {
        if (Status s = rows.Read(offset + y * layout.rowStride); !Ok(s)) return s;
      }
      if (Status s = target.Put(rows.Pixels(), y - first); !Ok(s)) return s;
    }
    const BlockPlace strip = {place.column, place.row + first};
    if (Status s = PlaceRows(source, segment, scratch.Record(), count, strip); !Ok(s)) return s;
  }
  return Status::Success;
}

Status ReadInterleavedBands(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  const ModeLayout layout = LayoutOf(source);
  const bool startsAtZero = header.Mode() == ImageMode::B;
  const BandSelection bands = SelectBands(header, source.rememberedBands,
                                          startsAtZero ? BandSelection{0, 0, 0} : BandSelection{0, 1, 2});
  if (layout.marksInterleaved) segment.interleaved = 1;
  ScratchBlock scratch;
  const uint32_t depth = layout.segmentDepth ? segment.bitsPerPixel : 24;
  if (Status s = scratch.Allocate(header, RowsOfStrip(header, depth), depth, kOrderBgr); !Ok(s)) return s;
  BandRows rows(source, layout, bands);
  if (Status s = rows.Allocate(scratch); !Ok(s)) return s;
  for (uint64_t n = 0; n < header.BlockCount(); ++n) {
    int64_t offset = 0;
    if (!OffsetOfBlock(source, layout, n, offset)) continue;
    const BlockPlace place = PlaceOfBlock(header, n);
    if (Status s = ReadBandBlock(segment, source, layout, offset, place, rows, scratch); !Ok(s)) return s;
  }
  return Status::Success;
}

}  // namespace

CheckedSize LeastDataBytes(const ImageSubheader& header) {
  if (header.CompressionCode() != Compression::NC || header.Pixel() == PixelType::BiLevel) return 0;
  const CheckedSize blocks = CheckedSize(header.NBPR.value) * header.NBPC.value;
  if (header.BandCount() >= 3) {
    const uint32_t rows = header.NPPBV.value == 0 ? 0 : header.NPPBV.value - 1;
    const bool sharesPlace = header.Mode() == ImageMode::B && PlanesOfBlock(header) == 0;
    return (sharesPlace ? CheckedSize(1) : blocks) * header.NPPBH.value * rows;
  }
  if (!header.IsSingleBlock()) return blocks * MultiBlockRowLength(header) * header.NPPBV.value;
  const CheckedSize lineBits = header.FullWidth() * SegmentBitsPerPixel(header);
  if (!lineBits.Within(INT64_MAX) || !header.FullWidth().Within(INT32_MAX)) return UINT64_MAX;
  const auto bytesPerLine = static_cast<uint32_t>(lineBits.Value() / 8);
  return header.FullHeight() * SingleBlockRowLength(header, header.NPPBH.value, bytesPerLine);
}

Status ReadUncompressedImage(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  if (header.Pixel() == PixelType::BiLevel) return ReadBiLevel(segment, source);
  if (header.BandCount() >= 3) return ReadInterleavedBands(segment, source);
  return header.IsSingleBlock() ? ReadSingleBlock(segment, source) : ReadMultiBlock(segment, source);
}
