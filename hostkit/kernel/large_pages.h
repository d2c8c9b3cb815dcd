// Memory that is touched from end to end.
#pragma once

#include <cstddef>

namespace hostkit {

/// Asks the system for large pages under a fresh block, if it is large and the system has them: giving
/// the pages one by one would take longer than filling them.
void AskForLargePages(void* block, size_t bytes);

}  // namespace hostkit
