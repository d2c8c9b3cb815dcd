// Where samples that are asked for go.
#pragma once

#include <algorithm>
#include <functional>

#include "core/samples/image.h"
#include "media/codecs/stream.h"

namespace core {

/// What is asked of an image segment.
struct SampleRequest {
  uint32_t reduce = 0;  ///< a side has 1/2^reduce of its samples, rounded up
  /// A window in rows and columns of the full image; without rows or columns as far as it goes. Of data
  /// that its codec reduces it begins where the smaller picture has a sample.
  uint64_t row = 0, column = 0, rows = 0, columns = 0;
  /// Asked now and then with how much is done, from 0 to 1; false ends the work as Stopped.
  std::function<bool(double)> progress;
  std::vector<uint32_t> bands;  ///< from 0, in the order that is wanted; empty for all
};

/// The window and the bands of an image that are asked for, filled sample by sample.
class SampleTarget {
 public:
  /// `image` has its depth, fill and bands already.
  SampleTarget(const SampleRequest& request, SampleImage& image)
      : request_(request), image_(image), bands_(image.bands) {}

  SampleImage& Image() { return image_; }
  const SampleImage& Image() const { return image_; }
  uint32_t Reduce() const { return request_.reduce; }
  /// Bands of the segment.
  uint32_t Bands() const { return bands_; }

  /// Makes the samples of an image of a size, all of them the image's fill. What is put then has columns
  /// and rows of the image that the codec gives, which it reduces itself or not. NoMemory for more than
  /// may be.
  SampleFault Make(uint64_t fullWidth, uint64_t fullHeight, bool codecReduces);
  /// The part of the image that the codec gives which is wanted.
  uint32_t Left() const { return left_; }
  uint32_t Top() const { return top_; }
  uint32_t Right() const { return right_; }
  uint32_t Bottom() const { return bottom_; }
  bool Wants(uint64_t left, uint64_t top, uint64_t width, uint64_t height) const {
    return left < right_ && top < bottom_ && left + width > left_ && top + height > top_;
  }
  bool WantsRow(uint32_t y) const { return y >= top_ && y < bottom_ && (y - top_) % step_ == 0; }
  /// Whether rows and columns are left out.
  bool Skips() const { return step_ != 1; }
  bool WantsBand(uint32_t band) const { return band < slots_.size() && slots_[band] != kNone; }

  /// Whether the work goes on where `done` of `all` steps are done.
  bool GoesOn(uint64_t done, uint64_t all) const {
    return !request_.progress ||
           request_.progress(static_cast<double>(done) / static_cast<double>(all == 0 ? 1 : all));
  }

  /// The same in a stream that begins at a byte of `data` and has decoded so many of its rows.
  bool GoesOn(uint64_t offset, uint64_t bytes, uint64_t data, uint64_t row, uint64_t rows) const {
    return !request_.progress || GoesOn(offset + bytes / std::max<uint64_t>(rows, 1) * row, data);
  }

  /// Puts the value of a sample; one that is not asked for is left out.
  void Put(uint32_t x, uint32_t y, uint32_t band, uint64_t value) {
    if (!WantsRow(y) || x < left_ || x >= right_ || (x - left_) % step_ != 0 || !WantsBand(band)) return;
    PutSample(image_, (x - left_) / step_, (y - top_) / step_, slots_[band], value);
  }
  /// Where the samples of a wanted band of a wanted row lie from a wanted column on, a pixel's bytes
  /// apart; null where not every column is wanted.
  uint8_t* Run(uint32_t x, uint32_t y, uint32_t band) {
    if (step_ != 1) return nullptr;
    return image_.Pixel(x - left_, y - top_) + size_t{slots_[band]} * image_.sampleBytes;
  }
  /// Puts what is wanted of a row of a decoded block whose first sample has a place, its components from
  /// a band on.
  void PutRow(const media::RowForm& form, const uint8_t* row, uint32_t left, uint32_t y,
              uint32_t firstBand);

 private:
  static constexpr uint32_t kNone = UINT32_MAX;
  SampleFault TakeBands();
  SampleFault TakeWindow(uint64_t fullWidth, uint64_t fullHeight, bool codecReduces);

  const SampleRequest& request_;
  SampleImage& image_;
  uint32_t bands_;
  uint32_t left_ = 0, top_ = 0, right_ = 0, bottom_ = 0, step_ = 1;
  std::vector<uint32_t> slots_;  // of the segment's bands
};

}  // namespace core
