#include "fuzz/prove.h"

#include <fcntl.h>

#include "core/edit/prove.h"
#include "fuzz/support.h"

void fuzz::Prove(core::Draft& draft) {
  static MemoryFile saved;
  saved.Fill("", 0);
  const core::Descriptor descriptor(open(saved.Path().c_str(), O_WRONLY | O_TRUNC));
  const core::Proof proof =
      core::WriteProven(draft, descriptor.Get(), saved.Path(), core::RecordDefinitions());
  Require(proof.fault.empty(), proof.fault.c_str());
}
