// Holding a written file against what was asked for.
#pragma once

#include "core/check/check_file.h"
#include "core/edit/draft.h"

namespace core {

/// What was written, read again.
struct Proof {
  std::string fault;                ///< why it is not what was asked for; empty where it is
  std::vector<std::string> errors;  ///< that it has and the file before did not, in words
};

/// Reads a written draft again: segments that were not changed have the same bytes, fields that were not
/// named the same texts, lengths add up, and no rule is broken that was kept before. ReadError.
Proof Prove(const Draft& draft, const std::vector<ContentHash>& hashes, const std::string& path,
            const RecordDefinitions& definitions);

/// Writes a draft into an empty regular file that is open for writing, and proves it by the file's path.
/// WriteError; ReadError; EditError.
Proof WriteProven(Draft& draft, int descriptor, const std::string& path,
                  const RecordDefinitions& definitions);

}  // namespace core
