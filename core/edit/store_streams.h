// Blocks of samples as compressed data.
#pragma once

#include "core/edit/store_form.h"

namespace core {

/// Refuses what the storage that is asked for does not hold. PictureError.
void RequireStorable(const RasterForm& form, const StoreOptions& options);
/// Each block as a JPEG stream of 8 or 12 bits.
void StoreJpeg(Draft& draft, BlockStore& store, const RasterForm& raster, int quality,
               StoredImage& image);
/// All blocks as the tiles of a codestream, with the levels and layers of the profile for numerically
/// lossless data (BPJ2K01), or of a rate in bits a sample.
void StoreJpeg2000(Draft& draft, BlockStore& store, const RasterForm& raster, double rate,
                   StoredImage& image);
/// The stream of a JPEG or JPEG 2000 file as it is.
StoredImage StoreAsIs(Draft& draft, const std::string& path);

}  // namespace core
