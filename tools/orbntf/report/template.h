// The page's template, compiled in.
#pragma once

#include <span>

#include "core/format/definitions.h"
#include "tools/orbntf/tool.h"

namespace tool {

extern const std::span<const CompiledText> kTemplateTexts;

}  // namespace tool
