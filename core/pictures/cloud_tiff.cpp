#include "core/pictures/cloud_tiff.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

#include "core/pictures/tiff_file.h"

namespace core {
namespace {

constexpr uint32_t kTile = 512;

template <class Sample>
Sample SampleAt(const uint8_t* row, size_t index) {
  Sample sample;
  std::memcpy(&sample, row + index * sizeof sample, sizeof sample);
  return sample;
}

// The mean of those that are there, rounded where samples are whole numbers.
template <class Sample>
Sample MeanOf(const Sample (&four)[4], const std::optional<Sample>& noData) {
  long double sum = 0;
  int count = 0;
  for (const Sample sample : four) {
    if (std::isnan(static_cast<long double>(sample)) || sample == noData) continue;
    sum += sample;
    ++count;
  }
  if (count == 0) return four[0];
  const long double mean = sum / count;
  if (!std::is_integral_v<Sample>) return static_cast<Sample>(mean);
  // A half added to the greatest whole numbers would be lost in them, or go beyond them.
  const long double whole = std::floor(mean);
  return static_cast<Sample>(mean - whole >= 0.5L ? whole + 1 : whole);
}

template <class Sample>
Halve MeansOfType(size_t samples, std::optional<uint64_t> fill) {
  std::optional<Sample> noData;
  if (fill) noData = static_cast<Sample>(*fill);
  return [=](const uint8_t* upper, const uint8_t* lower, uint32_t width, uint8_t* half) {
    for (uint32_t x = 0; x < width; x += 2) {
      const uint32_t next = std::min(x + 1, width - 1);
      for (size_t s = 0; s < samples; ++s) {
        const size_t left = x * samples + s, right = next * samples + s;
        const Sample mean =
            MeanOf<Sample>({SampleAt<Sample>(upper, left), SampleAt<Sample>(upper, right),
                            SampleAt<Sample>(lower, left), SampleAt<Sample>(lower, right)},
                           noData);
        std::memcpy(half, &mean, sizeof mean);
        half += sizeof mean;
      }
    }
  };
}

}  // namespace

Halve MeansOf(SampleKind kind, uint32_t sampleBytes, size_t samples, std::optional<uint64_t> noData) {
  if (kind == SampleKind::Complex)
    return sampleBytes == 8 ? MeansOfType<float>(2 * samples, {}) : MeansOfType<double>(2 * samples, {});
  if (kind == SampleKind::Real)
    return sampleBytes == 4 ? MeansOfType<float>(samples, noData) : MeansOfType<double>(samples, noData);
  const bool isSigned = kind == SampleKind::Signed;
  switch (sampleBytes) {
    case 1:
      return isSigned ? MeansOfType<int8_t>(samples, noData) : MeansOfType<uint8_t>(samples, noData);
    case 2:
      return isSigned ? MeansOfType<int16_t>(samples, noData) : MeansOfType<uint16_t>(samples, noData);
    case 4:
      return isSigned ? MeansOfType<int32_t>(samples, noData) : MeansOfType<uint32_t>(samples, noData);
    default:
      return isSigned ? MeansOfType<int64_t>(samples, noData) : MeansOfType<uint64_t>(samples, noData);
  }
}

Halve NearestPixels(size_t pixelBytes) {
  return [=](const uint8_t* upper, const uint8_t*, uint32_t width, uint8_t* half) {
    for (uint32_t x = 0; x < width; x += 2, half += pixelBytes)
      std::memcpy(half, upper + x * pixelBytes, pixelBytes);
  };
}

CloudTiff::CloudTiff(CloudForm form) : form_(std::move(form)) {
  uint32_t width = form_.width, height = form_.height;
  for (;;) {
    Level& level = levels_.emplace_back();
    level.width = width;
    level.height = height;
    level.scratch = std::make_unique<ScratchFile>("");
    if (width <= kTile && height <= kTile) break;
    width = (width + 1) / 2;
    height = (height + 1) / 2;
  }
}

void CloudTiff::PutRow(const uint8_t* row) { Put(0, row); }

void CloudTiff::Put(size_t number, const uint8_t* row) {
  Level& level = levels_[number];
  const size_t bytes = level.width * form_.pixelBytes;
  level.scratch->Write(bytes * level.rows, row, bytes);
  ++level.rows;
  if (number + 1 == levels_.size()) return;
  const bool isLast = level.rows == level.height;
  if (level.rows % 2 == 1 && !isLast) {
    level.waiting.assign(row, row + bytes);
    return;
  }
  std::vector<uint8_t> half(levels_[number + 1].width * form_.pixelBytes);
  form_.halve(level.rows % 2 == 1 ? row : level.waiting.data(), row, level.width, half.data());
  Put(number + 1, half.data());
}

bool CloudTiff::SetDirectory(TIFF* tiff, size_t number) {
  const Level& level = levels_[number];
  return TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, level.width) &&
         TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, level.height) &&
         TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) &&
         TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE) &&
         TIFFSetField(tiff, TIFFTAG_TILEWIDTH, kTile) && TIFFSetField(tiff, TIFFTAG_TILELENGTH, kTile) &&
         (number == 0 || TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE)) &&
         form_.setTags(tiff, number == 0) &&
         (form_.predictor == PREDICTOR_NONE || TIFFSetField(tiff, TIFFTAG_PREDICTOR, form_.predictor)) &&
         TIFFDeferStrileArrayWriting(tiff) == 1 && TIFFWriteCheck(tiff, 1, "picture") == 1 &&
         TIFFWriteDirectory(tiff) == 1;
}

