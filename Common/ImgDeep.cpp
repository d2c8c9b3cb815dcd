#include "Common/ImgDeep.h"

#include "Common/BigEndian.h"
#include "Common/ImgBitmap.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImgDeep";

// Where the samples of one row of a band lie, in samples from the block's start.
struct RowPlace {
  uint64_t first;
  uint32_t stride;
};

// Whether the significant bits stand left in what is stored.
bool IsLeft(const ImageSubheader& header) { return header.PJUST.text[0] == 'L'; }

class DeepBlocks {
 public:
  DeepBlocks(KernelBitmap& segment, const ImageSource& source)
      : segment_(segment),
        source_(source),
        header_(source.header),
        width_(header_.NPPBH.value),
        height_(header_.NPPBV.value),
        bits_(header_.NBPP.value),
        shift_(std::max(8u, IsLeft(header_) ? bits_ : header_.ABPP.value) - 8) {}

  Status Read() {
    const bool startsAtZero = header_.Mode() == ImageMode::B;
    const BandSelection chosen = SelectBands(
        header_, source_.rememberedBands, startsAtZero ? BandSelection{0, 0, 0} : BandSelection{0, 1, 2});
    const int32_t bands[3] = {chosen.blue, chosen.green, chosen.red};
    const uint32_t strip = RowsOfStrip(header_, kPixelBits);
    if (Status s = scratch_.Allocate(header_, strip, kPixelBits, kOrderBgr); !Ok(s)) return s;
    if (Status s = pixels_.Allocate(scratch_.BytesPerLine(), ORB_HERE); !Ok(s)) return s;
    const uint64_t across = uint64_t{width_} * Stride();
    if (Status s = samples_.Allocate((across * bits_ + 7) / 8 + 2, ORB_HERE); !Ok(s)) return s;
    for (uint64_t n = 0; n < header_.BlockCount(); ++n) {
      if (Status s = ReadBlock(n, bands); !Ok(s)) return s;
    }
    return Status::Success;
  }

 private:
  static constexpr uint32_t kPixelBits = 24;

  bool IsSequential() const { return header_.Mode() == ImageMode::S; }
  uint32_t Stride() const { return header_.Mode() == ImageMode::P ? header_.BandCount() : 1; }
  uint64_t BlockBytes() const {
    const uint64_t bands = IsSequential() ? 1 : header_.BandCount();
    return (uint64_t{width_} * height_ * bands * bits_ + 7) / 8;
  }
  // Offset of a block's samples of a band; false when they are not stored.
  bool OffsetOf(uint64_t n, uint64_t band, int64_t& offset) const {
    const uint64_t number = IsSequential() ? band * header_.BlockCount() + n : n;
    offset = static_cast<int64_t>(number * BlockBytes());
    if (header_.mask.HasBlockRecords()) {
      if (!source_.IsStored(number)) return false;
      offset = header_.mask.BlockRecord(number);
    }
    offset += header_.mask.IMDATOFF;
    return true;
  }
  RowPlace PlaceOfRow(uint32_t y, uint64_t band) const {
    const uint64_t bands = header_.BandCount();
    switch (header_.Mode()) {
      case ImageMode::B:
        return {(band * height_ + y) * width_, 1};
      case ImageMode::P:
        return {uint64_t{y} * width_ * bands + band, Stride()};
      case ImageMode::R:
        return {(uint64_t{y} * bands + band) * width_, 1};
      case ImageMode::S:
        break;
    }
    return {uint64_t{y} * width_, 1};
  }

  Status ReadBlock(uint64_t n, const int32_t (&bands)[3]) {
    const BlockPlace place = PlaceOfBlock(header_, n);
    for (uint32_t first = 0; first < height_; first += scratch_.Rows()) {
      const uint32_t count = std::min(scratch_.Rows(), height_ - first);
      bool any = false;
      scratch_.Prepare();
      RowAccess rows(scratch_.Record());
      for (uint32_t y = 0; y < count; ++y) {
        std::fill(pixels_.begin(), pixels_.end(), uint8_t{0});
        for (uint32_t colour = 0; colour < 3; ++colour) {
          if (Status s = ReadRow(n, first + y, bands[colour], colour, any); !Ok(s)) return s;
        }
        if (Status s = rows.Put(pixels_.data(), y); !Ok(s)) return s;
      }
      const BlockPlace strip = {place.column, place.row + first};
      if (!any) continue;
      if (Status s = PlaceRows(source_, segment_, scratch_.Record(), count, strip); !Ok(s)) return s;
    }
    return Status::Success;
  }

  Status ReadRow(uint64_t n, uint32_t y, int32_t band, uint32_t colour, bool& any) {
    int64_t offset = 0;
    const auto index = static_cast<uint64_t>(band);
    if (width_ == 0 || !OffsetOf(n, index, offset)) return Status::Success;
    const RowPlace place = PlaceOfRow(y, index);
    const uint64_t firstBit = place.first * bits_;
    const uint64_t endBit = (place.first + uint64_t{width_ - 1} * place.stride + 1) * bits_;
    const auto bytes = static_cast<uint32_t>((endBit + 7) / 8 - firstBit / 8);
    const int64_t at = offset + static_cast<int64_t>(firstBit / 8);
    if (Status s = source_.ReadAt(at, samples_.data(), bytes); !Ok(s)) return s;
    any = true;
    uint64_t bit = firstBit % 8;
    for (uint32_t x = 0; x < width_; ++x, bit += uint64_t{place.stride} * bits_)
      pixels_[3 * x + colour] = HighBits(bit);
    return Status::Success;
  }
  // A sample lies in at most three bytes, of which the buffer has two to spare.
  uint8_t HighBits(uint64_t bit) const {
    const uint8_t* from = samples_.data() + bit / 8;
    const uint32_t three = static_cast<uint32_t>(from[0] << 16 | from[1] << 8 | from[2]);
    const auto behind = static_cast<uint32_t>(24 - bit % 8 - bits_);
    const uint32_t sample = three >> behind & ((1u << bits_) - 1);
    return static_cast<uint8_t>(std::min(255u, sample >> shift_));
  }

  KernelBitmap& segment_;
  const ImageSource& source_;
  const ImageSubheader& header_;
  uint32_t width_, height_, bits_, shift_;
  ScratchBlock scratch_;
  KernelBuffer<uint8_t> pixels_, samples_;
};

}  // namespace

Status ReadDeepBands(KernelBitmap& segment, const ImageSource& source) {
  return DeepBlocks(segment, source).Read();
}
