// Lengths of a file header that are wrong, set to what can be known.
#pragma once

#include "core/edit/draft.h"

namespace core {

struct MendedLength {
  std::string field, was, is;
};

/// The file header with its lengths mended, for Survey to read in place of the stored one; what changed
/// is in `mended`, which stays empty where nothing did. A streamed file's is its replacement. ReadError.
std::string MendedFront(const Survey& survey, std::vector<MendedLength>& mended);

}  // namespace core
