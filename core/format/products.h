// Products that a file is known as by its marks.
#pragma once

#include <string>
#include <vector>

#include "core/format/survey.h"

namespace core {

/// What a file is, in words: "radar image, SICD 1.3.0, 2 segments of 60000 rows". None for files without
/// the marks of a product.
std::vector<std::string> ProductsOf(const Survey& survey);

}  // namespace core
