#include "core/view/stretch.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "core/format/blocks.h"
#include "core/format/words.h"
#include "core/samples/samples.h"

namespace core {
namespace {

constexpr double kInfinite = std::numeric_limits<double>::infinity();

// The value that so many percent of all are below; the next one up where it lies between two.
double At(std::vector<double>& values, double percent, bool up) {
  const double place = percent / 100 * static_cast<double>(values.size() - 1);
  const auto at = static_cast<size_t>(
      std::clamp(up ? std::ceil(place) : std::floor(place), 0.0, static_cast<double>(values.size() - 1)));
  std::nth_element(values.begin(), values.begin() + static_cast<ptrdiff_t>(at), values.end());
  return values[at];
}

// The values of each shown band that a stretch is found from.
class Sampling {
 public:
  Sampling(const Survey& survey, const SurveyedPart& image, const ShownBands& shown)
      : survey_(survey),
        image_(image),
        shown_(shown),
        values_(shown.as == ShownAs::Magnitude ? 1 : shown.bands.size()),
        ends_(values_.size(), {kInfinite, -kInfinite}) {}

  SampleFault Read() {
    const std::string_view compression = image_.Text("IC");
    if (IsOneOf(compression, "NC|NM|C4|M4")) return ReadGrid();
    if (IsOneOf(compression, "C8|M8")) return ReadSmallest();
    return ReadBlocks();
  }
  /// What is black and white of some bands, from one to in front of another.
  ToneRange Range(size_t first, size_t end, const Stretch& stretch) {
    if (stretch.by != Stretch::By::Percent) {
      ToneRange range = ends_[first];
      for (size_t band = first; band < end; ++band)
        range = {std::min(range.low, ends_[band].low), std::max(range.high, ends_[band].high)};
      return range.low <= range.high ? range : ToneRange{0, 0};
    }
    std::vector<double> values;
    for (size_t band = first; band < end; ++band)
      values.insert(values.end(), values_[band].begin(), values_[band].end());
    if (values.empty()) return {0, 0};
    return {At(values, stretch.low, false), At(values, stretch.high, true)};
  }
  size_t Bands() const { return values_.size(); }

 private:
  uint64_t Rows() const { return static_cast<uint64_t>(std::max<int64_t>(0, image_.Number("NROWS"))); }
  uint64_t Columns() const { return static_cast<uint64_t>(std::max<int64_t>(0, image_.Number("NCOLS"))); }

  // Rows at a fixed distance.
  SampleFault ReadGrid() {
    constexpr uint64_t kMostBytes = 64 << 20, kMostRows = 512;
    SampleImage form;
    if (SampleFault fault = DescribeSamples(image_, form); fault.Met()) return fault;
    const uint64_t rowBytes = std::max<uint64_t>(1, Columns() * form.bands * form.sampleBytes);
    const uint64_t rows = std::clamp<uint64_t>(kMostBytes / rowBytes, 1, kMostRows);
    const uint64_t step = std::max<uint64_t>(1, (Rows() + rows - 1) / rows);
    Plan(Rows() / step * Columns());
    for (uint64_t row = step / 2; row < Rows(); row += step) {
      SampleRequest request;
      request.row = row;
      request.rows = 1;
      if (SampleFault fault = Take(request); fault.Met()) return fault;
    }
    return {};
  }

  // The smallest picture in a codestream whose longer side is long enough.
  SampleFault ReadSmallest() {
    constexpr uint64_t kSide = 512;
    SampleRequest request;
    while (request.reduce < 15 && std::max(Rows(), Columns()) >> (request.reduce + 1) >= kSide)
      ++request.reduce;
    Plan(Rows() * Columns() >> (2 * request.reduce));
    for (;; --request.reduce) {
      SampleFault fault = Take(request);
      // It may have fewer levels than that.
      if (fault.outcome != media::Outcome::BadData || request.reduce == 0) return fault;
    }
  }

  // Blocks at fixed numbers; all of an image of one block.
  SampleFault ReadBlocks() {
    constexpr uint64_t kMostBlocks = 64;
    const Blocks blocks(image_);
    const auto count = static_cast<uint64_t>(std::max<int64_t>(1, blocks.Count()));
    const uint64_t step = (count + kMostBlocks - 1) / kMostBlocks;
    Plan(Rows() * Columns() / step);
    for (uint64_t block = step / 2; block < count; block += step) {
      SampleRequest request;
      if (count > 1) {
        request.row = block / static_cast<uint64_t>(blocks.across) * static_cast<uint64_t>(blocks.height);
        request.column =
            block % static_cast<uint64_t>(blocks.across) * static_cast<uint64_t>(blocks.width);
        request.rows = static_cast<uint64_t>(blocks.height);
        request.columns = static_cast<uint64_t>(blocks.width);
        if (request.row >= Rows() || request.column >= Columns()) continue;
      }
      if (SampleFault fault = Take(request); fault.Met()) return fault;
    }
    return {};
  }

  // Of very many pixels some are kept, all at one distance from each other.
  void Plan(uint64_t pixels) {
    constexpr uint64_t kMostKept = 1 << 20;
    keepEach_ = std::max<uint64_t>(1, pixels / kMostKept);
  }

  SampleFault Take(SampleRequest& request) {
    request.bands = shown_.bands;
    SampleImage image;
    if (SampleFault fault = ReadSamples(survey_, image_, request, image, &cache_); fault.Met())
      return fault;
    const bool isWord = image.kind == SampleKind::Unsigned && image.sampleBytes == 2;
    if (isWord && !image.noData && shown_.as != ShownAs::Magnitude) {
      TakeWords(image);
      return {};
    }
    for (uint32_t y = 0; y < image.height; ++y) {
      const uint8_t* at = image.Pixel(0, y);
      for (uint32_t x = 0; x < image.width; ++x, at += image.PixelBytes()) TakePixel(image, at);
    }
    return {};
  }

