// The page's template, compiled in.
#pragma once

#include <span>

#include "tools/orbntf/records/definitions.h"

namespace tool {

extern const std::span<const CompiledText> kTemplateTexts;

}  // namespace tool
