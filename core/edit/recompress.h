// The samples of an image segment in another form.
#pragma once

#include "core/edit/store.h"

namespace core {

/// Stores an image's samples anew; what its other fields say stays. Ways that lose nothing are read again
/// and held against the samples. EditError where they differ; PictureError; ReadError.
void Recompress(Draft& draft, size_t index, const std::string& folder, const StoreOptions& options,
                std::vector<std::string>& notes);

}  // namespace core
