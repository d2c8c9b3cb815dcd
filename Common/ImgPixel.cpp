#include "Common/ImgPixel.h"

#include <algorithm>

#include "Common/BigEndian.h"

namespace {

constexpr char16_t kSourceFile[] = u"ImgPixel";

using Band = BandRepresentation;

constexpr int32_t kNotFound = -1;

int32_t FirstBandWith(const ImageSubheader& header, Band code) {
  for (uint32_t band = 0; band < header.bands.size(); ++band) {
    if (header.BandCode(band) == code) return static_cast<int32_t>(band);
  }
  return kNotFound;
}

// Codes for red, green and blue, and what an absent one of them gives.
struct SelectionRule {
  Band red, green, blue;
  bool absentKeepsInitial;
};
constexpr SelectionRule kRules[] = {
    {Band::BANDREPRESENTATION_R, Band::BANDREPRESENTATION_G, Band::BANDREPRESENTATION_B, true},
    {Band::BANDREPRESENTATION_Y, Band::BANDREPRESENTATION_Cb, Band::BANDREPRESENTATION_Cr, false},
    {Band::BANDREPRESENTATION_LU, Band::BANDREPRESENTATION_LU, Band::BANDREPRESENTATION_LU, false},
    {Band::BANDREPRESENTATION_M, Band::BANDREPRESENTATION_M, Band::BANDREPRESENTATION_M, false},
};

// Largest value of n bits.
constexpr uint32_t LargestOfBits(uint32_t bits) {
  return bits >= 32 ? UINT32_MAX : (uint32_t{1} << bits) - 1;
}

void ScaleToBytes(std::span<uint8_t> row, uint32_t abpp, SampleRange range) {
  const bool hasRange = range.low != range.high;
  const double low = hasRange ? range.low : 0.0;
  const double span =
      hasRange ? static_cast<double>(range.high) - low : std::max(1u, LargestOfBits(abpp));
  for (size_t i = 0; 4 * i + 4 <= row.size(); ++i) {
    const double value = Big32(&row[4 * i]);
    const double scaled = (255.0 * value - 255.0 * low) / span;
    row[i] = static_cast<uint8_t>(static_cast<int64_t>(scaled));
  }
}

void SwapWords(std::span<uint8_t> row) {
  for (size_t i = 0; i + 2 <= row.size(); i += 2) {
    const uint16_t value = Big16(&row[i]);
    std::memcpy(&row[i], &value, 2);
  }
}

void StretchWords(std::span<uint8_t> row, uint32_t nbpp, uint32_t abpp) {
  const uint32_t to = LargestOfBits(nbpp) & 0xFFFF, from = LargestOfBits(abpp);
  if (from == to) return SwapWords(row);
  for (size_t i = 0; i + 2 <= row.size(); i += 2) {
    const uint32_t value = static_cast<uint32_t>(row[i] << 8 | row[i + 1]);
    const auto stretched = static_cast<uint16_t>(value * to / from);
    std::memcpy(&row[i], &stretched, 2);
  }
}

void RepackTwelveBits(std::span<uint8_t> row) {
  for (size_t i = 0; i + 3 <= row.size(); i += 3) {
    const uint32_t a = static_cast<uint32_t>(row[i] << 4 | row[i + 1] >> 4);
    const uint32_t b = static_cast<uint32_t>((row[i + 1] & 15) << 8 | row[i + 2]);
    row[i] = static_cast<uint8_t>(a);
    row[i + 1] = static_cast<uint8_t>(a >> 8 | (b & 15) << 4);
    row[i + 2] = static_cast<uint8_t>(b >> 4);
  }
  if (row.size() % 3 != 2) return;
  // The last sample of an odd row.
  uint8_t* last = &row[row.size() - 2];
  const uint32_t a = static_cast<uint32_t>(last[0] << 4 | last[1] >> 4);
  last[0] = static_cast<uint8_t>(a);
  last[1] = static_cast<uint8_t>(a >> 8);
}

bool Stretches(uint32_t nbpp, uint32_t abpp) {
  return nbpp != abpp && nbpp <= 32 && !ScalesByRange(nbpp, abpp) && abpp > 8 && abpp <= 16;
}

}  // namespace

