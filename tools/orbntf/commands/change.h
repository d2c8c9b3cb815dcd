// Changing one field of a document's headers, through the Get and Set exports.
#pragma once

#include <string>

#include "tools/orbntf/document.h"

namespace tool {

/// Which header a command line names: "" the file's, or "image", "graphic" or "text" and an index.
struct Target {
  std::string kind;
  uint32_t index = 0;
};
/// Takes "image:N", "graphic:N" or "text:N"; false for anything else.
bool ParseTarget(const std::string& text, Target& target);

/// What a change is part of.
struct ChangeContext {
  std::string command, file;
  bool force = false;  ///< take what the format does not allow
};
/// Makes one change, "FIELD=VALUE". Reports what is wrong with it and returns the exit code.
int ApplyChange(const ChangeContext& context, Document& document, const Target& target,
                const std::string& assignment);

/// The fields of a kind of header ("" for the file's, "image", "graphic", "text") that can be set.
std::vector<std::string> SettableFields(const std::string& kind);

}  // namespace tool
