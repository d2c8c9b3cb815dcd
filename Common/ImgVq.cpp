#include "Common/ImgVq.h"

#include <algorithm>

#include "Common/BigEndian.h"
#include "Common/ImgBitmap.h"
#include "host/display.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImgVq";

// Codes of a fixed number of bits, most significant first, one after the other from the file. Bits left
// over at the end of a row or block belong to the next code.
class CodeReader {
 public:
  CodeReader(int32_t file, uint32_t bits) : file_(file), bits_(bits) {}

  /// The next code, or -7.
  Status Next(uint32_t& code) {
    while (held_ < bits_) {
      if (next_ == filled_) {
        filled_ = KernelRead(file_, buffer_, sizeof buffer_);
        next_ = 0;
        if (filled_ == 0) return Status::ShortRead;
      }
      accumulator_ = accumulator_ << 8 | buffer_[next_++];
      held_ += 8;
    }
    held_ -= bits_;
    code = static_cast<uint32_t>(accumulator_ >> held_ & ((uint64_t{1} << bits_) - 1));
    return Status::Success;
  }

 private:
  int32_t file_;
  uint32_t bits_;
  uint64_t accumulator_ = 0;
  uint32_t held_ = 0;
  uint32_t next_ = 0, filled_ = 0;
  uint8_t buffer_[4096];
};

// The vectors that codes stand for. Only what the tables hold of them is kept: the columns that no table
// gives are zero.
struct Codebook {
  uint32_t vectorHeight = 0;
  uint32_t vectorWidth = 0;
  uint32_t bytesPerPixel = 1;  // of a codebook value: 1, 2 (big-endian) or 3 (red, green, blue)
  uint32_t entries = 0;
  uint32_t entryBytes = 0;  // of what is kept
  KernelBuffer<uint8_t> values;

  Status SetGeometry(const ImageSubheader& header, const VqHeader& vq, uint32_t bitsPerPixel);
  /// Reads the lookup offset records and the tables behind them.
  Status Read(int32_t file, const VqHeader& vq);
  /// Copies `count` bytes of a vector from an offset on.
  void Take(uint32_t code, size_t offset, uint8_t* to, size_t count) const {
    const size_t kept = offset < entryBytes ? std::min<size_t>(count, entryBytes - offset) : 0;
    const uint8_t* entry = values.data() + size_t{code} * entryBytes;
    std::copy_n(entry + (kept != 0 ? offset : 0), kept, to);
    std::fill(to + kept, to + count, uint8_t{0});
  }

 private:
  Status ReadTable(int32_t file, uint32_t table);
};

Status Codebook::SetGeometry(const ImageSubheader& header, const VqHeader& vq, uint32_t bitsPerPixel) {
  const bool knownDepth =
      bitsPerPixel == 8 || bitsPerPixel == 12 || bitsPerPixel == 16 || bitsPerPixel >= 24;
  if (!knownDepth || vq.codeRows == 0 || vq.codesPerRow == 0 || vq.codeRows > header.NPPBV.value ||
      vq.codesPerRow > header.NPPBH.value || vq.codeBits == 0 || vq.codeBits > 32) {
    return Status::BadStructure;
  }
  vectorHeight = header.NPPBV.value / vq.codeRows;
  vectorWidth = header.NPPBH.value / vq.codesPerRow;
  bytesPerPixel = VqBytesPerPixel(bitsPerPixel);
  const CheckedSize bytes = CheckedSize(vectorHeight) * vectorWidth * bytesPerPixel;
  if (!bytes.Within(INT32_MAX)) return Status::BadStructure;
  // The tables of an entry stand side by side in it.
  const bool fit = vq.lookupRecordCount != 0 && vq.lookupRecordCount <= vectorWidth;
  entryBytes = fit ? vectorHeight * bytesPerPixel * vq.lookupRecordCount : 0;
  return fit ? Status::Success : Status::BadStructure;
}

