// Samples of a picture file put into the blocks of an image segment, on disk.
#pragma once

#include "core/edit/new_headers.h"
#include "core/pictures/raster.h"

namespace core {

/// How an image's samples lie (MIL-STD-2500C, table A-3, IMODE).
struct BlockForm {
  uint32_t width = 0, height = 0;  ///< of the image
  uint32_t bands = 1, bits = 8;    ///< bits: NBPP, one or a multiple of 8
  bool isComplex = false;
  char mode = 'B';
  uint32_t blockWidth = 0, blockHeight = 0;

  uint32_t Across() const { return (width + blockWidth - 1) / blockWidth; }
  uint32_t Down() const { return (height + blockHeight - 1) / blockHeight; }
  uint64_t Count() const { return uint64_t{Across()} * Down(); }
  uint32_t SampleBytes() const { return bits / 8; }
  /// Bytes of one band of a block.
  uint64_t PlaneBytes() const { return (uint64_t{blockWidth} * blockHeight * bits + 7) / 8; }
  uint64_t Bytes() const { return PlaneBytes() * bands * Count(); }
  /// Blocks that are told apart: of IMODE S those of each band.
  uint64_t Records() const { return mode == 'S' ? Count() * bands : Count(); }
  uint64_t RecordBytes() const { return mode == 'S' ? PlaneBytes() : PlaneBytes() * bands; }
};

/// The blocks of an image, filled by pieces in any order.
class BlockStore {
 public:
  BlockStore(const BlockForm& form, const std::string& folder);

  const BlockForm& Form() const { return form_; }
  /// Takes those of a piece's samples that lie in the image, whose first row is `top` of the picture.
  /// Pixels that are `pad` in all bands of the piece are counted.
  void Put(const RasterPiece& piece, uint32_t sampleBytes, uint32_t top,
           const std::optional<uint64_t>& pad);
  /// Ends the filling: what lies outside the image is zero.
  const FileBytes& Finish();
  std::shared_ptr<ScratchFile> Scratch() const { return scratch_; }
  /// Whether a record's block has pad pixels, and whether it has no others.
  bool HasPads(uint64_t record) const { return pads_[static_cast<size_t>(record)] != 0; }
  bool IsEmpty(uint64_t record) const;
  /// The samples of a block's rows, interleaved, of an image in IMODE P.
  void ReadRows(uint32_t column, uint32_t row, uint32_t first, uint32_t rows,
                std::vector<uint8_t>& samples) const;

 private:
  struct Run {
    uint32_t x, y, count, band;
  };
  uint64_t PlaceOf(const Run& run) const;
  void PutRun(const RasterPiece& piece, uint32_t sampleBytes, const Run& run, const uint8_t* samples);
  uint32_t BitOf(const Run& run) const;
  void ShiftIn(const Run& run);
  void PutInterleaved(const RasterPiece& piece, uint32_t sampleBytes, const Run& run,
                      const uint8_t* samples);
  void Pack(const uint8_t* samples, uint32_t sampleBytes, size_t count, size_t step, uint8_t* out) const;
  void CountPads(const RasterPiece& piece, uint32_t sampleBytes, const Run& run, const uint8_t* samples,
                 uint64_t pad);

  BlockForm form_;
  std::shared_ptr<ScratchFile> scratch_;
  std::vector<uint64_t> pads_;  // samples of it, by record
  std::vector<uint8_t> packed_;
};

}  // namespace core
