#include "tests/support/raster.h"

#include <cstring>

namespace test {

WholeRaster ReadRaster(const std::string& path, std::optional<uint32_t> page) {
  const std::unique_ptr<core::Raster> raster = core::OpenRaster(path, page);
  WholeRaster whole;
  whole.form = raster->Form();
  const size_t bytes = whole.form.sampleBytes, pixel = bytes * whole.form.bands;
  whole.samples.resize(size_t{whole.form.width} * whole.form.height * pixel);
  raster->Read([&](const core::RasterPiece& piece) {
    const uint8_t* in = piece.samples;
    for (uint32_t y = 0; y < piece.height; ++y) {
      for (uint32_t x = 0; x < piece.width; ++x, in += bytes * piece.bands)
        std::memcpy(&whole.samples[(size_t{piece.top + y} * whole.form.width + piece.left + x) * pixel +
                                   piece.firstBand * bytes],
                    in, bytes * piece.bands);
    }
  });
  return whole;
}

}  // namespace test
