// Vector-quantised blocks (MIL-STD-188-199): codes, each of which stands for a small rectangle of pixels.
#include <algorithm>
#include <cstring>

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
      const std::string_view codes = CodesAt(at_ + bit / 8, bytes);
      if (codes.size() < bytes || !TakeCodes(codes, bit % 8)) return false;
      PutCodes(left, top + row * vectorHeight_);
    }
    return true;
  }

  // Bytes of codes; those of the blocks that follow are read with them.
  std::string_view CodesAt(uint64_t at, uint64_t count) {
    constexpr uint64_t kPiece = 16 << 10;
    if (at < heldAt_ || at + count > heldAt_ + held_.size()) {
      held_ = data_.Piece(at, std::max(count, kPiece));
      heldAt_ = at;
    }
    return std::string_view(held_).substr(static_cast<size_t>(at - heldAt_), static_cast<size_t>(count));
  }

  bool TakeCodes(std::string_view bytes, uint64_t bit) {
    codes_.resize(static_cast<size_t>(codesAcross_));
    uint64_t most = 0;
    for (uint32_t& code : codes_) {
      code = static_cast<uint32_t>(BitsAt(bytes, bit, codeBits_));
      most = std::max<uint64_t>(most, code);
      bit += codeBits_;
    }
    return most < entries_;
  }

  // Puts the vectors of a row of codes: those that are wanted whole stand between those that are cut.
  void PutCodes(uint64_t left, uint64_t top) {
    const uint64_t cut = target_.Left() - std::min<uint64_t>(target_.Left(), left),
                   wanted = target_.Right() - std::min<uint64_t>(target_.Right(), left);
    const uint64_t end = std::min(codesAcross_, wanted / vectorWidth_),
                   first = std::min(end, (cut + vectorWidth_ - 1) / vectorWidth_);
    for (uint64_t y = 0; y < vectorHeight_; ++y) {
      if (!target_.Wants(left, top + y, codesAcross_ * vectorWidth_, 1)) continue;
      const bool isWhole = PutWhole(first, end, left, top + y, y);
      PutParts(0, isWhole ? first : codesAcross_, left, top + y, y);
      if (isWhole) PutParts(end, codesAcross_, left, top + y, y);
    }
  }

  // A row of some vectors as it stands in the tables. False where it does not.
  bool PutWhole(uint64_t first, uint64_t end, uint64_t left, uint64_t row, uint64_t y) {
    const auto column = static_cast<uint32_t>(left + first * vectorWidth_),
               at = static_cast<uint32_t>(row);
    const uint64_t count = vectorWidth_ * valueBytes_;
    if (first >= end || image_.sampleBytes != 1 || image_.bands != target_.Bands() ||
        !target_.WantsRow(at) || vectorWidth_ != tables_ || (y + 1) * count > entryBytes_)
      return false;
    uint8_t* to = target_.Run(column, at, 0);
    for (uint32_t band = 0; to != nullptr && band < image_.bands; ++band) {
      if (target_.Run(column, at, band) != to + band) return false;
    }
    if (to == nullptr) return false;
    const char* rows = book_.data() + y * count;
    if (count == 4) {
      CopyRows<4>(first, end, rows, count, to);  // a number that the compiler knows
    } else {
      CopyRows<0>(first, end, rows, count, to);
    }
    return true;
  }
  template <size_t kCount>
  void CopyRows(uint64_t first, uint64_t end, const char* rows, size_t count, uint8_t* to) const {
    for (uint64_t n = first; n < end; ++n, to += count)
      std::memcpy(to, rows + codes_[static_cast<size_t>(n)] * entryBytes_, kCount != 0 ? kCount : count);
  }

  // A row of some vectors, sample by sample.
  void PutParts(uint64_t first, uint64_t end, uint64_t left, uint64_t row, uint64_t y) {
    for (uint64_t n = first; n < end; ++n) {
      const uint64_t entry = codes_[static_cast<size_t>(n)] * entryBytes_;
      for (uint64_t x = 0; x < vectorWidth_; ++x) {
        const uint64_t in = (y * vectorWidth_ + x) * valueBytes_;
        for (uint32_t band = 0; band < target_.Bands(); ++band) {
          const uint64_t at = in + band * image_.sampleBytes;
          const uint64_t value =
              at + image_.sampleBytes <= entryBytes_
                  ? BigNumber(book_, static_cast<size_t>(entry + at), image_.sampleBytes)
                  : 0;
          target_.Put(static_cast<uint32_t>(left + n * vectorWidth_ + x), static_cast<uint32_t>(row),
                      band, value);
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
  std::string held_;  // some bytes of the data
  uint64_t heldAt_ = 0;
  std::vector<uint32_t> codes_;  // of a row of vectors
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
