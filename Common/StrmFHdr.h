// User data of the STREAMING_FILE_HEADER data extension (MIL-STD-2500C, table A-8(B)): the true header
// bytes of a file whose lengths were still open when it was written. And the parser of all headers, which
// turns to them where it meets a placeholder.
#pragma once

#include "Common/DExSbHdr.h"

struct StreamingFileHeader : DataExtensionSubheader {
  /// Reads from SFH_L1 on; the file's position is put back on success. 1, -7, -9 (a delimiter or the two
  /// lengths do not match) or -1.
  Status Read(int32_t file);

  uint32_t SFH_L1 = 0;  ///< length of the replacement data
  uint32_t SFH_L2 = 0;
  Text<4> SFH_DELIM1;
  Text<4> SFH_DELIM2;
  TrackedArray<char> SFH_DR;  ///< SFH_L1 bytes and a terminator
};

/// Finds the streaming file header by its first delimiter, searching from the end of the file, and reads
/// it. `distance` receives how far before the end the replacement data begins. 1, -13, -9, -7 or -1.
Status FindStreamingHeader(int32_t file, StreamingFileHeader& streaming, uint32_t& distance);

/// How far the parses of one read have used up the replacement data.
struct ReplacementProgress {
  uint32_t consumed = 0;
  bool located = false;   ///< the streaming header was found
  uint32_t distance = 0;  ///< from the end of the file to the next replacement byte
};

/// Parses the headers of one file.
class HeaderParser {
 public:
  HeaderParser(int32_t file, ReplacementProgress& progress) : file_(file), progress_(progress) {}

  /// Parses one header record at the file's position, and again from the replacement data when the first
  /// pass met a placeholder. The position is put back on success. The record's status, or the replacement
  /// data's.
  template <class R>
  Status Parse(R& record, ReadMode mode = ReadMode::Normal);

  /// Where the first failure was born.
  const ParseFault& Fault() const { return fault_; }

 private:
  Status SeekToReplacement();
  uint32_t ReplacementLeft() const {
    return streaming_.SFH_L1 - std::min(streaming_.SFH_L1, progress_.consumed);
  }

  int32_t file_;
  ReplacementProgress& progress_;
  StreamingFileHeader streaming_;
  ParseFault fault_;
};

template <class R>
Status HeaderParser::Parse(R& record, ReadMode mode) {
  const int64_t start = KernelSeek(file_, 0, kSeekCurrent);
  FieldReader reader(file_, mode, ReplacementLeft());
  Status status = ReadRows<R>(R::Table(), record, reader);
  if constexpr (requires { record.ReadTail(reader); }) {
    if (Ok(status)) status = record.ReadTail(reader);
  }
  if (status == Status::ReplacementEnd) return Status::Success;
  if (!Ok(status)) {
    if (fault_.offset < 0) fault_ = reader.Fault();
    return status;
  }
  if (mode == ReadMode::Replacement) {
    progress_.consumed += reader.Taken();
    progress_.distance -= reader.Taken();
  } else if (reader.SawPlaceholder()) {
    if (Status s = SeekToReplacement(); !Ok(s)) return fault_ = reader.Placeholder(), s;
    // A placeholder met in replacement mode starts nothing further.
    if (Status s = Parse(record, ReadMode::Replacement); !Ok(s)) return s;
  }
  return SeekTo(file_, start);
}
