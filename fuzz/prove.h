// Drafts are written as the tool writes them.
#pragma once

#include "core/edit/draft.h"

namespace fuzz {

/// Writes a draft; ends the process where what was written is not what was to be written.
void Prove(core::Draft& draft);

}  // namespace fuzz
