// The page's template, compiled in.
#pragma once

#include <span>

#include "core/format/definitions.h"

namespace core {

extern const std::span<const CompiledText> kTemplateTexts;

}  // namespace core
