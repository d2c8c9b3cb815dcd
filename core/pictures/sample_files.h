// Files of samples.
#pragma once

#include <cstdio>

#include "core/pictures/tiff_options.h"
#include "core/samples/samples.h"

namespace core {

/// Why a form cannot hold samples; empty when it can: "tif", "raw" and "npy" hold all of them, "png" grey
/// and colour of up to 16 bits, and palettes of up to 256 entries.
std::string WhyNotAs(const std::string& form, const SampleImage& image);

/// Writes samples into an open file, in which TIFF goes back; false when it does not take them.
///
/// TIFF has the samples' depth, but 12 bits in 16, with the greatest value told; tables as palette; the
/// value of pixels that a mask leaves out as no-data value, and where it lies on earth as GeoTIFF has it.
/// Smaller pictures of a cloud-optimised one are means, of palettes and bits the nearest pixels.
bool WriteTiff(std::FILE* file, const SampleImage& image, const TiffOptions& options = {});
/// PNG shows luminance and colour differences (YCbCr601) as colours, and has 12 bits in 16, unscaled, as
/// its significant bits tell.
bool WritePng(std::FILE* file, const SampleImage& image);
/// Samples side by side in pixels, rows from the top: big-endian, samples of less than 8 bits a byte
/// each, those of 12 bits two.
bool WriteRaw(std::FILE* file, const SampleImage& image);
/// An array of (bands, rows, columns) in the machine's byte order, as numpy stores it (format 1.0).
bool WriteNpy(std::FILE* file, const SampleImage& image);

}  // namespace core
