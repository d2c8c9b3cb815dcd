// What differs between two files, as JSON.
#pragma once

#include "core/compare/compare.h"
#include "core/compare/compare_pixels.h"
#include "tools/orbntf/tool.h"

namespace tool {

std::string ComparisonJson(const std::string& a, const std::string& b, const Comparison& comparison,
                           const PixelDifference& pixels);

}  // namespace tool
