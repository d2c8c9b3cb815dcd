#include "tests/support/samples.h"

namespace test {
namespace {

class Packer {
 public:
  explicit Packer(int bits) : bits_(bits) {}
  void Put(uint64_t sample) {
    for (int bit = bits_; bit-- > 0;) {
      held_ = held_ << 1 | (sample >> bit & 1);
      if (++count_ == 8) Flush();
    }
  }
  void EndBlock() {
    if (count_ == 0) return;
    held_ <<= 8 - count_;
    Flush();
  }
  const std::string& Bytes() const { return bytes_; }

 private:
  void Flush() {
    bytes_ += static_cast<char>(held_);
    held_ = 0;
    count_ = 0;
  }
  int bits_, count_ = 0;
  uint32_t held_ = 0;
  std::string bytes_;
};

}  // namespace

uint64_t SampleOf(int x, int y, int band, int bits) {
  const auto mixed = static_cast<uint64_t>(x * 977 + y * 3511 + band * 12289 + 5);
  const uint64_t wide = bits > 16 ? mixed * 0x9E3779B97F4A7C15 : mixed;
  return bits >= 64 ? wide : wide & ((uint64_t{1} << bits) - 1);
}

std::string PackSamples(const ImageForm& form, int significant) {
  Packer packer(form.bits);
  // The loops of a mode, outer ones first: band, block, row, column.
  const auto block = [&](int n, int firstBand, int bands) {
    const int left = n % form.blocksAcross * form.width, top = n / form.blocksAcross * form.height;
    const auto put = [&](int x, int y, int band) {
      packer.Put(SampleOf(left + x, top + y, firstBand + band, significant));
    };
    const bool byPixel = form.mode == "P", byRow = form.mode == "R";
    for (int outer = 0; outer < (byPixel || byRow ? form.height : bands); ++outer) {
      for (int middle = 0; middle < (byPixel ? form.width : byRow ? bands : form.height); ++middle) {
        for (int inner = 0; inner < (byPixel ? bands : form.width); ++inner) {
          if (byPixel)
            put(middle, outer, inner);
          else if (byRow)
            put(inner, outer, middle);
          else
            put(inner, middle, outer);
        }
      }
      // Bands of single bits begin on a byte.
      if (form.bits == 1 && form.mode == "B") packer.EndBlock();
    }
    packer.EndBlock();
  };
  const int blocks = form.blocksAcross * form.blocksDown;
  const bool sequential = form.mode == "S";
  for (int plane = 0; plane < (sequential ? form.bands : 1); ++plane) {
    for (int n = 0; n < blocks; ++n) block(n, plane, sequential ? 1 : form.bands);
  }
  return packer.Bytes();
}

}  // namespace test
