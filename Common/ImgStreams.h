// The boundaries of the compressed streams in an image's data.
#pragma once

#include "Common/ImgPixel.h"

/// A stream of one block or of one band of it.
struct StreamPlace {
  int64_t offset;  ///< in the segment's data
  int64_t length;
};

/// Finds the streams of a segment one after the other.
class StreamFinder {
 public:
  explicit StreamFinder(const ImageSource& source) : source_(source), remaining_(source.length) {}

  /// The stream from the position to the next start of an image; -7 when there is none.
  Status FindNext(StreamPlace& place);
  /// The stream from the last start of an image to the end of the data; -7 when there is none.
  Status FindLast(StreamPlace& place);
  /// The stream of block record n, which ends where the next of `recordCount` records points.
  Status FindRecorded(uint64_t n, uint64_t recordCount, StreamPlace& place);
  /// Whether no data is left behind the streams that were passed.
  bool IsExhausted() const { return position_ + source_.header.mask.IMDATOFF >= source_.length; }
  /// Moves on behind a stream that was found without a record.
  void Pass(const StreamPlace& place) {
    position_ += place.length;
    remaining_ -= place.length;
  }

 private:
  Status SearchLast(StreamPlace& place) const;

  const ImageSource& source_;
  int64_t position_ = 0;
  int64_t remaining_;
  int64_t cleanEnd_ = 0;  // no stream starts between the last one found and here
  StreamPlace last_ = {};
  Status lastStatus_ = Status::ShortRead;
  bool soughtLast_ = false;
};