void CloudTiff::TakeTile(const Level& level, const std::vector<uint8_t>& rows, uint32_t count,
                         uint32_t left, std::vector<uint8_t>& tile) const {
  const size_t stride = level.width * form_.pixelBytes;
  const uint32_t columns = std::min(kTile, level.width - left);
  std::fill(tile.begin(), tile.end(), uint8_t{0});
  for (uint32_t y = 0; y < count; ++y) {
    const uint8_t* from = &rows[y * stride + left * form_.pixelBytes];
    if (!form_.areBits) {
      std::memcpy(&tile[size_t{y} * kTile * form_.pixelBytes], from, columns * form_.pixelBytes);
      continue;
    }
    for (uint32_t x = 0; x < columns; ++x) {
      uint8_t& byte = tile[y * (kTile / 8) + x / 8];
      if (from[x] != 0) byte = static_cast<uint8_t>(byte | 0x80 >> x % 8);
    }
  }
}

bool CloudTiff::WriteTiles(TIFF* tiff, Level& level) {
  const size_t stride = level.width * form_.pixelBytes;
  std::vector<uint8_t> rows(stride * std::min(kTile, level.height));
  std::vector<uint8_t> tile(form_.areBits ? kTile * kTile / 8 : form_.pixelBytes * kTile * kTile);
  for (uint32_t top = 0; top < level.height; top += kTile) {
    const uint32_t count = std::min(kTile, level.height - top);
    level.scratch->ReadBack(stride * top, rows.data(), stride * count);
    for (uint32_t left = 0; left < level.width; left += kTile) {
      TakeTile(level, rows, count, left, tile);
      if (TIFFWriteTile(tiff, tile.data(), left, top, 0, 0) < 0) return false;
    }
  }
  return TIFFFlush(tiff) == 1;
}

bool CloudTiff::Write(std::FILE* file) {
  constexpr uint64_t kMostClassic = uint64_t{2900} << 20;  // with what smaller pictures add
  const uint64_t bytes = uint64_t{form_.width} * form_.height * form_.pixelBytes;
  const std::unique_ptr<TIFF, void (*)(TIFF*)> tiff(
      OpenTiffFile(dup(fileno(file)), bytes > kMostClassic ? "w8" : "w"), TIFFClose);
  bool good = tiff != nullptr;
  for (size_t i = 0; good && i < levels_.size(); ++i) good = SetDirectory(tiff.get(), i);
  for (size_t i = 0; good && i < levels_.size(); ++i)
    good = TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(i)) == 1 &&
           TIFFForceStrileArrayWriting(tiff.get()) == 1;
  for (size_t i = levels_.size(); good && i-- > 0;)
    good =
        TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(i)) == 1 && WriteTiles(tiff.get(), levels_[i]);
  return good;
}

}  // namespace core