Status Codebook::Read(int32_t file, const VqHeader& vq) {
  for (uint32_t table = 0; table < vq.lookupRecordCount; ++table) {
    VqLookupRecord record;
    if (Status s = record.Read(file); !Ok(s)) return s;
    if (table == 0) entries = record.recordCount;
  }
  if (entries == 0) return Status::BadStructure;
  const CheckedSize stored = CheckedSize(entries) * entryBytes;
  const CheckedSize whole = CheckedSize(entries) * vectorHeight * vectorWidth * bytesPerPixel;
  if (!stored.Within(INT32_MAX) || !whole.Within(INT32_MAX)) return Status::ShortRead;
  if (Status s = RequireRemaining(file, stored.Value()); !Ok(s)) return s;
  if (Status s = values.Allocate(stored.Value(), ORB_HERE); !Ok(s)) return s;
  for (uint32_t table = 0; table < vq.lookupRecordCount; ++table) {
    if (Status s = ReadTable(file, table); !Ok(s)) return s;
  }
  return Status::Success;
}

Status Codebook::ReadTable(int32_t file, uint32_t table) {
  const uint32_t bytes = vectorHeight * bytesPerPixel;
  uint8_t* to = values.data() + size_t{table} * bytes;
  for (uint32_t entry = 0; entry < entries; ++entry, to += entryBytes) {
    if (Status s = ReadExactly(file, to, bytes); !Ok(s)) return s;
  }
  return Status::Success;
}

// Puts one codebook pixel at column x of a bitmap row.
void PutPixel(uint8_t* row, uint32_t x, const uint8_t* value, uint32_t bitsPerPixel) {
  const auto word = static_cast<uint16_t>(value[0] << 8 | value[1]);
  switch (bitsPerPixel) {
    case 12: {
      uint8_t* at = row + x / 2 * 3 + x % 2;
      const uint32_t bits = word & 0xFFFu;
      if (x % 2 == 0) {
        at[0] = static_cast<uint8_t>(bits);
        at[1] = static_cast<uint8_t>((at[1] & 0xF0) | bits >> 8);
      } else {
        at[0] = static_cast<uint8_t>((at[0] & 0x0F) | (bits & 15) << 4);
        at[1] = static_cast<uint8_t>(bits >> 4);
      }
      break;
    }
    case 16:
      std::memcpy(row + 2 * size_t{x}, &word, 2);
      break;
    default: {
      uint8_t* at = row + 3 * size_t{x};
      at[0] = value[2];
      at[1] = value[1];
      at[2] = value[0];
    }
  }
}

// Decodes the blocks of one image, each in strips of rows.
class VqDecoder {
 public:
  VqDecoder(KernelBitmap& segment, const ImageSource& source, const Codebook& book, const VqHeader& vq)
      : segment_(segment),
        source_(source),
        header_(source.header),
        book_(book),
        vq_(vq),
        codes_(source.document.FileHandle(), vq.codeBits) {}

  Status Decode() {
    if (Status s = PrepareStrip(); !Ok(s)) return s;
    for (uint64_t n = 0; n < header_.BlockCount(); ++n) {
      if (!header_.mask.HasBlock(n)) continue;
      if (Status s = DecodeBlock(PlaceOfBlock(header_, n)); !Ok(s)) return s;
    }
    return Status::Success;
  }

 private:
  Status PrepareStrip() {
    stripRows_ = std::min(book_.vectorHeight, RowsOfStrip(header_, segment_.bitsPerPixel));
    KernelBitmap& strip = strip_.record;
    if (Status s = FromHost(KernelAllocateBitmap(&strip, kBitmapRecordSize, 2, header_.NPPBH.value,
                                                 stripRows_, segment_.bitsPerPixel, kOrderBgr, nullptr,
                                                 kViewTopLeft, nullptr, 0));
        !Ok(s)) {
      return s;
    }
    for (KernelBitmap* bitmap : {&segment_, &strip}) {
      if (header_.palette.size() != 0) {
        if (Status s = PutDisplayPalette(*bitmap, header_); !Ok(s)) return s;
      } else if (bitmap->bitsPerPixel == 8) {
        if (Status s = PutDefaultColours(*bitmap, 8); !Ok(s)) return s;
      }
    }
    if (Status s = row_.Allocate(vq_.codesPerRow, ORB_HERE); !Ok(s)) return s;
    if (Status s = vector_.Allocate(uint64_t{book_.vectorWidth} * book_.bytesPerPixel, ORB_HERE); !Ok(s))
      return s;
    return pixels_.Allocate(strip.byteCount, ORB_HERE);
  }

