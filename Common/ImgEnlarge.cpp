#include "Common/ImgEnlarge.h"

#include <algorithm>

#include "Common/ImgBitmap.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImgEnlarge";
constexpr uint32_t kOne = 256;

// Where a row or column of the large image lies between two of the small one.
struct Between {
  uint32_t first, second, share;  // of the second, in parts of kOne
};
Between PlaceOf(uint32_t n, uint32_t small, uint32_t large) {
  // Middles of pixels fall on middles of pixels.
  const uint64_t twice = (2 * uint64_t{n} + 1) * small * kOne / large;
  const uint64_t at = (std::max<uint64_t>(twice, kOne) - kOne) / 2;
  const auto first = static_cast<uint32_t>(at / kOne);
  return {first, std::min(first + 1, small - 1), static_cast<uint32_t>(at % kOne)};
}

uint32_t Mix(uint32_t a, uint32_t b, uint32_t share) { return a * (kOne - share) + b * share; }

class Enlarger {
 public:
  Enlarger(KernelBitmap& small, KernelBitmap& large) : small_(small), large_(large) {}

  Status Enlarge() {
    for (KernelBuffer<uint8_t>* row : {&upper_, &lower_}) {
      if (Status s = row->Allocate(small_.bytesPerLine, ORB_HERE); !Ok(s)) return s;
    }
    if (Status s = out_.Allocate(large_.bytesPerLine, ORB_HERE); !Ok(s)) return s;
    RowAccess from(small_), to(large_);
    for (uint32_t y = 0; y < large_.height; ++y) {
      const Between rows = PlaceOf(y, small_.height, large_.height);
      if (Status s = from.Get(upper_.data(), rows.first); !Ok(s)) return s;
      if (Status s = from.Get(lower_.data(), rows.second); !Ok(s)) return s;
      MakeRow(rows.share);
      if (Status s = to.Put(out_.data(), y); !Ok(s)) return s;
    }
    return Status::Success;
  }

 private:
  void MakeRow(uint32_t share) {
    const uint32_t step = large_.bitsPerPixel / 8;
    for (uint32_t x = 0; x < large_.width; ++x) {
      const Between columns = PlaceOf(x, small_.width, large_.width);
      for (uint32_t c = 0; c < step; ++c) {
        const size_t a = size_t{columns.first} * step + c, b = size_t{columns.second} * step + c;
        const uint32_t mixed = Mix(Mix(upper_[a], upper_[b], columns.share),
                                   Mix(lower_[a], lower_[b], columns.share), share);
        out_[size_t{x} * step + c] = static_cast<uint8_t>(mixed / (kOne * kOne));
      }
    }
  }

  KernelBitmap& small_;
  KernelBitmap& large_;
  KernelBuffer<uint8_t> upper_, lower_, out_;
};

}  // namespace

Status EnlargeToFullSize(const ImageSubheader& header, OwnedBitmap& bitmap) {
  KernelBitmap& small = bitmap.record;
  const uint32_t width = header.NCOLS.value, height = header.NROWS.value;
  const bool wanted = header.Rules().fullSize && header.CompressionCode() == Compression::I1;
  const bool isSmaller = small.width != 0 && small.height != 0 && small.width <= width &&
                         small.height <= height && (small.width < width || small.height < height);
  // Entries of a lookup table have nothing between them.
  if (!wanted || !isSmaller || header.palette.size() != 0) return Status::Success;
  if (small.bitsPerPixel != 8 && small.bitsPerPixel != 24) return Status::Success;
  OwnedBitmap large;
  if (Status s = CreateSegmentBitmap(large, header, width, height); !Ok(s)) return s;
  if (large.record.bitsPerPixel != small.bitsPerPixel) return Status::Success;
  if (Status s = Enlarger(small, large.record).Enlarge(); !Ok(s)) return s;
  large.record.colourOrder = small.colourOrder;
  bitmap.Free();
  large.MoveTo(bitmap.record);
  return Status::Success;
}
