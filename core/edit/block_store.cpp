#include "core/edit/block_store.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace core {

BlockStore::BlockStore(const BlockForm& form, const std::string& folder)
    : form_(form), scratch_(std::make_shared<ScratchFile>(folder)) {
  pads_.resize(static_cast<size_t>(form.Records()));
}

// Of the first sample of a run within one block.
uint64_t BlockStore::PlaceOf(const Run& run) const {
  const uint64_t block = uint64_t{run.y / form_.blockHeight} * form_.Across() + run.x / form_.blockWidth;
  const uint64_t x = run.x % form_.blockWidth, y = run.y % form_.blockHeight;
  const uint64_t plane = form_.PlaneBytes(), sample = form_.SampleBytes();
  switch (form_.mode) {
    case 'P':
      return block * plane * form_.bands + ((y * form_.blockWidth + x) * form_.bands + run.band) * sample;
    case 'R':
      return block * plane * form_.bands + ((y * form_.bands + run.band) * form_.blockWidth + x) * sample;
    case 'S':
      return (run.band * form_.Count() + block) * plane + (y * form_.blockWidth + x) * sample;
    default:
      break;
  }
  const uint64_t first = block * plane * form_.bands + run.band * plane;
  return form_.bits == 1 ? first + (y * form_.blockWidth + x) / 8
                         : first + (y * form_.blockWidth + x) * sample;
}

// Samples in host order that lie `step` bytes apart to those of the file, the high byte first.
void BlockStore::Pack(const uint8_t* samples, uint32_t sampleBytes, size_t count, size_t step,
                      uint8_t* out) const {
  const size_t bytes = form_.SampleBytes();
  if (form_.bits == 1) {
    std::memset(out, 0, (count + 7) / 8);
    for (size_t i = 0; i < count; ++i, samples += step)
      out[i / 8] |= static_cast<uint8_t>((*samples & 1) << (7 - i % 8));
    return;
  }
  const size_t number = form_.isComplex ? bytes / 2 : bytes;
  for (size_t i = 0; i < count; ++i, samples += step, out += bytes) {
    if (bytes == 1) {
      *out = *samples;
      continue;
    }
    std::memset(out, 0, bytes);
    std::memcpy(out, samples, std::min<size_t>(bytes, sampleBytes));
    if constexpr (std::endian::native == std::endian::little) {
      for (size_t part = 0; part < bytes; part += number) std::reverse(out + part, out + part + number);
    }
  }
}

void BlockStore::PutRun(const RasterPiece& piece, uint32_t sampleBytes, const Run& run,
                        const uint8_t* samples) {
  const size_t step = size_t{piece.bands} * sampleBytes;
  packed_.resize(form_.bits == 1 ? (run.count + 7) / 8 : size_t{run.count} * form_.SampleBytes());
  for (uint32_t band = 0; band < piece.bands && piece.firstBand + band < form_.bands; ++band) {
    Pack(samples + size_t{band} * sampleBytes, sampleBytes, run.count, step, packed_.data());
    Run own = run;
    own.band = piece.firstBand + band;
    if (form_.bits == 1 && (BitOf(own) != 0 || run.count % 8 != 0)) ShiftIn(own);
    scratch_->Write(PlaceOf(own), packed_.data(), packed_.size());
  }
}

// Where a run of bits begins in its first byte.
uint32_t BlockStore::BitOf(const Run& run) const {
  const uint64_t bit = uint64_t{run.y % form_.blockHeight} * form_.blockWidth + run.x % form_.blockWidth;
  return static_cast<uint32_t>(bit % 8);
}

// Bits that do not begin and end on a byte go between those that are there.
void BlockStore::ShiftIn(const Run& run) {
  const uint32_t shift = BitOf(run);
  std::vector<uint8_t> there((run.count + shift + 7) / 8);
  scratch_->ReadBack(PlaceOf(run), there.data(), there.size());
  for (uint32_t i = 0; i < run.count; ++i) {
    const auto bit = static_cast<uint8_t>(packed_[i / 8] >> (7 - i % 8) & 1);
    const uint32_t at = i + shift;
    there[at / 8] = static_cast<uint8_t>((there[at / 8] & ~(0x80 >> at % 8)) | bit << (7 - at % 8));
  }
  packed_ = std::move(there);
}

