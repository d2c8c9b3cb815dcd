// Files of samples.
#pragma once

#include <cstdio>

#include "core/pictures/georeference.h"
#include "core/samples/samples.h"

namespace core {

/// Why a form cannot hold samples; empty when it can: "tif" and "raw" hold all of them, "png" grey and
/// colour of up to 16 bits, and palettes of up to 256 entries.
std::string WhyNotAs(const std::string& form, const SampleImage& image);

/// Writes samples into an open file, in which TIFF goes back; false when it does not take them.
///
/// TIFF has the samples' depth, but 12 bits in 16, with the greatest value told; tables as palette; the
/// value of pixels that a mask leaves out as no-data value, and where it lies on earth as GeoTIFF has it.
bool WriteTiff(std::FILE* file, const SampleImage& image, const Georeference* reference = nullptr);
/// PNG shows luminance and colour differences (YCbCr601) as colours, and has 12 bits in 16, unscaled, as
/// its significant bits tell.
bool WritePng(std::FILE* file, const SampleImage& image);
/// Samples side by side in pixels, rows from the top: big-endian, samples of less than 8 bits a byte
/// each, those of 12 bits two.
bool WriteRaw(std::FILE* file, const SampleImage& image);

}  // namespace core
