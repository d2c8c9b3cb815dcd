// Differences of texts and of data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace core {

/// A field or a record that is not the same; a text that one file does not have is none.
struct TextDifference {
  std::string part;   ///< "file header", "image 0", "image 1 | image 0" where the places differ
  std::string name;   ///< the mnemonic, or of a record its tag and which one of that tag it is
  std::string field;  ///< of a record that both files decode; empty for a whole record
  std::optional<std::string> a, b;
};
/// Bytes that are not the same; a length that one file does not have is none.
struct DataDifference {
  std::string part;
  std::optional<uint64_t> a, b;         ///< bytes of data
  std::optional<uint64_t> firstOffset;  ///< of the first byte that differs, in the data
};

}  // namespace core
