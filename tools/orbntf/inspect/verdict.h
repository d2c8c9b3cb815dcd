// What the module does with a file.
#pragma once

#include "core/check/check_file.h"
#include "tools/orbntf/tool.h"

namespace tool {

/// What the module answers to a file, when it is to open it.
struct ModuleAnswer {
  int32_t status = 0;
  std::string field;    ///< at which it stopped parsing; empty for none
  int64_t offset = -1;  ///< of that field
  std::string words;    ///< why it refuses the file; empty where it does not
};
/// Opens a file as the module does.
ModuleAnswer AskToOpen(const std::string& path);

/// What the module does with a file.
struct Verdict {
  int32_t status = 0;
  uint32_t width = 0, height = 0;
  std::string words;  ///< "drawn, 640 x 400", or "refused, status -78: …"
};
/// Draws a file as a host would, and keeps nothing of it.
Verdict AskModule(const std::string& path);

/// The same by the published standard: draws a small picture of it.
Verdict AskCore(const Survey& survey);

/// Prints what is wrong with a file that a command has made, as warnings of that command. Notes and
/// warnings about it are for `check`.
void WarnOfFaults(const std::string& command, const std::string& path, const std::string& name);

}  // namespace tool
