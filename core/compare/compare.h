// What differs between two files.
#pragma once

#include <optional>

#include "core/format/records.h"

namespace core {

/// A field or a record that is not the same; a text that one file does not have is none.
struct TextDifference {
  std::string part;  ///< "file header", "image 0"
  std::string name;  ///< the mnemonic, or of a record its tag and which one of that tag it is
  std::optional<std::string> a, b;
};
/// Segments whose data is not the same; a length that one file does not have is none.
struct DataDifference {
  std::string part;
  std::optional<uint64_t> a, b;         ///< bytes of data
  std::optional<uint64_t> firstOffset;  ///< of the first byte that differs, in the data
};
struct Comparison {
  std::vector<TextDifference> fields, records;
  std::vector<DataDifference> segments;

  bool Differs() const { return !fields.empty() || !records.empty() || !segments.empty(); }
};
Comparison Compare(const Survey& a, const Survey& b, const RecordDefinitions& definitions);

}  // namespace core
