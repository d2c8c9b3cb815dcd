// What samples are shown as.
#pragma once

#include "core/view/stretch.h"

namespace core {

/// A sample's bits, of a signed one without those that its sign fills.
uint64_t BitsOf(const SampleImage& form, const uint8_t* sample);

/// What the samples of a band are shown as: a byte of each, or three where its table has colours.
class BandTones {
 public:
  /// All three stay where they are.
  BandTones(const SampleImage& form, const BandTable& table, const ToneRange& range);
  uint32_t Bytes() const { return table_.isColour ? 3 : 1; }
  /// Whether a sample is shown as the byte that it is.
  bool IsIdentity() const { return isIdentity_; }
  /// Puts the bytes of some samples, so many bytes apart, to pixels of three bytes; of grey ones a single
  /// byte three times.
  void Show(const uint8_t* samples, size_t step, uint64_t pixels, uint8_t* rgb, bool isGrey) const;

 private:
  struct Samples;
  template <class Word>
  void ShowWords(const Samples& of, uint64_t pixels, uint8_t* rgb, bool isGrey) const;
  void Find(const uint8_t* sample, uint8_t* shown) const;
  uint8_t Tone(uint64_t bits, const uint8_t* sample) const;

  const SampleImage& form_;
  const BandTable& table_;
  ToneRange range_;
  std::vector<uint8_t>
      known_;  // of each sample, where there are few: a byte, or four of which three count
  bool isIdentity_ = false;
};

}  // namespace core
