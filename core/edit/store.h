// Picture files as image segments.
#pragma once

#include "core/edit/store_form.h"

namespace core {

/// Stores a picture file; scratch files are kept by the draft. What of it is not kept is told in `notes`.
/// PictureError; WriteError; ReadError; EditError.
std::vector<StoredImage> StorePicture(Draft& draft, const std::string& path, const std::string& folder,
                                      const StoreOptions& options, std::vector<std::string>& notes);
/// The same of a picture that is read already.
std::vector<StoredImage> StoreRaster(Draft& draft, Raster& raster, const std::string& folder,
                                     const StoreOptions& options, std::vector<std::string>& notes);

}  // namespace core
