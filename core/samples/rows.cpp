#include "core/samples/rows.h"

#include <algorithm>
#include <atomic>

#include "core/format/background.h"
#include "core/format/words.h"

namespace core {
namespace {

// Threads that read ahead: together no more than there are cores beside the one that uses the rows.
std::atomic<unsigned> threads{0};

bool TakeThread() {
  static const unsigned most = std::max(1u, std::thread::hardware_concurrency()) - 1;
  if (threads.fetch_add(1) < most) return true;
  threads.fetch_sub(1);
  return false;
}
// Gives a thread that was taken back.
struct ThreadTaken {
  ThreadTaken() = default;
  ~ThreadTaken() { threads.fetch_sub(1); }
  ThreadTaken(const ThreadTaken&) = delete;
  ThreadTaken& operator=(const ThreadTaken&) = delete;
};

}  // namespace

SampleRows::~SampleRows() {
  if (ahead_.valid()) ahead_.wait();
}

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
    form.width = held_.image.width;
    form.height = held_.image.height;
    height_ = atOnce_ = held_.image.height;
    return {};
  }
  atOnce_ = RowsAtOnce(form);
  return {};
}

uint64_t SampleRows::LastWanted() const {
  return request_.rows == 0 ? height_ : ((request_.row + request_.rows - 1) >> request_.reduce) + 1;
}

SampleRows::Piece SampleRows::ReadPiece(uint64_t y) {
  SampleRequest wanted;
  wanted.bands = request_.bands;
  wanted.column = request_.column;
  wanted.columns = request_.columns;
  wanted.reduce = request_.reduce;
  // Of a row of blocks no more than will be asked for.
  const uint64_t first = request_.row >> request_.reduce, begin = y / atOnce_ * atOnce_,
                 last = LastWanted();
  const bool isAsked = y >= first && y < last;
  Piece piece;
  piece.image.samples = std::move(spare_);
  piece.top = isAsked ? std::max(begin, first) : begin;
  const uint64_t end = isAsked ? std::min(begin + atOnce_, last) : begin + atOnce_;
  wanted.row = piece.top << request_.reduce;
  wanted.rows = (end - piece.top) << request_.reduce;
  piece.fault = ReadSamples(survey_, part_, wanted, piece.image, &streams_);
  return piece;
}

SampleFault SampleRows::Hold(uint64_t y) {
  std::vector<uint8_t> used = std::move(held_.image.samples);
  held_ = {};
  if (ahead_.valid()) held_ = TakeAhead();
  spare_ = std::move(used);
  if (!held_.fault.Met() && !held_.Has(y)) held_ = ReadPiece(y);
  if (!held_.fault.Met()) ReadAhead();
  return held_.fault;
}

void SampleRows::ReadAhead() {
  const uint64_t next = held_.top + held_.image.height;
  // What costs less than what is done with it is read when it is asked for.
  const bool isCheap = IsOneOf(part_.Text("IC"), "NC|NM|C4|M4") && held_.image.sampleBytes == 1;
  if (isCheap || atOnce_ >= height_ || next >= std::min(height_, LastWanted()) || !TakeThread()) return;
  const auto read = [this, next, work = media::CurrentWork()] {
    const ThreadTaken taken;
    media::CurrentWork() = work;
    Piece piece = ReadPiece(next);
    piece.began = work;
    piece.left = media::CurrentWork();
    return piece;
  };
  if (auto begun = InBackground(read)) {
    ahead_ = std::move(*begun);
  } else {
    threads.fetch_sub(1);  // it is read when it is asked for
  }
}

SampleRows::Piece SampleRows::TakeAhead() {
  Piece piece = ahead_.get();
  const auto take = [&](uint64_t media::WorkLeft::*kind) {
    uint64_t& left = media::CurrentWork().*kind;
    left -= std::min(left, piece.began.*kind - std::min(piece.began.*kind, piece.left.*kind));
  };
  take(&media::WorkLeft::nanoseconds);
  take(&media::WorkLeft::samples);
  return piece;
}

SampleFault SampleRows::Row(uint64_t y, const uint8_t*& samples) {
  if (!held_.Has(y)) {
    if (y >= height_) return {media::Outcome::Invalid, "a row behind the image"};
    if (SampleFault fault = Hold(y); fault.Met()) return fault;
    if (!held_.Has(y)) return {media::Outcome::ShortData, "the image has fewer rows"};
  }
  samples = held_.image.Pixel(0, static_cast<uint32_t>(y - held_.top));
  return {};
}

}  // namespace core
