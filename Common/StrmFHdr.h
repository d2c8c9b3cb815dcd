// User data of the STREAMING_FILE_HEADER data extension (MIL-STD-2500C, table A-8(B)): the true header
// bytes of a file whose lengths were still open when it was written.
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

/// SFH_DELIM1 and SFH_DELIM2.
inline constexpr std::string_view kStreamingDelimiter1 = "\x0A\x6E\x1D\x97";
inline constexpr std::string_view kStreamingDelimiter2 = "\x0E\xCA\x14\xBF";
/// Width of SFH_L1 and SFH_L2.
inline constexpr uint32_t kStreamingLengthWidth = 7;
