#include "core/view/band_tones.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "media/shuffle.h"

namespace core {

// Samples so many bytes apart, and which of their bits count.
struct BandTones::Samples {
  const uint8_t* first;
  size_t step;
  uint32_t mask;
};

namespace {

// Puts what is found of each sample to places so many bytes apart. The samples of a single band stand
// side by side, which the compiler makes use of.
template <class Word, size_t kToStep, class Of, class Put>
void ForEachWord(const Of& of, uint64_t pixels, uint8_t* to, Put put) {
  const auto all = [&](size_t step) {
    for (uint64_t x = 0; x < pixels; ++x) {
      Word word;
      std::memcpy(&word, of.first + x * step, sizeof word);
      put(word & of.mask, to + x * kToStep);
    }
  };
  of.step == sizeof(Word) ? all(sizeof(Word)) : all(of.step);
}

}  // namespace

uint64_t BitsOf(const SampleImage& form, const uint8_t* sample) {
  uint64_t bits = 0;
  std::memcpy(&bits, sample, form.sampleBytes);
  return form.bits == 64 ? bits : bits & ((uint64_t{1} << form.bits) - 1);
}

BandTones::BandTones(const SampleImage& form, const BandTable& table, const ToneRange& range)
    : form_(form), table_(table), range_(range) {
  if (form.kind != SampleKind::Unsigned && form.kind != SampleKind::Signed) return;
  if (form.bits > 16) return;
  for (uint32_t bits = 0; bits < 1u << form.bits; ++bits) {
    uint8_t sample[8] = {};
    std::memcpy(sample, &bits, sizeof bits);
    uint8_t shown[3];
    Find(sample, shown);
    known_.insert(known_.end(), shown, shown + Bytes());
    if (Bytes() == 3) known_.push_back(0);
  }
  isIdentity_ = Bytes() == 1 && form.bits == 8;
  for (size_t i = 0; i < known_.size(); ++i) isIdentity_ = isIdentity_ && known_[i] == i;
}

void BandTones::Show(const uint8_t* samples, size_t step, uint64_t pixels, uint8_t* rgb,
                     bool isGrey) const {
  if (!known_.empty()) {
    const Samples of = {samples, step, (1u << form_.bits) - 1};
    return form_.sampleBytes == 2 ? ShowWords<uint16_t>(of, pixels, rgb, isGrey)
                                  : ShowWords<uint8_t>(of, pixels, rgb, isGrey);
  }
  for (; pixels > 0; --pixels, samples += step, rgb += 3) {
    Find(samples, rgb);
    if (isGrey && Bytes() == 1) rgb[1] = rgb[2] = rgb[0];
  }
}

template <class Word>
void BandTones::ShowWords(const Samples& of, uint64_t pixels, uint8_t* rgb, bool isGrey) const {
  const uint8_t* known = known_.data();
  const auto one = [known](uint32_t bits, uint8_t* to) { *to = known[bits]; };
  if (Bytes() == 3) {
    if (pixels == 0) return;
    // Four bytes at once, of which the next pixel takes the last one.
    ForEachWord<Word, 3>(of, pixels - 1, rgb, [known](uint32_t bits, uint8_t* pixel) {
      std::memcpy(pixel, known + size_t{4} * bits, 4);
    });
    const Samples last = {of.first + (pixels - 1) * of.step, of.step, of.mask};
    ForEachWord<Word, 3>(last, 1, rgb + 3 * (pixels - 1), [known](uint32_t bits, uint8_t* pixel) {
      std::memcpy(pixel, known + size_t{4} * bits, 3);
    });
  } else if (isGrey) {
    constexpr uint64_t kPiece = 4096;
    uint8_t grey[kPiece];
    for (uint64_t x = 0; x < pixels; x += kPiece) {
      const uint64_t count = std::min(kPiece, pixels - x);
      ForEachWord<Word, 1>(Samples{of.first + x * of.step, of.step, of.mask}, count, grey, one);
      media::TripleBytes(grey, static_cast<uint32_t>(count), rgb + 3 * x);
    }
  } else {
    ForEachWord<Word, 3>(of, pixels, rgb, one);
  }
}

void BandTones::Find(const uint8_t* sample, uint8_t* shown) const {
  const uint64_t bits = BitsOf(form_, sample);
  if (const size_t entry = size_t{bits} * Bytes();
      !table_.entries.empty() && bits < 65536 && entry + Bytes() <= table_.entries.size()) {
    std::copy_n(&table_.entries[entry], Bytes(), shown);
    return;
  }
  shown[0] = Tone(bits, sample);
  if (Bytes() == 3) shown[1] = shown[2] = shown[0];
}

uint8_t BandTones::Tone(uint64_t bits, const uint8_t* sample) const {
  const uint32_t significant = form_.significantBits;
  if (form_.kind == SampleKind::Unsigned && form_.bits <= 8) {
    const uint64_t most = (1u << form_.bits) - 1;
    return static_cast<uint8_t>(bits * 255 / most);
  }
  if (form_.kind == SampleKind::Unsigned && significant <= 8)
    return static_cast<uint8_t>(std::min<uint64_t>(255, bits));
  const bool isFull = range_.high - range_.low == std::ldexp(1.0, static_cast<int>(significant)) - 1;
  if (isFull && significant > 8 && form_.kind == SampleKind::Unsigned)
    return static_cast<uint8_t>(std::min<uint64_t>(255, bits >> (significant - 8)));
  return ToneOf(ValueOf(form_, sample), range_);
}

}  // namespace core
