#include "core/samples/rows.h"

#include <algorithm>

#include "core/format/words.h"

namespace core {

SampleRows::SampleRows(const Survey& survey, const SurveyedPart& part, RowsRequest request)
    : survey_(survey), part_(part), request_(std::move(request)) {}

uint64_t SampleRows::RowsAtOnce(const SampleImage& form) const {
  constexpr uint64_t kTileRows = 1024;
  const uint64_t pieceBytes = request_.pieceBytes;
  const uint64_t rowBytes = std::max<uint64_t>(1, form.PixelBytes() * form.width);
  if (rowBytes * height_ <= 4 * pieceBytes) return height_;
  const std::string_view compression = part_.Text("IC");
  const auto blockRows = static_cast<uint64_t>(Blocks(part_).height);
  uint64_t rows = blockRows;
  if (IsOneOf(compression, "NC|NM|C4|M4"))
    return std::clamp<uint64_t>(pieceBytes / rowBytes, 1, kTileRows);
  if (IsOneOf(compression, "C8|M8") && (blockRows < 64 || blockRows > 2 * kTileRows)) rows = kTileRows;
  // A single stream goes on where it was left.
  if (IsOneOf(compression, "C1|M1|C3|M3|C5|M5") && Blocks(part_).Count() == 1)
    rows = std::clamp<uint64_t>(pieceBytes / rowBytes, 1, kTileRows) << request_.reduce;
  return std::max<uint64_t>(1, rows >> request_.reduce);
}

SampleFault SampleRows::Start(SampleImage& form) {
  if (SampleFault fault = DescribeSamples(part_, form); fault.Met()) return fault;
  if (!request_.bands.empty()) form.bands = static_cast<uint32_t>(request_.bands.size());
  const auto side = [&](const char* field, uint64_t begin, uint64_t count) {
    const auto all = static_cast<uint64_t>(std::max<int64_t>(0, part_.Number(field)));
    const uint64_t left = all - std::min(all, begin), wanted = count == 0 ? left : std::min(left, count);
    return static_cast<uint32_t>(std::min<uint64_t>(
        (wanted + (uint64_t{1} << request_.reduce) - 1) >> request_.reduce, INT32_MAX));
  };
  form.width = side("NCOLS", request_.column, request_.columns);
  form.height = side("NROWS", 0, 0);
  height_ = form.height;
  if (part_.Text("IC") == "I1") {
    // Its stream has a size of its own.
    atOnce_ = height_;
    if (SampleFault fault = Hold(0); fault.Met()) return fault;
    form.width = held_.width;
    form.height = held_.height;
    height_ = atOnce_ = held_.height;
    return {};
  }
  atOnce_ = RowsAtOnce(form);
  return {};
}

SampleFault SampleRows::Hold(uint64_t y) {
  SampleRequest wanted;
  wanted.bands = request_.bands;
  wanted.column = request_.column;
  wanted.columns = request_.columns;
  wanted.reduce = request_.reduce;
  // Of a row of blocks no more than will be asked for.
  const uint64_t first = request_.row >> request_.reduce, begin = y / atOnce_ * atOnce_;
  const uint64_t last =
      request_.rows == 0 ? height_ : ((request_.row + request_.rows - 1) >> request_.reduce) + 1;
  heldTop_ = y >= first && y < last ? std::max(begin, first) : begin;
  const uint64_t end = y >= first && y < last ? std::min(begin + atOnce_, last) : begin + atOnce_;
  wanted.row = heldTop_ << request_.reduce;
  wanted.rows = (end - heldTop_) << request_.reduce;
  held_ = {};
  return ReadSamples(survey_, part_, wanted, held_, &streams_);
}

SampleFault SampleRows::Row(uint64_t y, const uint8_t*& samples) {
  if (held_.height == 0 || y < heldTop_ || y >= heldTop_ + held_.height) {
    if (y >= height_) return {media::Outcome::Invalid, "a row behind the image"};
    if (SampleFault fault = Hold(y); fault.Met()) return fault;
    if (y >= heldTop_ + held_.height) return {media::Outcome::ShortData, "the image has fewer rows"};
  }
  samples = held_.Pixel(0, static_cast<uint32_t>(y - heldTop_));
  return {};
}

}  // namespace core