  Status DecodeBlock(BlockPlace place) {
    for (uint32_t y = 0; y < header_.NPPBV.value; y += book_.vectorHeight) {
      for (uint32_t& code : row_) {
        if (Status s = codes_.Next(code); !Ok(s)) return s;
        if (code >= book_.entries) return Status::BadStructure;
      }
      const uint32_t rows = std::min(book_.vectorHeight, header_.NPPBV.value - y);
      for (uint32_t first = 0; first < rows; first += stripRows_) {
        if (Status s = PlaceStrip(first, std::min(stripRows_, rows - first),
                                  {place.column, place.row + y + first});
            !Ok(s)) {
          return s;
        }
      }
    }
    return Status::Success;
  }

  // Some rows of a row of vectors.
  Status PlaceStrip(uint32_t first, uint32_t rows, BlockPlace place) {
    KernelBitmap& strip = strip_.record;
    std::fill(pixels_.begin(), pixels_.end(), uint8_t{0});
    // A vector is a square of its width: there are no values for rows below that.
    for (uint32_t j = first; j < std::min(first + rows, book_.vectorWidth); ++j) {
      uint8_t* row = pixels_.data() + size_t{j - first} * strip.bytesPerLine;
      if (HasWholeBytes()) {
        PlaceByteRow(j, row);
      } else {
        for (uint32_t k = 0; k < vq_.codesPerRow; ++k)
          PlaceVectorRow(row_[k], j, k * book_.vectorHeight, row);
      }
    }
    if (Status s =
            FromHost(KernelSetBitmapData(&strip, pixels_.data(), strip.height * strip.bytesPerLine));
        !Ok(s)) {
      return s;
    }
    return PlaceRows(source_, segment_, strip, rows, place);
  }

  // Whether vectors of one byte a pixel stand side by side in the block, with all their columns.
  bool HasWholeBytes() const {
    const uint64_t side = book_.vectorWidth;
    return book_.bytesPerPixel == 1 && book_.vectorHeight == side && book_.entryBytes == side * side &&
           side * vq_.codesPerRow <= header_.NPPBH.value;
  }
  // Row j of all vectors of a row.
  void PlaceByteRow(uint32_t j, uint8_t* row) {
    const size_t side = book_.vectorWidth;
    const uint8_t* values = book_.values.data() + j * side;
    if (side == 4) {  // the usual width, at a size that the compiler knows
      for (const uint32_t code : row_.Span()) {
        std::memcpy(row, values + size_t{code} * 16, 4);
        row += 4;
      }
      return;
    }
    for (const uint32_t code : row_.Span()) {
      row = std::copy_n(values + size_t{code} * book_.entryBytes, side, row);
    }
  }

  // Row j of a vector, clipped to the block.
  void PlaceVectorRow(uint32_t code, uint32_t j, uint32_t x, uint8_t* row) {
    const uint32_t side = book_.vectorWidth;
    if (x >= header_.NPPBH.value) return;
    const uint32_t width = std::min(side, header_.NPPBH.value - x);
    const size_t offset = size_t{j} * side * book_.bytesPerPixel;
    if (book_.bytesPerPixel == 1) {
      book_.Take(code, offset, row + x, width);
      return;
    }
    const uint8_t* in = vector_.data();
    book_.Take(code, offset, vector_.data(), size_t{width} * book_.bytesPerPixel);
    for (uint32_t i = 0; i < width; ++i, in += book_.bytesPerPixel) {
      PutPixel(row, x + i, in, segment_.bitsPerPixel);
    }
  }

  KernelBitmap& segment_;
  const ImageSource& source_;
  const ImageSubheader& header_;
  const Codebook& book_;
  const VqHeader& vq_;
  CodeReader codes_;
  uint32_t stripRows_ = 0;
  OwnedBitmap strip_;
  KernelBuffer<uint32_t> row_;    // codes of a row of vectors
  KernelBuffer<uint8_t> vector_;  // a row of one vector
  KernelBuffer<uint8_t> pixels_;
};

// Makes the segment bitmap just large enough for the blocks that are stored.
Status ShrinkToStoredBlocks(KernelBitmap& segment, const ImageSource& source) {
  const ImageSubheader& header = source.header;
  BlockPlace last = {0, 0};
  for (uint64_t n = 0; n < header.BlockCount(); ++n) {
    if (!header.mask.HasBlock(n)) continue;
    const BlockPlace place = PlaceOfBlock(header, n);
    last = {std::max(last.column, place.column), std::max(last.row, place.row)};
  }
  const uint32_t bits = segment.bitsPerPixel, order = segment.colourOrder;
  (void)KernelFreeBitmap(&segment);
  return FromHost(KernelAllocateBitmap(&segment, kBitmapRecordSize, 1, last.column + header.NPPBH.value,
                                       last.row + header.NPPBV.value, bits, order, nullptr, kViewTopLeft,
                                       nullptr, 0));
}

}  // namespace

