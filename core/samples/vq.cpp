// Vector-quantised blocks (MIL-STD-188-199): codes, each of which stands for a small rectangle of pixels.
#include <algorithm>

#include "core/samples/decoders.h"

namespace core {
namespace {

constexpr size_t kHeader = 21, kRecord = 14;

class VqBlocks {
 public:
  VqBlocks(const SampleSource& source, SampleTarget& target)
      : source_(source), target_(target), image_(target.Image()), data_(source.survey.Data(source.part)) {
    left_ = std::string_view(data_).substr(std::min<size_t>(source.part.mask.bytes, data_.size()));
  }

  SampleFault Read() {
    if (!TakeHeader()) return {media::Outcome::BadData, "the codes do not go with the blocks"};
    if (!TakeTables()) return {media::Outcome::ShortData, "the data ends in its lookup tables"};
    if (SampleFault fault = target_.Make(static_cast<uint64_t>(source_.part.Number("NCOLS")),
                                         static_cast<uint64_t>(source_.part.Number("NROWS")), false);
        fault.Met())
      return fault;
    const auto count = static_cast<uint64_t>(source_.blocks.Count());
    for (uint64_t block = 0; block < count; ++block) {
      if (!source_.OffsetOf(block, 0)) continue;
      if (!target_.GoesOn(block, count)) return Stopped();
      if (!ReadBlock(block))
        return {media::Outcome::ShortData, "the codes end in block " + std::to_string(block)};
    }
    return {};
  }

 private:
  bool TakeHeader() {
    const auto width = static_cast<uint64_t>(source_.blocks.width),
               height = static_cast<uint64_t>(source_.blocks.height);
    if (left_.size() < kHeader) return false;
    codeRows_ = BigNumber(left_, 0, 4);
    codesAcross_ = BigNumber(left_, 4, 4);
    codeBits_ = static_cast<uint32_t>(BigNumber(left_, 8, 1));
    tables_ = BigNumber(left_, 11, 2);
    left_.remove_prefix(kHeader);
    if (codeRows_ == 0 || codesAcross_ == 0 || codeRows_ > height || codesAcross_ > width ||
        codeBits_ < 1 || codeBits_ > 32)
      return false;
    vectorHeight_ = height / codeRows_;
    vectorWidth_ = width / codesAcross_;
    valueBytes_ = target_.Bands() * image_.sampleBytes;
    return tables_ != 0 && tables_ <= vectorWidth_ && (target_.Bands() == 1 || image_.sampleBytes == 1);
  }

  // The entries of a table stand one after the other; those of the next one beside them.
  bool TakeTables() {
    if (left_.size() < kRecord * tables_) return false;
    entries_ = BigNumber(left_, 2, 4);
    left_.remove_prefix(static_cast<size_t>(kRecord * tables_));
    const uint64_t part = vectorHeight_ * valueBytes_;
    if (part == 0 || part > left_.size() || tables_ > left_.size() / part) return false;
    entryBytes_ = part * tables_;
    if (entries_ == 0 || entries_ > left_.size() / entryBytes_) return false;
    book_.resize(static_cast<size_t>(entries_ * entryBytes_));
    for (uint64_t table = 0; table < tables_; ++table) {
      for (uint64_t entry = 0; entry < entries_; ++entry) {
        left_.copy(&book_[static_cast<size_t>(entry * entryBytes_ + table * part)],
                   static_cast<size_t>(part));
        left_.remove_prefix(static_cast<size_t>(part));
      }
    }
    return true;
  }

  bool ReadBlock(uint64_t block) {
    const auto across = static_cast<uint64_t>(source_.blocks.across);
    const uint64_t left = block % across * static_cast<uint64_t>(source_.blocks.width);
    const uint64_t top = block / across * static_cast<uint64_t>(source_.blocks.height);
    const uint64_t rows =
        (static_cast<uint64_t>(source_.blocks.height) + vectorHeight_ - 1) / vectorHeight_;
    for (uint64_t row = 0; row < rows; ++row) {
      for (uint64_t n = 0; n < codesAcross_; ++n) {
        uint64_t code = 0;
        if (!NextCode(code) || code >= entries_) return false;
        PutVector(code, left + n * vectorWidth_, top + row * vectorHeight_);
      }
    }
    return true;
  }

  bool NextCode(uint64_t& code) {
    while (held_ < codeBits_) {
      if (left_.empty()) return false;
      bits_ = bits_ << 8 | static_cast<uint8_t>(left_.front());
      left_.remove_prefix(1);
      held_ += 8;
    }
    held_ -= codeBits_;
    code = bits_ >> held_ & ((uint64_t{1} << codeBits_) - 1);
    return true;
  }

  void PutVector(uint64_t code, uint64_t left, uint64_t top) {
    if (!target_.Wants(left, top, vectorWidth_, vectorHeight_)) return;
    for (uint64_t y = 0; y < vectorHeight_; ++y) {
      for (uint64_t x = 0; x < vectorWidth_; ++x) {
        const uint64_t in = (y * vectorWidth_ + x) * valueBytes_;
        for (uint32_t band = 0; band < target_.Bands(); ++band) {
          const uint64_t at = in + band * image_.sampleBytes;
          const uint64_t value =
              at + image_.sampleBytes <= entryBytes_
                  ? BigNumber(book_, static_cast<size_t>(code * entryBytes_ + at), image_.sampleBytes)
                  : 0;
          target_.Put(static_cast<uint32_t>(left + x), static_cast<uint32_t>(top + y), band, value);
        }
      }
    }
  }

  const SampleSource& source_;
  SampleTarget& target_;
  const SampleImage& image_;
  std::string data_, book_;
  std::string_view left_;
  uint64_t codeRows_ = 0, codesAcross_ = 0, tables_ = 0, entries_ = 0, entryBytes_ = 0;
  uint64_t vectorHeight_ = 1, vectorWidth_ = 1, valueBytes_ = 1, bits_ = 0;
  uint32_t codeBits_ = 8, held_ = 0;
};

}  // namespace

SampleFault ReadVectorQuantised(const SampleSource& source, SampleTarget& target) {
  if (target.Image().bits < 8 || target.Image().bits > 16)
    return {media::Outcome::Unsupported, "codes of such samples"};
  return VqBlocks(source, target).Read();
}

}  // namespace core