// Bands that come one after the other are put between those that are there.
void BlockStore::PutInterleaved(const RasterPiece& piece, uint32_t sampleBytes, const Run& run,
                                const uint8_t* samples) {
  const size_t bytes = form_.SampleBytes(), pixel = bytes * form_.bands;
  const uint32_t bands = std::min(piece.bands, form_.bands - std::min(form_.bands, piece.firstBand));
  packed_.assign(size_t{run.count} * pixel, 0);
  const uint64_t place = PlaceOf({run.x, run.y, run.count, 0});
  if (bands != form_.bands) scratch_->ReadBack(place, packed_.data(), packed_.size());
  std::vector<uint8_t> plane(size_t{run.count} * bytes);
  for (uint32_t band = 0; band < bands; ++band) {
    Pack(samples + size_t{band} * sampleBytes, sampleBytes, run.count, size_t{piece.bands} * sampleBytes,
         plane.data());
    uint8_t* out = &packed_[(piece.firstBand + band) * bytes];
    for (size_t x = 0; x < run.count; ++x) std::memcpy(out + x * pixel, &plane[x * bytes], bytes);
  }
  scratch_->Write(place, packed_.data(), packed_.size());
}

// Pixels are pads where all bands are; of bands that come by themselves each sample counts.
void BlockStore::CountPads(const RasterPiece& piece, uint32_t sampleBytes, const Run& run,
                           const uint8_t* samples, uint64_t pad) {
  const uint64_t block = uint64_t{run.y / form_.blockHeight} * form_.Across() + run.x / form_.blockWidth;
  const uint32_t bands = std::min(piece.bands, form_.bands);
  const size_t step = size_t{piece.bands} * sampleBytes;
  const size_t skipped = std::endian::native == std::endian::little ? 0 : sizeof pad - sampleBytes;
  const uint8_t* bytes = reinterpret_cast<const uint8_t*>(&pad) + skipped;
  uint64_t count = 0;
  for (uint32_t x = 0; x < run.count; ++x, samples += step) {
    uint32_t same = 0;
    for (; same < bands; ++same) {
      if (std::memcmp(samples + size_t{same} * sampleBytes, bytes, sampleBytes) != 0) break;
    }
    count += same == bands ? 1 : 0;
  }
  for (uint32_t band = 0; band < bands; ++band) {
    const uint64_t record = form_.mode == 'S' ? (piece.firstBand + band) * form_.Count() + block : block;
    pads_[static_cast<size_t>(record)] += count;
  }
}

void BlockStore::Put(const RasterPiece& piece, uint32_t sampleBytes, uint32_t top,
                     const std::optional<uint64_t>& pad) {
  const size_t pixelBytes = size_t{piece.bands} * sampleBytes;
  for (uint32_t row = 0; row < piece.height; ++row) {
    const uint64_t y = uint64_t{piece.top} + row;
    if (y < top || y - top >= form_.height) continue;
    for (uint32_t x = 0; x < piece.width;) {
      const uint32_t column = piece.left + x;
      const uint32_t count = std::min(piece.width - x, form_.blockWidth - column % form_.blockWidth);
      const uint8_t* samples = piece.samples + (size_t{row} * piece.width + x) * pixelBytes;
      const Run run = {column, static_cast<uint32_t>(y - top), count, 0};
      form_.mode == 'P' && form_.bands > 1 ? PutInterleaved(piece, sampleBytes, run, samples)
                                           : PutRun(piece, sampleBytes, run, samples);
      if (pad) CountPads(piece, sampleBytes, run, samples, *pad);
      x += count;
    }
  }
}

const FileBytes& BlockStore::Finish() {
  scratch_->Extend(form_.Bytes());
  return scratch_->Bytes();
}

bool BlockStore::IsEmpty(uint64_t record) const {
  const uint64_t block = record % form_.Count();
  const uint64_t left = block % form_.Across() * form_.blockWidth,
                 top = block / form_.Across() * form_.blockHeight;
  const uint64_t pixels = std::min<uint64_t>(form_.blockWidth, form_.width - left) *
                          std::min<uint64_t>(form_.blockHeight, form_.height - top);
  return pads_[static_cast<size_t>(record)] == pixels * (form_.mode == 'S' ? 1 : form_.bands);
}

void BlockStore::ReadRows(uint32_t column, uint32_t row, uint32_t first, uint32_t rows,
                          std::vector<uint8_t>& samples) const {
  const size_t rowBytes = size_t{form_.blockWidth} * form_.bands * form_.SampleBytes();
  samples.resize(rowBytes * rows);
  scratch_->ReadBack(PlaceOf({column * form_.blockWidth, row * form_.blockHeight + first, 0, 0}),
                     samples.data(), samples.size());
}

}  // namespace core