Status VqHeader::Read(int32_t file) {
  uint8_t raw[kBytes];
  if (Status s = ReadExactly(file, raw, kBytes); !Ok(s)) return s;
  codeRows = Big32(raw);
  codesPerRow = Big32(raw + 4);
  codeBits = raw[8];
  lookupRecordCount = Big16(raw + 11);
  return Status::Success;
}

Status VqLookupRecord::Read(int32_t file) {
  uint8_t raw[kBytes];
  if (Status s = ReadExactly(file, raw, kBytes); !Ok(s)) return s;
  recordCount = Big32(raw + 2);
  return Status::Success;
}

Status FindVqDataExtent(const ImageSource& source, VqDataExtent& extent) {
  const ImageSubheader& image = source.header;
  const int32_t file = source.document.FileHandle();
  MaskTable mask;  // the source's, whatever the record says
  if (Status s = SeekTo(file, source.dataStart); !Ok(s)) return s;
  if (image.CompressionCode() == Compression::M4) {
    FieldReader reader(file, ReadMode::Normal, 0);
    if (Status s = mask.Read(reader, image.MaskRecords()); !Ok(s)) return s;
  }
  const int64_t behindMask = KernelSeek(file, 0, kSeekCurrent);
  if (behindMask < 0) return Status::ShortRead;
  extent.start = behindMask - source.dataStart;
  VqHeader vq;
  if (Status s = vq.Read(file); !Ok(s)) return s;
  if (vq.codeRows == 0 || vq.codeRows > image.NPPBV.value) return Status::BadStructure;
  const uint32_t step = image.NPPBV.value / vq.codeRows;
  VqLookupRecord first = {};
  if (vq.lookupRecordCount != 0) {
    if (Status s = first.Read(file); !Ok(s)) return s;
  }
  uint64_t stored = 0;
  for (uint64_t n = 0; n < image.BlockCount(); ++n) {
    stored += mask.HasBlock(n);
  }
  const CheckedSize tables = CheckedSize(first.recordCount) * step *
                             VqBytesPerPixel(SegmentBitsPerPixel(image)) * vq.lookupRecordCount;
  const uint64_t codeRows = (image.NPPBV.value + step - 1) / step;
  const CheckedSize codes = CheckedSize(uint64_t{vq.codeBits} * vq.codesPerRow / 8) * codeRows * stored;
  const CheckedSize all = CheckedSize(VqHeader::kBytes) +
                          CheckedSize(VqLookupRecord::kBytes) * vq.lookupRecordCount + tables + codes;
  extent.bytes = all.Value();
  return (all + static_cast<uint64_t>(extent.start)).Within(source.length) ? Status::Success
                                                                           : Status::ShortRead;
}

Status SeekPastMaskTable(const ImageSource& source) {
  uint8_t head[10];
  if (Status s = source.ReadAt(0, head, sizeof head); !Ok(s)) return s;
  const ImageSubheader& header = source.header;
  const auto records = static_cast<int64_t>(header.BlockCount() * header.NBANDS.value) * 4;
  int64_t bytes = sizeof head + (Big16(head + 8) + 7) / 8;
  if (Big16(head + 4) != 0) bytes += records;
  if (Big16(head + 6) != 0) bytes += records;
  return SeekTo(source.document.FileHandle(), source.dataStart + bytes);
}

Status ReadVectorQuantisedImage(KernelBitmap& segment, const ImageSource& source) {
  const int32_t file = source.document.FileHandle();
  if (Status s = SeekTo(file, source.dataStart); !Ok(s)) return s;
  if (source.header.CompressionCode() == Compression::M4) {
    if (Status s = SeekPastMaskTable(source); !Ok(s)) return s;
  }
  if (Status s = ShrinkToStoredBlocks(segment, source); !Ok(s)) return s;
  VqHeader vq;
  if (Status s = vq.Read(file); !Ok(s)) return s;
  Codebook book;
  if (Status s = book.SetGeometry(source.header, vq, segment.bitsPerPixel); !Ok(s)) return s;
  if (Status s = book.Read(file, vq); !Ok(s)) return s;
  return VqDecoder(segment, source, book, vq).Decode();
}
