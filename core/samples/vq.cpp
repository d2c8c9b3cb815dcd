// Vector-quantised blocks (MIL-STD-188-199): codes, each of which stands for a small rectangle of pixels.
#include <algorithm>

#include "core/samples/decoders.h"

namespace core {
namespace {

constexpr size_t kHeader = 21, kRecord = 14;

class VqBlocks {
 public:
  VqBlocks(const SampleSource& source, SampleTarget& target)
      : source_(source),
        target_(target),
        image_(target.Image()),
        data_(source.survey.file, source.part.dataOffset, source.part.dataLength),
        at_(source.part.mask.bytes) {}

  SampleFault Read() {
    if (!TakeHeader()) return {media::Outcome::BadData, "the codes do not go with the blocks"};
    if (!TakeTables()) return {media::Outcome::ShortData, "the data ends in its lookup tables"};
    if (SampleFault fault = target_.Make(static_cast<uint64_t>(source_.part.Number("NCOLS")),
                                         static_cast<uint64_t>(source_.part.Number("NROWS")), false);
        fault.Met())
      return fault;
    const auto count = static_cast<uint64_t>(source_.blocks.Count());
    uint64_t bit = 0;  // behind the tables, where the codes of the next block begin
    for (uint64_t block = 0; block < count; ++block) {
      if (!source_.OffsetOf(block, 0)) continue;
      if (!target_.GoesOn(block, count)) return Stopped();
      if (!ReadBlock(block, bit))
        return {media::Outcome::ShortData, "the codes end in block " + std::to_string(block)};
      bit += RowsOfCodes() * codesAcross_ * codeBits_;
    }
    return {};
  }

 private:
  bool TakeHeader() {
    const auto width = static_cast<uint64_t>(source_.blocks.width),
               height = static_cast<uint64_t>(source_.blocks.height);
    const std::string header = Take(kHeader);
    if (header.size() < kHeader) return false;
    codeRows_ = BigNumber(header, 0, 4);
    codesAcross_ = BigNumber(header, 4, 4);
    codeBits_ = static_cast<uint32_t>(BigNumber(header, 8, 1));
    tables_ = BigNumber(header, 11, 2);
    if (codeRows_ == 0 || codesAcross_ == 0 || codeRows_ > height || codesAcross_ > width ||
        codeBits_ < 1 || codeBits_ > 32)
      return false;
    vectorHeight_ = height / codeRows_;
    vectorWidth_ = width / codesAcross_;
    valueBytes_ = target_.Bands() * image_.sampleBytes;
    return tables_ != 0 && tables_ <= vectorWidth_ && (target_.Bands() == 1 || image_.sampleBytes == 1);
  }

  // The next bytes of the data, as many as there are.
  std::string Take(uint64_t count) {
    std::string bytes = data_.Piece(at_, count);
    at_ += bytes.size();
    return bytes;
  }
  uint64_t Left() const { return data_.Size() - std::min(data_.Size(), at_); }

  // The entries of a table stand one after the other; those of the next one beside them.
  bool TakeTables() {
    const std::string records = Take(kRecord * tables_);
    if (records.size() < kRecord * tables_) return false;
    entries_ = BigNumber(records, 2, 4);
    const uint64_t part = vectorHeight_ * valueBytes_;
    if (part == 0 || part > Left() || tables_ > Left() / part) return false;
    entryBytes_ = part * tables_;
    if (entries_ == 0 || entries_ > Left() / entryBytes_) return false;
    book_.resize(static_cast<size_t>(entries_ * entryBytes_));
    for (uint64_t table = 0; table < tables_; ++table) {
      const std::string values = Take(entries_ * part);
      for (uint64_t entry = 0; entry < entries_; ++entry)
        values.copy(&book_[static_cast<size_t>(entry * entryBytes_ + table * part)],
                    static_cast<size_t>(part), static_cast<size_t>(entry * part));
    }
    return true;
  }

  uint64_t RowsOfCodes() const {
    return (static_cast<uint64_t>(source_.blocks.height) + vectorHeight_ - 1) / vectorHeight_;
  }

  // A block whose codes begin at a bit; only rows of codes that are wanted are read.
  bool ReadBlock(uint64_t block, uint64_t bit) {
    const auto across = static_cast<uint64_t>(source_.blocks.across);
    const uint64_t left = block % across * static_cast<uint64_t>(source_.blocks.width);
    const uint64_t top = block / across * static_cast<uint64_t>(source_.blocks.height);
    const uint64_t rowBits = codesAcross_ * codeBits_;
    for (uint64_t row = 0; row < RowsOfCodes(); ++row, bit += rowBits) {
      if (!target_.Wants(left, top + row * vectorHeight_, codesAcross_ * vectorWidth_, vectorHeight_))
        continue;
      const uint64_t bytes = (bit % 8 + rowBits + 7) / 8;
      const std::string codes = data_.Piece(at_ + bit / 8, bytes);
      if (codes.size() < bytes) return false;
      for (uint64_t n = 0; n < codesAcross_; ++n) {
        const uint64_t code = BitsAt(codes, bit % 8 + n * codeBits_, codeBits_);
        if (code >= entries_) return false;
        PutVector(code, left + n * vectorWidth_, top + row * vectorHeight_);
      }
    }
    return true;
  }

  // A row of a vector as it stands, where all of it is wanted.
  bool PutRow(uint64_t code, uint32_t left, uint32_t row, uint64_t y) {
    if (image_.sampleBytes != 1 || image_.bands != target_.Bands() || !target_.WantsRow(row) ||
        left < target_.Left() || left + vectorWidth_ > target_.Right() || vectorWidth_ != tables_)
      return false;
    uint8_t* to = target_.Run(left, row, 0);
    if (to == nullptr || (image_.bands == 3 && to + 2 != target_.Run(left, row, 2))) return false;
    const uint64_t at = code * entryBytes_ + y * vectorWidth_ * valueBytes_;
    const uint64_t count = vectorWidth_ * valueBytes_;
    if (at + count > (code + 1) * entryBytes_) return false;
    book_.copy(reinterpret_cast<char*>(to), static_cast<size_t>(count), static_cast<size_t>(at));
    return true;
  }

  void PutVector(uint64_t code, uint64_t left, uint64_t top) {
    if (!target_.Wants(left, top, vectorWidth_, vectorHeight_)) return;
    for (uint64_t y = 0; y < vectorHeight_; ++y) {
      if (!target_.Wants(left, top + y, vectorWidth_, 1)) continue;
      if (PutRow(code, static_cast<uint32_t>(left), static_cast<uint32_t>(top + y), y)) continue;
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
  PartBytes data_;
  uint64_t at_;  // in the data
  std::string book_;
  uint64_t codeRows_ = 0, codesAcross_ = 0, tables_ = 0, entries_ = 0, entryBytes_ = 0;
  uint64_t vectorHeight_ = 1, vectorWidth_ = 1, valueBytes_ = 1;
  uint32_t codeBits_ = 8;
};

}  // namespace

SampleFault ReadVectorQuantised(const SampleSource& source, SampleTarget& target) {
  if (target.Image().bits < 8 || target.Image().bits > 16)
    return {media::Outcome::Unsupported, "codes of such samples"};
  return VqBlocks(source, target).Read();
}

}  // namespace core