ImageSource ImageSource::Of(NitfFile& document, uint32_t index, HostLoadRecord* record) {
  ImageSubheader& header = *document.images.At(index);
  return {document,
          header,
          header.rememberedBands,
          index,
          record,
          document.DataLength(SegmentKind::Image, index),
          document.SeekToData(SegmentKind::Image, index)};
}

Status ImageSource::ReadAt(int64_t offset, void* to, uint32_t bytes) const {
  if (offset < 0 || KernelSeek(document.FileHandle(), dataStart + offset, kSeekStart) < 0) {
    return Status::ShortRead;
  }
  return ReadExactly(document.FileHandle(), to, bytes);
}

Status ImageSource::Require(int64_t offset, CheckedSize bytes) const {
  if (!bytes.Within(INT64_MAX)) return Status::ShortRead;
  if (KernelSeek(document.FileHandle(), dataStart + offset, kSeekStart) < 0) return Status::ShortRead;
  return RequireRemaining(document.FileHandle(), bytes.Value());
}

BandSelection SelectBands(const ImageSubheader& header, BandSelection& remembered,
                          BandSelection initial) {
  const int32_t last = static_cast<int32_t>(header.CodedBandCount()) - 1;
  for (const SelectionRule& rule : kRules) {
    const int32_t red = FirstBandWith(header, rule.red);
    const int32_t green = FirstBandWith(header, rule.green);
    const int32_t blue = FirstBandWith(header, rule.blue);
    if (red == kNotFound && green == kNotFound && blue == kNotFound) continue;
    const auto index = [&](int32_t found, int32_t start) {
      if (found != kNotFound) return std::min(found, last);
      return rule.absentKeepsInitial ? std::min(start, last) : last;
    };
    const BandSelection chosen = {index(red, initial.red), index(green, initial.green),
                                  index(blue, initial.blue)};
    if (chosen.red == chosen.green || chosen.green == chosen.blue || chosen.red == chosen.blue) {
      remembered = chosen;
    }
    return chosen;
  }
  if (remembered.red != -1 && remembered.green != -1 && remembered.blue != -1) return remembered;
  return {0, std::min(1, last), std::min(2, last)};
}

void ConvertSamples(std::span<uint8_t> row, uint32_t nbpp, uint32_t abpp, SampleRange range) {
  if (ScalesByRange(nbpp, abpp)) {
    ScaleToBytes(row, abpp, range);
  } else if (Stretches(nbpp, abpp)) {
    StretchWords(row, nbpp, abpp);
  } else if (nbpp == abpp && nbpp == 12) {
    RepackTwelveBits(row);
  } else if (nbpp == abpp && nbpp == 16) {
    StretchWords(row, 16, 16);
  }
}

Status FindSampleRange(const ImageSource& source, SampleRange& range) {
  constexpr uint32_t kMaxPiece = 50000;
  const uint32_t whole = std::min(source.length, kMaxPiece);
  KernelBuffer<uint8_t> piece;
  if (Status s = piece.Allocate(whole, ORB_HERE); !Ok(s)) return s;
  for (uint32_t position = 0; position < source.length;) {
    const uint32_t bytes = std::min(whole, source.length - position);
    if (Status s = source.ReadAt(position, piece.data(), bytes); !Ok(s)) return s;
    if (range.low == -1 && range.high == -1 && bytes >= 4) {
      range.low = range.high = static_cast<int32_t>(Big32(piece.data()));
    }
    for (uint32_t i = 0; i + 4 <= bytes; i += 4) {
      const auto value = static_cast<int32_t>(Big32(piece.data() + i));
      range.low = std::min(range.low, value);
      range.high = std::max(range.high, value);
    }
    position += bytes;
  }
  return Status::Success;
}
