// Cloud-optimised GeoTIFF: tiles, smaller pictures, and all directories in front of what they tell of.
#pragma once

#include <tiffio.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/format/scratch.h"
#include "core/samples/image.h"

namespace core {

/// Makes a row of half the width, rounded up, of two rows; of a last row alone both are the same.
using Halve =
    std::function<void(const uint8_t* upper, const uint8_t* lower, uint32_t width, uint8_t* half)>;
/// Means of 2 x 2 samples. Left out are those that stand for nothing, and numbers that are none; where
/// all four are, it is the first one.
Halve MeansOf(SampleKind kind, uint32_t sampleBytes, size_t samples, std::optional<uint64_t> noData);
/// The first one of 2 x 2 pixels.
Halve NearestPixels(size_t pixelBytes);

/// Rows of pixels as they are given.
struct CloudForm {
  uint32_t width = 0, height = 0;
  size_t pixelBytes = 1;
  bool areBits = false;  ///< bytes of 0 and 1, one a pixel, which are stored as bits
  /// Sets all tags of an open file but those of sizes, tiles and compression; those that only the full
  /// picture has where `isFull`.
  std::function<bool(TIFF*, bool isFull)> setTags;
  uint16_t predictor = PREDICTOR_NONE;
  Halve halve;
};

/// Takes rows from the top and writes the file at the end, in memory for two rows of each size and one
/// row of tiles. What else is needed is in scratch files, some 4/3 of the picture. WriteError.
class CloudTiff {
 public:
  explicit CloudTiff(CloudForm form);
  void PutRow(const uint8_t* row);
  /// Writes it into an open file, in which it goes back; false when it does not take it.
  bool Write(std::FILE* file);

 private:
  struct Level {
    uint32_t width, height, rows = 0;
    std::unique_ptr<ScratchFile> scratch;
    std::vector<uint8_t> waiting;  // a row of which the next one is still to come
  };

  void Put(size_t number, const uint8_t* row);
  bool SetDirectory(TIFF* tiff, size_t number);
  bool WriteTiles(TIFF* tiff, Level& level);
  void TakeTile(const Level& level, const std::vector<uint8_t>& rows, uint32_t count, uint32_t left,
                std::vector<uint8_t>& tile) const;

  CloudForm form_;
  std::vector<Level> levels_;
};

}  // namespace core
