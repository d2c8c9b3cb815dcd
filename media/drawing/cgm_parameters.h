// The parameters of a metafile's elements.
#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>

#include "media/drawing/cgm.h"
#include "media/drawing/drawing.h"

namespace media {

using CgmBytes = std::span<const uint8_t>;

/// Precisions and modes that say how parameters are written.
struct Coding {
  bool vdcReal = false;
  int integerBytes = 2, indexBytes = 2, colourBytes = 1, colourIndexBytes = 1, vdcIntegerBytes = 2;
  RealForm real, vdcRealForm;
  bool directColour = false;
  double colourLow[3] = {0, 0, 0};
  double colourHigh[3] = {255, 255, 255};
};

/// The parameters of one element. Reading past their end gives zeros and is remembered.
class Parameters {
 public:
  Parameters(CgmBytes bytes, const Coding& coding, const std::vector<Colour>& table)
      : bytes_(bytes), coding_(coding), table_(table) {}

  bool Good() const { return good_; }
  size_t Left() const { return bytes_.size() - at_; }

  uint32_t Unsigned(int bytes) {
    uint32_t value = 0;
    if (Left() < static_cast<size_t>(bytes)) {
      good_ = false;
      at_ = bytes_.size();
      return 0;
    }
    for (int i = 0; i < bytes; ++i) value = value << 8 | bytes_[at_++];
    return value;
  }
  int32_t Signed(int bytes) {
    const int shift = 32 - 8 * bytes;
    return static_cast<int32_t>(Unsigned(bytes) << shift) >> shift;
  }
  int32_t Enumerated() { return Signed(2); }
  int32_t Integer() { return Signed(coding_.integerBytes); }
  int32_t Index() { return Signed(coding_.indexBytes); }
  double Real() { return RealOf(coding_.real); }
  double Vdc() { return coding_.vdcReal ? RealOf(coding_.vdcRealForm) : Signed(coding_.vdcIntegerBytes); }
  Point ReadPoint() {
    const double x = Vdc();
    return {x, Vdc()};
  }
  /// Points to the end of the parameters.
  std::vector<Point> Points() {
    std::vector<Point> points;
    const size_t size = 2 * VdcBytes();
    points.reserve(Left() / size);
    while (Left() >= size) points.push_back(ReadPoint());
    return points;
  }
  Colour DirectColour() {
    uint8_t parts[3];
    for (int i = 0; i < 3; ++i) {
      const double span = coding_.colourHigh[i] - coding_.colourLow[i];
      const double value = Unsigned(coding_.colourBytes);
      const double share = span != 0 ? (value - coding_.colourLow[i]) / span : 0;
      parts[i] = static_cast<uint8_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
    }
    return {parts[0], parts[1], parts[2]};
  }
  Colour ReadColour() {
    return coding_.directColour ? DirectColour() : Indexed(Unsigned(coding_.colourIndexBytes));
  }
  Colour Indexed(uint32_t index) const { return index < table_.size() ? table_[index] : Colour{}; }
  std::string String() {
    std::string text;
    uint32_t length = Unsigned(1);
    bool more = length == 255;
    if (more) length = LongLength(more);
    for (;;) {
      const size_t taken = std::min<size_t>(length, Left());
      if (taken < length) good_ = false;
      text.append(reinterpret_cast<const char*>(bytes_.data()) + at_, taken);
      at_ += taken;
      if (!more || !good_) return text;
      length = LongLength(more);
    }
  }
  size_t VdcBytes() const {
    return static_cast<size_t>(coding_.vdcReal ? coding_.vdcRealForm.bytes : coding_.vdcIntegerBytes);
  }
  void AlignToWord() { at_ = std::min(bytes_.size(), at_ + at_ % 2); }
  CgmBytes Rest() const { return bytes_.subspan(at_); }

 private:
  uint32_t LongLength(bool& more) {
    const uint32_t word = Unsigned(2);
    more = (word & 0x8000) != 0;
    return word & 0x7FFF;
  }
  double RealOf(const RealForm& form) {
    const uint32_t high = Unsigned(4);
    if (form.bytes == 4) {
      return form.fixedPoint ? static_cast<int32_t>(high) / 65536.0 : double{std::bit_cast<float>(high)};
    }
    const uint32_t low = Unsigned(4);
    if (form.fixedPoint) return static_cast<int32_t>(high) + low / 4294967296.0;
    return std::bit_cast<double>(uint64_t{high} << 32 | low);
  }

  CgmBytes bytes_;
  const Coding& coding_;
  const std::vector<Colour>& table_;
  size_t at_ = 0;
  bool good_ = true;
};

/// Bits of a packed cell array row.
class BitReader {
 public:
  explicit BitReader(CgmBytes bytes) : bytes_(bytes) {}
  bool Take(int bits, uint32_t& value) {
    value = 0;
    if (bit_ + static_cast<size_t>(bits) > 8 * bytes_.size()) return false;
    for (int i = 0; i < bits; ++i, ++bit_) value = value << 1 | (bytes_[bit_ / 8] >> (7 - bit_ % 8) & 1u);
    return true;
  }
  void AlignToWord() { bit_ = (bit_ + 15) / 16 * 16; }

 private:
  CgmBytes bytes_;
  size_t bit_ = 0;
};

/// Bytes of a precision in bits; `otherwise` for one that is not kept.
inline int BytesOfPrecision(int32_t bits, int otherwise) {
  return bits == 8 || bits == 16 || bits == 24 || bits == 32 ? bits / 8 : otherwise;
}

}  // namespace media
