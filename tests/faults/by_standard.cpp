// Built with the module's sources, whose headers hold the hooks.
#include "tests/faults/by_standard.h"

#include "Common/NitfFile.h"
#include "orbntf/orbntf.h"

int32_t faults::DrawByStandard(const char16_t* path) {
  NitfFile document;
  document.header.rules = DisplayRules::Standard();
  if (const Status s = document.ReadDocument(path); !Ok(s)) return ToCaller(s);
  OwnedBitmap canvas;
  return Orb_NtfRenderBitmap(&canvas.record, &document);
}