  // What TakePixel does of each, for the samples that most deep images have.
  void TakeWords(const SampleImage& image) {
    const uint64_t count = uint64_t{image.width} * image.height;
    for (size_t band = 0; band < values_.size(); ++band) {
      const uint8_t* first = image.samples.data() + band * image.sampleBytes;
      const auto at = [&](uint64_t n) {
        uint16_t word;
        std::memcpy(&word, first + n * image.PixelBytes(), sizeof word);
        return word;
      };
      uint16_t low = UINT16_MAX, high = 0;
      for (uint64_t n = 0; n < count; ++n) {
        low = std::min(low, at(n));
        high = std::max(high, at(n));
      }
      ends_[band] = {std::min<double>(ends_[band].low, low), std::max<double>(ends_[band].high, high)};
      for (uint64_t n = keepEach_ - 1 - pixels_ % keepEach_; n < count; n += keepEach_)
        values_[band].push_back(at(n));
    }
    pixels_ += count;
  }

  void TakePixel(const SampleImage& image, const uint8_t* at) {
    if (IsNoData(image, at)) return;
    isKept_ = ++pixels_ % keepEach_ == 0;
    if (shown_.as == ShownAs::Magnitude && image.bands == 2) {
      Add(0, std::hypot(ValueOf(image, at), ValueOf(image, at + image.sampleBytes)));
      return;
    }
    for (size_t band = 0; band < values_.size(); ++band)
      Add(band, ValueOf(image, at + band * image.sampleBytes));
  }
  void Add(size_t band, double value) {
    if (!std::isfinite(value)) return;
    ends_[band] = {std::min(ends_[band].low, value), std::max(ends_[band].high, value)};
    if (isKept_) values_[band].push_back(value);
  }

  static bool IsNoData(const SampleImage& image, const uint8_t* at) {
    if (!image.noData) return false;
    for (uint32_t band = 0; band < image.bands; ++band) {
      uint64_t bits = 0;
      std::memcpy(&bits, at + size_t{band} * image.sampleBytes, image.sampleBytes);
      const uint64_t mask = image.bits == 64 ? ~uint64_t{0} : (uint64_t{1} << image.bits) - 1;
      if ((bits & mask) != *image.noData) return false;
    }
    return true;
  }

  const Survey& survey_;
  const SurveyedPart& image_;
  const ShownBands& shown_;
  StreamCache cache_;
  std::vector<std::vector<double>> values_;
  std::vector<ToneRange> ends_;
  uint64_t keepEach_ = 1, pixels_ = 0;
  bool isKept_ = true;
};

// All that the significant bits can say.
ToneRange FullRange(const SampleImage& form) {
  const double values = std::ldexp(1.0, static_cast<int>(form.significantBits));
  return form.kind == SampleKind::Signed ? ToneRange{-values / 2, values / 2 - 1}
                                         : ToneRange{0, values - 1};
}

}  // namespace

SampleFault DescribeShown(const SurveyedPart& image, SampleImage& form) {
  SampleFault fault = DescribeSamples(image, form);
  if (image.Text("PJUST") == "L") form.significantBits = form.bits;
  return fault;
}

bool ShownAsStored(const SampleImage& form) {
  return form.kind == SampleKind::Unsigned && form.significantBits <= 8;
}

double ValueOf(const SampleImage& form, const uint8_t* sample) {
  uint64_t bits = 0;
  std::memcpy(&bits, sample, form.sampleBytes);
  float one[2];
  double real;
  switch (form.kind) {
    case SampleKind::Unsigned:
      return static_cast<double>(bits);
    case SampleKind::Signed: {
      const uint32_t shift = 64 - form.bits;
      return static_cast<double>(static_cast<int64_t>(bits << shift) >> shift);
    }
    case SampleKind::Real:
      if (form.sampleBytes == 4) {
        std::memcpy(one, sample, sizeof one[0]);
        return one[0];
      }
      std::memcpy(&real, sample, sizeof real);
      return real;
    case SampleKind::Complex:
      std::memcpy(one, sample, sizeof one);
      return std::hypot(one[0], one[1]);
  }
  return std::numeric_limits<double>::quiet_NaN();
}

SampleFault FindTones(const Survey& survey, const SurveyedPart& image, const ShownBands& shown,
                      const Stretch& stretch, std::vector<ToneRange>& tones) {
  SampleImage form;
  if (SampleFault fault = DescribeShown(image, form); fault.Met()) return fault;
  const bool isWhole = form.kind == SampleKind::Unsigned || form.kind == SampleKind::Signed;
  const bool isMagnitude = shown.as == ShownAs::Magnitude && shown.bands.size() == 2;
  tones.assign(shown.bands.size(), FullRange(form));
  const bool hasRange = ShownAsStored(form) || shown.as == ShownAs::Differences ||
                        (stretch.by == Stretch::By::None && isWhole);
  if (hasRange && !isMagnitude) return {};
  Sampling sampling(survey, image, shown);
  if (SampleFault fault = sampling.Read(); fault.Met()) return fault;
  for (size_t band = 0; band < tones.size(); ++band) {
    const bool byItself = stretch.each && sampling.Bands() == tones.size();
    tones[band] = sampling.Range(byItself ? band : 0, byItself ? band + 1 : sampling.Bands(), stretch);
  }
  return {};
}

uint8_t ToneOf(double value, const ToneRange& range) {
  if (!(value > range.low)) return 0;
  if (value >= range.high) return 255;
  return static_cast<uint8_t>(std::lround((value - range.low) * 255 / (range.high - range.low)));
}

}  // namespace core
