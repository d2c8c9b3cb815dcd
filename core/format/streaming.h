// The data of a STREAMING_FILE_HEADER extension (MIL-STD-2500C, 5.8.3.3): the true first bytes of a file
// whose lengths were open when it was written, between marks and lengths.
#pragma once

#include <string>
#include <vector>

#include "core/format/bytes.h"
#include "core/format/part.h"

namespace core {

/// A field of an extension's data.
struct DataField {
  const char* name;  ///< SFH_L1, SFH_DELIM1, SFH_DR, SFH_DELIM2 or SFH_L2
  uint64_t offset;   ///< in the file
  uint64_t length;
  std::string text;  ///< digits of a length, the hexadecimal digits of a mark; empty for SFH_DR
  const char* meaning;
};

/// Bytes of the fields around the replacement data: a length and a mark on each side.
inline constexpr uint64_t kStreamingMargin = 11;

/// The replacement data at the end of a streamed file; empty when there is none. ReadError.
std::string FindReplacement(const FileBytes& file);

/// The fields of the data of an extension; none where it is no STREAMING_FILE_HEADER, or where lengths
/// and marks do not fit. ReadError.
std::vector<DataField> StreamingFields(const FileBytes& file, const SurveyedPart& part);

}  // namespace core
