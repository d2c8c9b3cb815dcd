// Synthetic pictures and their compressed streams, for the benchmarks.
#pragma once

#include <cstdint>
#include <string>

namespace bench {

/// `side` x `side` samples with gradients, edges and noise; each seed is another picture.
std::string Picture(uint32_t side, uint32_t seed);
/// A square part of a picture.
std::string Part(const std::string& picture, uint32_t side, uint32_t left, uint32_t top,
                 uint32_t partSide);
/// Squares as JPEG of quality 75: one byte a pixel, or three interleaved.
std::string EncodeJpeg(const std::string& pixels, uint32_t side, int components);
/// A square of one byte a pixel as a lossless JPEG 2000 codestream in tiles.
std::string EncodeJpeg2000(const std::string& pixels, uint32_t side, uint32_t tile);
/// A square whose darker pixels are black as two-dimensional Group 3 rows in a one-strip TIFF file, which
/// stays under `path`; returns the strip.
std::string EncodeFacsimile(const std::string& pixels, uint32_t side, const std::string& path);

}  // namespace bench
