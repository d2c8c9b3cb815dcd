#include "core/samples/target.h"

#include <algorithm>
#include <cstring>

#include "media/work.h"

namespace core {

SampleFault SampleTarget::TakeBands() {
  slots_.assign(bands_, kNone);
  if (request_.bands.empty()) {
    for (uint32_t band = 0; band < bands_; ++band) slots_[band] = band;
    return {};
  }
  for (size_t i = 0; i < request_.bands.size(); ++i) {
    const uint32_t band = request_.bands[i];
    if (band >= bands_ || slots_[band] != kNone)
      return {media::Outcome::Invalid, band < bands_ ? "a band is asked for twice"
                                                     : "it has " + std::to_string(bands_) + " bands"};
    slots_[band] = static_cast<uint32_t>(i);
  }
  image_.bands = static_cast<uint32_t>(request_.bands.size());
  return {};
}

SampleFault SampleTarget::TakeWindow(uint64_t fullWidth, uint64_t fullHeight, bool codecReduces) {
  if (request_.column >= fullWidth || request_.row >= fullHeight)
    return {media::Outcome::Invalid, "the window lies outside of the image"};
  const uint32_t reduce = codecReduces ? request_.reduce : 0;
  step_ = codecReduces ? 1 : 1u << request_.reduce;
  const auto place = [&](uint64_t begin, uint64_t count, uint64_t side, uint32_t& from, uint32_t& end) {
    const uint64_t wanted = count == 0 ? side - begin : std::min(count, side - begin);
    from = static_cast<uint32_t>(begin >> reduce);
    end = from + static_cast<uint32_t>((wanted + (uint64_t{1} << reduce) - 1) >> reduce);
  };
  place(request_.column, request_.columns, fullWidth, left_, right_);
  place(request_.row, request_.rows, fullHeight, top_, bottom_);
  return {};
}

SampleFault SampleTarget::Make(uint64_t fullWidth, uint64_t fullHeight, bool codecReduces) {
  if (fullWidth > INT32_MAX || fullHeight > INT32_MAX)
    return {media::Outcome::NoMemory, "an image of such a size"};
  if (SampleFault fault = TakeBands(); fault.Met()) return fault;
  if (SampleFault fault = TakeWindow(fullWidth, fullHeight, codecReduces); fault.Met()) return fault;
  const auto count = [&](uint32_t from, uint32_t end) {
    return (uint64_t{end} - from + step_ - 1) / step_;
  };
  return MakeSamples(image_, count(left_, right_), count(top_, bottom_));
}

void SampleTarget::PutRow(const media::RowForm& form, const uint8_t* row, uint32_t left, uint32_t y,
                          uint32_t firstBand) {
  const uint32_t bytes = form.SampleBytes();
  const uint32_t first = std::max(left, left_),
                 end = static_cast<uint32_t>(std::min<uint64_t>(right_, uint64_t{left} + form.width));
  if (!WantsRow(y) || first >= end) return;
  const size_t pixelBytes = size_t{form.components} * bytes;
  row += (first - left) * pixelBytes;
  for (uint32_t c = 0; c < form.components; ++c, row += bytes) {
    if (!WantsBand(firstBand + c)) continue;
    uint8_t* to = bytes == image_.sampleBytes ? Run(first, y, firstBand + c) : nullptr;
    const uint8_t* in = row;
    for (uint32_t x = first; x < end; ++x, in += pixelBytes) {
      if (to != nullptr) {
        to[0] = in[0];
        if (bytes == 2) to[1] = in[1];
        to += image_.PixelBytes();
        continue;
      }
      uint16_t value = *in;
      if (bytes == 2) std::memcpy(&value, in, sizeof value);
      Put(x, y, firstBand + c, value);
    }
  }
}

}  // namespace core
