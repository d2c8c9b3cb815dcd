// Picture files read for a test.
#pragma once

#include <string>

#include "core/pictures/raster.h"

namespace test {

/// All samples of a picture file, pixels side by side, rows from the top, numbers in host order.
struct WholeRaster {
  core::RasterForm form;
  std::string samples;
};
WholeRaster ReadRaster(const std::string& path, std::optional<uint32_t> page = {});

}  // namespace test
