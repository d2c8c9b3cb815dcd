// An image segment's samples row by row.
#pragma once

#include <future>

#include "core/format/blocks.h"
#include "core/format/jpeg_stream.h"
#include "core/samples/samples.h"
#include "media/work.h"

namespace core {

/// What is wanted of an image's rows.
struct RowsRequest {
  std::vector<uint32_t> bands;       ///< from 0; empty for all
  uint64_t column = 0, columns = 0;  ///< of the full image; 0 for as far as it goes
  uint64_t row = 0, rows = 0;        ///< those that will be asked for, of the full image
  uint32_t reduce = 0;               ///< as of SampleRequest
  uint64_t pieceBytes = 1 << 20;     ///< about what is held of uncompressed data
};

/// Reads rows, usually from the top down, and holds no more of them than there are blocks or pieces of
/// data for: a row of blocks of compressed data, a few rows of uncompressed data. Where there is a core
/// for it, the next ones are read while those are used, from the same account of work.
class SampleRows {
 public:
  SampleRows(const Survey& survey, const SurveyedPart& part, RowsRequest request);
  ~SampleRows();
  SampleRows(const SampleRows&) = delete;
  SampleRows& operator=(const SampleRows&) = delete;

  /// Depth and kind of the samples, and the size that the rows have; no samples.
  SampleFault Start(SampleImage& form);
  /// The samples of a row, bands side by side in pixels, until the next call. ReadError.
  SampleFault Row(uint64_t y, const uint8_t*& samples);

 private:
  struct Piece {
    uint64_t top = 0;
    SampleImage image;
    SampleFault fault;
    media::WorkLeft began, left;  // of a piece that another thread read
    bool Has(uint64_t y) const { return image.height != 0 && y >= top && y < top + image.height; }
  };

  uint64_t RowsAtOnce(const SampleImage& form) const;
  // The first row behind those that will be asked for.
  uint64_t LastWanted() const;
  Piece ReadPiece(uint64_t y);
  SampleFault Hold(uint64_t y);
  // Begins to read the piece behind the one that is held.
  void ReadAhead();
  // Waits for it, and takes what it cost from the account.
  Piece TakeAhead();

  const Survey& survey_;
  const SurveyedPart& part_;
  RowsRequest request_;
  StreamCache streams_;
  Piece held_;
  std::vector<uint8_t> spare_;  // memory of samples that were used
  std::future<Piece> ahead_;
  uint64_t atOnce_ = 0, height_ = 0;
};

}  // namespace core
